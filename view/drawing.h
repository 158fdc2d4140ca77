// A picture as plain shapes in units of its own, without a device: a page writes them as SVG (view/svg.h), a
// window paints them. What a shape is for is its paint; colours are the face's.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vexa {

enum class Paint : uint8_t {
  kPlain,   // texts and axes
  kFaint,   // lanes, leaders, ticks
  kEdge,    // edges of a band, and where it is parted
  kRange,   // what an LNB receives
  kFec,     // of a carrier: `index` is the code, 0 to 7
  kLnb,     // of a satellite: `index` is its LNB, 0 to 15
  kStep,    // of what crossed the line: `index` is its TraceStep::Kind
  kBeneath  // of a carrier of another database; of a satellite that cannot be seen
};

// Hues in degrees: those of neighbouring LNBs lie far apart, those of FECs leave red to faults.
constexpr int HueOfFec(int code) {
  return 40 + code * 40;
}
constexpr int HueOfLnb(int lnb) {
  return (205 + lnb * 137) % 360;
}
// Of what crosses the line, by TraceStep::Kind up to silence, 0xRRGGBB.
inline constexpr std::array<uint32_t, 6> kStepColours = {0x3778C2, 0x3A9A53, 0xD59A1E,
                                                         0xCC3333, 0x888888, 0xD0D0D0};

enum class ShapeKind : uint8_t {
  kRectangle,  // left top corner, width and height
  kLine,       // from x, y to x + width, y + height
  kDisc,       // centre, and the radius as width
  kText        // starts at x, y, the foot of its first letter
};

enum class TextPlace : uint8_t { kStart, kMiddle, kEnd, kUpwards };  // where x, y is; upwards: turned left

inline constexpr size_t kNoItem = static_cast<size_t>(-1);

// x goes right, y goes down.
struct Shape {
  ShapeKind kind = ShapeKind::kRectangle;
  Paint paint = Paint::kPlain;
  uint8_t index = 0;
  TextPlace place = TextPlace::kStart;
  bool faulty = false;  // hatched red
  double x = 0, y = 0, width = 0, height = 0;
  std::string text;       // UTF-8: what a text shows, the tip of another shape
  size_t item = kNoItem;  // which of the things that are drawn it stands for; what they are says the drawing
};

struct Drawing {
  double width = 0, height = 0;
  std::string title;          // UTF-8, for those who do not see it
  std::vector<Shape> shapes;  // later ones lie above earlier ones
};

// The shape with a tip under the point, the uppermost of several; narrow ones are hit within `reach` units.
// nullptr: none.
const Shape* ShapeAt(const Drawing& drawing, double x, double y, double reach);

// Shapes without a tip.
Shape LineShape(Paint paint, double x1, double y1, double x2, double y2);
Shape TextShape(double x, double y, TextPlace place, std::string text);

}  // namespace vexa
