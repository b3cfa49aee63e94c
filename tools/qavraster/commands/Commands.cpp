#include "commands/Commands.h"

namespace qavraster {

const std::vector<Command>& commands() {
  static const std::vector<Command> all = {
      {"info", {file("FILE")}, "Prints what a file is: its format, size, channels and bits.", showInfo},
  };
  return all;
}

}  // namespace qavraster
