// What a window test cannot see or do from outside. Menus are private to a process on some systems: in test
// mode the frame writes its menu bar, as it would open now, to "menus.txt" in the program's temporary folder
// when asked to. Nor can memory be made to run out there, or the viewer of reports, an event, a tree or a
// list be made to fail. A page of the help is named in "help.txt" in that folder instead of shown.
#pragma once

#include "ui/controls/application.h"

namespace vexa {

// A registered message with the request as its first parameter and a number as its second; answers 1.
inline constexpr const wchar_t* kTestMessage = L"VexaEditorTest";
// The tree and the list to lose are those of the active database window. kMarkQueue, posted, gives the frame
// a property of the message's name when it comes to its turn. kFailAllocation lets the allocation of that
// number fail, counted from the next one on, once; 0: none. kFillLog puts so many lines into the console's
// log. kListFunctions writes the identifiers of the commands that have a function, a line each, to
// "functions.txt" beside the menus. kFail, posted, writes to memory that is not to be written.
enum TestRequest : WPARAM {
  kDescribeMenus,
  kExhaustMemory,
  kLoseViewer,
  kLoseTree,
  kLoseList,
  kMarkQueue,
  kFailAllocation,
  kFillLog,
  kListFunctions,
  kFail,
};
// In test mode the thread exit event has this name: an object of another kind in its place makes it fail.
inline constexpr const wchar_t* kTestExitEvent = L"VexaEditorTestExit";

// Menus are described in lines "depth TAB id TAB state TAB text" in UTF-8, id 0 for pop-ups and separators;
// state: g greyed, c checked.
bool AnswerTest(Application& app, WPARAM request, LPARAM number);

}  // namespace vexa
