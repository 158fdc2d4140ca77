// Standard error of the command line: messages, and below them, on a terminal, one line of progress, which
// gives way to them.
#pragma once

#include <mutex>
#include <string>

namespace vexa {

// Any thread may print.
class ErrorStream {
 public:
  // The text as it stands, with its line ends; in one piece.
  void Print(const std::string& text);
  // Shows the line in place of the one before; an empty one takes it away. For a terminal only.
  void ShowLine(const std::string& line);

 private:
  void TakeAway();

  std::mutex lock_;
  size_t shown_ = 0;  // characters of the line that is shown
};

}  // namespace vexa
