// The part of the status line that says how full a receiver would be with the SDB in sight.
#pragma once

#include "ui/controls/application.h"

namespace vexa {

// Looks at the active window anew: what the status line then shows is `app.room`.
void LookAtRoom(Application& app);
// Draws the part: its share as a bar, green, amber or red, under its text.
void DrawRoom(const Application& app, const DRAWITEMSTRUCT& item);
// A box with all tables. Nothing where nothing is known.
void ShowRoom(const Application& app);

}  // namespace vexa
