#include "commands/Commands.h"

namespace qavraster {

const std::vector<Command>& commands() {
  static const std::vector<Command> all = {
      {"info", {file("FILE")}, "Prints what a file is: its format, size, channels and bits.", showInfo},
      {"compare",
       {file("FIRST"), file("SECOND")},
       "Compares two pictures and prints the statistics of their differences (CIEDE2000; distances for floating-point "
       "ones). Exit code 0: none reaches the threshold, 1: some do, 2: an error.",
       compareFiles,
       comparisonSettings()},
  };
  return all;
}

}  // namespace qavraster
