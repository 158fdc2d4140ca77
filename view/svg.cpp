#include "view/svg.h"

#include <cmath>

#include "platform/text.h"

namespace vexa {

namespace {

std::string ClassOf(const Shape& shape) {
  switch (shape.paint) {
    case Paint::kPlain:
      return "";
    case Paint::kFaint:
      return "g";
    case Paint::kEdge:
      return "e";
    case Paint::kRange:
      return "r";
    case Paint::kFec:
      return "f" + std::to_string(shape.index);
    case Paint::kLnb:
      return "l" + std::to_string(shape.index);
    case Paint::kStep:
      return "t" + std::to_string(shape.index);
    case Paint::kBeneath:
      return "b";
  }
  return "";
}

// A hundredth of a unit is less than a printer shows.
void AppendNumber(std::string& page, double value) {
  int64_t hundredths = std::llround(value * 100);
  if (hundredths < 0) page += '-';
  if (hundredths < 0) hundredths = -hundredths;
  page += std::to_string(hundredths / 100);
  const int64_t rest = hundredths % 100;
  if (rest == 0) return;
  page += '.';
  page += static_cast<char>('0' + rest / 10);
  if (rest % 10 != 0) page += static_cast<char>('0' + rest % 10);
}

void AppendAttribute(std::string& page, const char* name, double value) {
  page += ' ';
  page += name;
  page += "=\"";
  AppendNumber(page, value);
  page += '"';
}

const char* ElementOf(ShapeKind kind) {
  constexpr const char* kElements[] = {"rect", "line", "circle", "text"};
  return kElements[static_cast<size_t>(kind)];
}

void AppendPlaces(std::string& page, const Shape& shape) {
  constexpr const char* kNames[][4] = {{"x", "y", "width", "height"},
                                       {"x1", "y1", "x2", "y2"},
                                       {"cx", "cy", "r", nullptr},
                                       {"x", "y", nullptr, nullptr}};
  const bool line = shape.kind == ShapeKind::kLine;
  const double values[] = {shape.x, shape.y, shape.width + (line ? shape.x : 0),
                           shape.height + (line ? shape.y : 0)};
  for (size_t i = 0; i < 4; ++i) {
    if (const char* name = kNames[static_cast<size_t>(shape.kind)][i]) AppendAttribute(page, name, values[i]);
  }
}

void AppendTextPlace(std::string& page, const Shape& shape) {
  if (shape.place == TextPlace::kMiddle) page += " text-anchor=\"middle\"";
  if (shape.place == TextPlace::kEnd) page += " text-anchor=\"end\"";
  if (shape.place != TextPlace::kUpwards) return;
  page += " transform=\"rotate(-90 ";
  AppendNumber(page, shape.x);
  page += ' ';
  AppendNumber(page, shape.y);
  page += ")\"";
}

void AppendShape(std::string& page, const Shape& shape, const std::string& paint, bool with_text) {
  const bool text = shape.kind == ShapeKind::kText;
  const char* element = ElementOf(shape.kind);
  page += '<';
  page += element;
  if (!paint.empty()) page += " class=\"" + paint + "\"";
  AppendPlaces(page, shape);
  if (text) AppendTextPlace(page, shape);
  if (!text && (shape.text.empty() || !with_text)) {
    page += "/>";
    return;
  }
  page += text ? ">" : "><title>";
  AppendMarkup(page, shape.text);
  if (!text) page += "</title>";
  page += "</";
  page += element;
  page += '>';
}

}  // namespace

void AppendMarkup(std::string& page, std::string_view text) {
  while (!text.empty()) {
    const char32_t character = TakeUtf8(text);
    if (character == '\t' || character == '\n' || character == '\r') {
      page += ' ';
    } else if (character < 0x20 || (character >= 0x7F && character < 0xA0)) {
      AppendUtf8(page, kReplacementCharacter);
    } else if (character == '&') {
      page += "&amp;";
    } else if (character == '<') {
      page += "&lt;";
    } else if (character == '>') {
      page += "&gt;";
    } else if (character == '"') {
      page += "&quot;";
    } else {
      AppendUtf8(page, character);
    }
  }
}

void AppendSvg(std::string& page, const Drawing& drawing, const char* link) {
  page += "<svg role=\"img\"";
  if (link) {
    AppendAttribute(page, "width", drawing.width);
    AppendAttribute(page, "height", drawing.height);
  }
  page += " viewBox=\"0 0 " + std::to_string(std::lround(drawing.width)) + " " +
          std::to_string(std::lround(drawing.height)) + "\" aria-label=\"";
  AppendMarkup(page, drawing.title);
  page += "\">\n";
  for (const Shape& shape : drawing.shapes) {
    const bool leads = link && shape.item != kNoItem;
    if (leads) page += std::string("<a href=\"") + link + std::to_string(shape.item) + "\">";
    AppendShape(page, shape, ClassOf(shape), true);
    if (leads) page += "</a>";
    // The hatching lets the pointer through to the tip.
    if (shape.faulty) AppendShape(page, shape, "x", false);
    page += '\n';
  }
  page += "</svg>\n";
}

}  // namespace vexa
