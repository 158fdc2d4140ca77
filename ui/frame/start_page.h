// The page over the empty frame (view/start_page.h).
#pragma once

#include "ui/controls/application.h"

namespace vexa {

// Shows the page, filled anew, over the client area while no window stands in it, and hides it otherwise. The
// first call makes it; without memory for it the area stays empty.
void ShowStartPage(Application& app);
// The same later, once a window that is being made or destroyed is there or gone.
void ShowStartPageLater(const Application& app);
// A frame of another resolution makes its page anew.
void RenewStartPage(Application& app);
// Gives the keyboard to the page; false: it does not show.
bool FocusStartPage(const Application& app);
// Whether the message was a key of the page.
bool TranslateStartKey(const Application& app, MSG& message);

}  // namespace vexa
