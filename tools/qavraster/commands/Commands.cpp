#include "commands/Commands.h"

namespace qavraster {

const std::vector<Command>& commands() {
  static const std::vector<Command> all = {
      {"info", {file("FILE")}, "Prints the size and the pixel format of a picture.", showInfo},
  };
  return all;
}

}  // namespace qavraster
