// What a window test cannot see from outside: menus are private to a process on some systems. In test mode
// the frame writes its menu bar, as it would open now, to "menus.txt" in the program's temporary folder when
// asked to.
#pragma once

#include "ui/application.h"

namespace vexa {

inline constexpr const wchar_t* kDescribeMenus = L"VexaEditorDescribeMenus";  // registered message; answers 1

// Lines "depth TAB id TAB state TAB text" in UTF-8, id 0 for pop-ups and separators; state: g greyed, c
// checked.
bool DescribeMenus(Application& app);

}  // namespace vexa
