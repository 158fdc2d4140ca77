#include "core/messages.h"

#include <cstdarg>
#include <cstdio>

#include "core/context.h"

namespace vexa {

namespace {

VEXA_PRINTF(1, 0)
std::string FormatList(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  if (length <= 0) return {};
  std::string text(static_cast<size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

}  // namespace

std::string Format(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = FormatList(format, arguments);
  va_end(arguments);
  return text;
}

void Tell(const Messages& messages, Icon icon, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = FormatList(format, arguments);
  va_end(arguments);
  if (messages.tell) messages.tell({icon, text, kApplicationTitle, {}});
}

void TellWhy(const Messages& messages, Icon icon, const std::string& detail, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = FormatList(format, arguments);
  va_end(arguments);
  if (messages.tell) messages.tell({icon, text, kApplicationTitle, detail});
}

std::string WithReason(std::string text, const std::string& detail) {
  if (!detail.empty()) text += (text.ends_with('.') ? " " : ": ") + detail;
  return text;
}

std::string WholeText(const Message& message) {
  return message.detail.empty() ? message.text : message.text + "\n\n" + message.detail;
}

Messages About(const Messages& messages, const std::string& object) {
  Messages about = messages;
  about.tell = [tell = messages.tell, object](const Message& message) {
    Message whole = message;
    whole.detail = object + (message.detail.empty() ? "" : ": ") + message.detail;
    if (tell) tell(whole);
  };
  return about;
}

Context About(const Context& context, const std::string& object) {
  Context about = context;
  about.messages = About(context.messages, object);
  return about;
}

bool ExpectNumber(const Messages& messages, size_t number, size_t count, const char* what) {
  if (number <= count) return true;
  TellWhy(messages, Icon::kStop,
          count == 0 ? Format("%s: there is none.", what) : Format("%s: choose from 1 to %zu.", what, count),
          "Number %zu is beyond the %zu that there are.", number, count);
  return false;
}

bool Ask(const Messages& messages, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = FormatList(format, arguments);
  va_end(arguments);
  return messages.ask && messages.ask(text, kApplicationTitle, true);
}

}  // namespace vexa
