// A second start of the program hands its file over to the one that runs already, so that a file has one
// window in all programs of a user's session.
#pragma once

#include <string>

#include "ui/controls/application.h"

namespace vexa {

// Lets the frame, which stands, take files from programs of the same kind. `kind` is empty but in tests,
// whose programs run side by side and must not meet.
void TakeHandedOver(HWND frame, const std::wstring& kind);
// Gives the absolute path to a running program of the same kind: to the one that has the file open, else to
// the one whose frame stands highest. False: there is none, or none answers within seconds.
bool HandOver(const Path& path, const std::wstring& kind);
// WM_COPYDATA at the frame: the answer. The file is opened, or its window comes to the front, as soon as no
// dialog is open.
bool AnswerSecondStart(Application& app, const COPYDATASTRUCT& handed);

}  // namespace vexa
