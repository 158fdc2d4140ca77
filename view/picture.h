// The picture in a database window: which one belongs to what is selected, and what the mouse and the keys do
// in it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/database.h"
#include "platform/code_page.h"
#include "view/band_plan.h"
#include "view/drawing.h"
#include "view/look_angle.h"
#include "view/view_model.h"

namespace vexa {

enum class PictureKind : uint8_t { kNone, kOrbit, kPlan };

// What it is made with besides the document.
struct PictureBase {
  const CodePage& page;                     // of the names
  std::optional<Place> place;               // on the ground
  const StaticDatabase* beneath = nullptr;  // whose carriers lie under those of a plan
};

struct Picture {
  PictureKind kind = PictureKind::kNone;
  uint32_t sdb = 0;                     // of the document
  Satellite* satellite = nullptr;       // of a plan
  std::optional<FrequencyRange> range;  // the part of a plan that is shown; whole without
  Drawing drawing;                      // items are carriers of the satellite, or satellites of the SDB
  std::vector<PlanPanel> panels;        // of a plan
  size_t selected = kNoItem;            // the item of what is selected
  std::string text;                     // instead of shapes, where there are none
};

// Makes it anew for a node of the tree. That of an SDB, its LNBs, satellites or groups shows the orbit, that
// of a satellite and what is below it its plan; others show nothing. A plan of another satellite is whole.
// `record` is what commands act on: it is the selected item where the picture shows it.
void ShowPicture(Picture& picture, const Document& document, const NodeRef& node, const NodeRef& record,
                 const PictureBase& base);
// Only the selection has moved, within what the picture shows.
void SelectInPicture(Picture& picture, const Document& document, const NodeRef& record);

// What the item is in the document as it was when the picture was made.
NodeRef NodeOfItem(const Picture& picture, const Document& document, size_t item);

// The item beside the selected one, to the right for 1, to the left for -1; the first or last one where
// nothing is selected. kNoItem: there is none.
size_t NeighbourItem(const Picture& picture, int step);

// Another part of a plan: from one x to another, in units of the drawing; `factor` times as wide around that
// x (below 1: a smaller part). The panel is that at `y`. Until ShowPicture is called only `range` is another.
// False when nothing changes.
bool ZoomBetween(Picture& picture, double y, double x1, double x2);
bool ZoomBy(Picture& picture, double factor, double x, double y);
bool ShowWhole(Picture& picture);

// How a drawing of these units lies in a pane: as wide as it, texts not above `dots` pixels a unit.
struct Fit {
  double x = 1, y = 1;  // pixels a unit
};
Fit FitInto(const Drawing& drawing, double width, double height, double dots);

}  // namespace vexa
