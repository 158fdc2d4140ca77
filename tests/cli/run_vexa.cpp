#include "tests/support/run_vexa.h"

#include <gtest/gtest.h>

#include "cli/program.h"

namespace vexa {

ProgramResult RunVexa(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "vexa");
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  ProgramResult result;
  result.status = RunProgram(static_cast<int>(arguments.size()), pointers.data());
  result.output = testing::internal::GetCapturedStdout();
  result.errors = testing::internal::GetCapturedStderr();
  return result;
}

}  // namespace vexa
