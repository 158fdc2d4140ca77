// Runs the command line program inside the test and gives back what a script would see.
#pragma once

#include <string>
#include <vector>

namespace vexa {

struct ProgramResult {
  int status = 0;
  std::string output, errors;
};

ProgramResult RunVexa(std::vector<std::string> arguments);

}  // namespace vexa
