#include "ui/controls/application.h"

namespace vexa {

namespace {

UINT IconFlag(Icon icon) {
  switch (icon) {
    case Icon::kStop:
      return MB_ICONSTOP;
    case Icon::kWarning:
      return MB_ICONEXCLAMATION;
    case Icon::kInformation:
      return MB_ICONINFORMATION;
    case Icon::kQuestion:
      return MB_ICONQUESTION;
    default:
      return 0;
  }
}

int Box(const Application& app, const std::string& text, const std::string& title, UINT flags) {
  return MessageBoxW(OwnerWindow(app), Wide(text).c_str(), Wide(title.empty() ? app.title : title).c_str(),
                     flags | MB_APPLMODAL);
}

}  // namespace

HWND OwnerWindow(const Application& app) {
  if (!app.frame) return nullptr;
  HWND top = GetLastActivePopup(app.frame);
  // The list of findings stands beside the frame and stops nothing.
  if (top == app.findings) return app.frame;
  return top && IsWindowVisible(top) ? top : app.frame;
}

Messages BoxMessages(Application& app) {
  Messages messages;
  messages.tell = [&app](const Message& message) {
    Box(app, WholeText(message), message.title, MB_OK | IconFlag(message.icon));
  };
  messages.ask = [&app](const std::string& text, const std::string& title, bool yes_is_default) {
    return Box(app, text, title,
               MB_YESNO | MB_ICONQUESTION | (yes_is_default ? MB_DEFBUTTON1 : MB_DEFBUTTON2)) == IDYES;
  };
  return messages;
}

void TellNoWindow(const Application& app, const std::string& what, const std::error_code& why,
                  const char* text) {
  TellWhy(app.context.messages, Icon::kStop, Reason(Attempt::kMakeWindow, what, why), "%s", text);
}

bool AskOkCancel(const Application& app, const std::string& text, bool ok_is_default) {
  return Box(app, text, "",
             MB_OKCANCEL | MB_ICONQUESTION | (ok_is_default ? MB_DEFBUTTON1 : MB_DEFBUTTON2)) == IDOK;
}

Answer AskYesNoCancel(const Application& app, const std::string& text) {
  switch (Box(app, text, "", MB_YESNOCANCEL | MB_ICONQUESTION)) {
    case IDYES:
      return Answer::kYes;
    case IDNO:
      return Answer::kNo;
    default:
      return Answer::kCancel;
  }
}

}  // namespace vexa
