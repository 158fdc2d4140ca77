// The console's log view: a read-only rich-edit control that keeps its place while texts are added.
#pragma once

#include <deque>
#include <string>

#include "serial/console.h"
#include "ui/controls/application.h"

namespace vexa {

// nullptr when the system has no such control.
HWND CreateLogView(HWND parent, HINSTANCE instance, int id);
// Font "Arial" for all text, at the window's resolution; `fixed`: one whose characters are all of one width.
void SetLogFont(HWND log, bool fixed);
// It follows when its end is in sight and nothing is selected.
ViewUse LogUse(HWND log);
// Brings the last line in sight.
void ScrollLogToEnd(HWND log);
size_t LogLength(HWND log);  // characters
// The selection of the user, in any part of the log; copying puts it on the clipboard as text.
bool HasLogSelection(HWND log);
void SelectWholeLog(HWND log);
void CopyLogSelection(HWND log);
// The pop-up menu of the log at a point of the screen; (-1, -1), of a key: at its upper left corner.
void ShowLogMenu(HWND log, Application& app, POINT point);
// Adds the pieces at the end, each in its colour. Where the view does not follow, place and selection stay as
// they are. True when the view became too long and lost its oldest text.
bool AppendToLog(HWND log, const std::deque<ConsolePiece>& pieces, bool start_anew);
// Selects the next place of the text behind the selection, going on at the start when `round`; false when
// there is none.
bool FindInLog(HWND log, const std::string& text, bool match_case, bool round);
// Shows a part of the log instead, what was found in it selected.
void ShowFound(HWND log, const FoundText& found);

}  // namespace vexa
