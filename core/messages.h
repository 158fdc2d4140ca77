// How the engine speaks to its user. A face (window, command line, test) supplies the two functions.
// Texts are UTF-8, whole, and stand where they are raised. What they are about and the reason that the system
// gave is the message's detail: a window shows it below the text after an empty line, the command line as a
// line of its own.
#pragma once

#include <cstddef>
#include <functional>
#include <string>

#include "platform/printf.h"

namespace vexa {

enum class Icon { kNone, kStop, kWarning, kInformation, kQuestion };

inline constexpr const char* kApplicationTitle = "";  // an empty title stands for the application's own

struct Message {
  Icon icon = Icon::kStop;
  std::string text;
  std::string title;  // kApplicationTitle: the application's
  std::string
      detail;  // the file, port or SDB that it is about, what the system said, what to do; may be empty
};

// As a box holds it: the text and, after an empty line, the detail.
std::string WholeText(const Message& message);
// As a row of a table holds it: the text and, behind it as its reason, the detail, which may be empty.
std::string WithReason(std::string text, const std::string& detail);

struct Messages {
  std::function<void(const Message& message)> tell;
  // A Yes/No question; true for Yes. `yes_is_default` says which answer a plain Enter gives.
  std::function<bool(const std::string& text, const std::string& title, bool yes_is_default)> ask;
};

// printf into a string.
std::string Format(const char* format, ...) VEXA_PRINTF(1, 2);

// Shows a message with the application's title.
void Tell(const Messages& messages, Icon icon, const char* format, ...) VEXA_PRINTF(3, 4);
// The same with a detail, in one line: what the message is about and why it came to it.
void TellWhy(const Messages& messages, Icon icon, const std::string& detail, const char* format, ...)
    VEXA_PRINTF(4, 5);
// These messages, where the detail of each begins with `object`: what the whole job is about, with a part of
// it behind a colon.
Messages About(const Messages& messages, const std::string& object);
// Whether a number from 1 is one of `count` records; `what` names one of them ("satellite"). False after a
// message.
bool ExpectNumber(const Messages& messages, size_t number, size_t count, const char* what);
// Asks with the application's title; true for Yes, which is the default.
bool Ask(const Messages& messages, const char* format, ...) VEXA_PRINTF(2, 3);

}  // namespace vexa
