#include "tests/cli/cli_test.h"

#include <iomanip>
#include <sstream>

#include "cli/program.h"

namespace vexa {

void SetEnvironment(const std::string& name, const std::string& value) {
#if defined(_WIN32)
  _wputenv_s(Path(name).c_str(), PathFromUtf8(value).c_str());
#else
  setenv(name.c_str(), value.c_str(), 1);
#endif
}

ProgramResult RunVexa(std::vector<std::string> arguments, const CommApi& line) {
  arguments.insert(arguments.begin(), "vexa");
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  ProgramResult result;
  result.status = RunProgram(static_cast<int>(arguments.size()), pointers.data(), line);
  result.output = testing::internal::GetCapturedStdout();
  result.errors = testing::internal::GetCapturedStderr();
  return result;
}

std::vector<std::string> CliTest::Words(const std::string& line) {
  std::vector<std::string> arguments;
  std::istringstream words(line);
  for (std::string word; words >> std::quoted(word, '\'');)
    arguments.push_back(word.starts_with('@') ? In(word.substr(1)) : word);
  return arguments;
}

ProgramResult CliTest::Vexa(const std::string& line) {
  return RunVexa(Words(line), line_of_ports);
}

}  // namespace vexa
