// The command line tool as a function: what its entry point and its tests call.
#pragma once

#include <string>
#include <vector>

namespace vexa {

// The whole program: parses, runs one command, prints its results. Returns the exit status: 0 done, 1 refused
// or failed, 2 wrong usage. Arguments are UTF-8, the program's name first.
int RunProgram(int count, char** arguments);

// Windows gives UTF-16 arguments; the program works on UTF-8.
class Utf8Arguments {
 public:
  Utf8Arguments(int count, wchar_t** wide);
  int count() const { return static_cast<int>(texts_.size()); }
  char** values() { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

}  // namespace vexa
