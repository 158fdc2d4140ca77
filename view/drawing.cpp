#include "view/drawing.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vexa {

namespace {

// How far the point lies outside the shape; 0 within.
double DistanceOutside(const Shape& shape, double x, double y) {
  if (shape.kind == ShapeKind::kDisc)
    return std::max(0.0, std::hypot(x - shape.x, y - shape.y) - shape.width);
  const double aside = std::max({shape.x - x, x - shape.x - shape.width, 0.0});
  const double above = std::max({shape.y - y, y - shape.y - shape.height, 0.0});
  return std::max(aside, above);
}

}  // namespace

const Shape* ShapeAt(const Drawing& drawing, double x, double y, double reach) {
  const Shape* nearest = nullptr;
  double distance = reach;
  for (const Shape& shape : drawing.shapes) {
    if (shape.kind == ShapeKind::kText || shape.text.empty()) continue;
    const double from = DistanceOutside(shape, x, y);
    if (from > distance) continue;
    nearest = &shape;
    distance = from;
  }
  return nearest;
}

Shape LineShape(Paint paint, double x1, double y1, double x2, double y2) {
  return {.kind = ShapeKind::kLine,
          .paint = paint,
          .x = x1,
          .y = y1,
          .width = x2 - x1,
          .height = y2 - y1,
          .text = {}};
}

Shape TextShape(double x, double y, TextPlace place, std::string text) {
  return {.kind = ShapeKind::kText, .place = place, .x = x, .y = y, .text = std::move(text)};
}

}  // namespace vexa
