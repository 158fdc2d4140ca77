#include "ui/controls/paint_drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

namespace vexa {

namespace {

constexpr double kTextHeight = 11, kLeastText = 7;  // units; pixels at least
constexpr COLORREF kFaulty = RGB(200, 16, 46);

// As far from each other as the page has them: hues in degrees, saturation and lightness 0 to 1.
COLORREF ColourOfHue(int hue, double saturation, double lightness) {
  const double chroma = (1 - std::abs(2 * lightness - 1)) * saturation;
  const auto part = [&](int offset) {
    const double k = std::fmod(offset + hue / 30.0, 12);
    const double value = lightness - chroma / 2 * std::max(-1.0, std::min({k - 3, 9 - k, 1.0}));
    return static_cast<BYTE>(std::lround(255 * std::clamp(value, 0.0, 1.0)));
  };
  return RGB(part(0), part(8), part(4));
}

// From 0xRRGGBB.
COLORREF Rgb(uint32_t colour) {
  return RGB(colour >> 16 & 0xFF, colour >> 8 & 0xFF, colour & 0xFF);
}

COLORREF ColourOf(const Shape& shape) {
  switch (shape.paint) {
    case Paint::kPlain:
      return GetSysColor(shape.kind == ShapeKind::kDisc ? COLOR_BTNSHADOW : COLOR_WINDOWTEXT);
    case Paint::kFaint:
      return GetSysColor(COLOR_BTNSHADOW);
    case Paint::kEdge:
    case Paint::kRange:
      return GetSysColor(COLOR_GRAYTEXT);
    case Paint::kFec:
      return ColourOfHue(HueOfFec(shape.index), 0.6, 0.6);
    case Paint::kLnb:
      return ColourOfHue(HueOfLnb(shape.index), 0.7, 0.48);
    case Paint::kStep:
      return shape.index < kStepColours.size() ? Rgb(kStepColours[shape.index]) : GetSysColor(COLOR_GRAYTEXT);
    case Paint::kBeneath:
      return GetSysColor(COLOR_BTNFACE);
  }
  return GetSysColor(COLOR_WINDOWTEXT);
}

class Painter {
 public:
  Painter(HDC device, const RECT& area, const Fit& fit) : device_(device), area_(area), fit_(fit) {
    state_ = SaveDC(device);
    SetBkMode(device, TRANSPARENT);
    SelectObject(device, GetStockObject(NULL_PEN));
    const auto height = static_cast<int>(std::max(kLeastText, std::lround(kTextHeight * fit.y) * 1.0));
    for (size_t i = 0; i < fonts_.size(); ++i) {
      fonts_[i] = CreateFontW(-height, 0, i == 0 ? 0 : 900, i == 0 ? 0 : 900, FW_NORMAL, FALSE, FALSE, FALSE,
                              DEFAULT_CHARSET, OUT_TT_PRECIS, CLIP_DEFAULT_PRECIS, CLEARTYPE_QUALITY,
                              DEFAULT_PITCH, L"Tahoma");
    }
  }
  ~Painter() {
    RestoreDC(device_, state_);
    for (HFONT font : fonts_) DeleteObject(font);
    for (const auto& [colour, brush] : brushes_) DeleteObject(brush);
    for (const auto& [colour, pen] : pens_) DeleteObject(pen);
  }
  Painter(const Painter&) = delete;
  Painter& operator=(const Painter&) = delete;

  void Paint(const Shape& shape) {
    switch (shape.kind) {
      case ShapeKind::kRectangle:
        return PaintRectangle(shape);
      case ShapeKind::kLine:
        return PaintLine(shape);
      case ShapeKind::kDisc:
        return PaintDisc(shape);
      case ShapeKind::kText:
        return PaintText(shape);
    }
  }

  void Mark(const Shape& shape) {
    RECT frame = FrameOf(shape);
    for (int i = 0; i < 2; ++i) {
      InflateRect(&frame, 1, 1);
      FrameRect(device_, &frame, GetSysColorBrush(COLOR_HIGHLIGHT));
    }
  }

 private:
  int X(double x) const { return static_cast<int>(area_.left) + static_cast<int>(std::lround(x * fit_.x)); }
  int Y(double y) const { return static_cast<int>(area_.top) + static_cast<int>(std::lround(y * fit_.y)); }

  HBRUSH BrushOf(COLORREF colour) {
    HBRUSH& brush = brushes_[colour];
    if (!brush) brush = CreateSolidBrush(colour);
    return brush;
  }
  HPEN PenOf(COLORREF colour, int style) {
    HPEN& pen = pens_[{colour, style}];
    if (!pen) pen = CreatePen(style, 1, colour);
    return pen;
  }

  RECT FrameOf(const Shape& shape) const {
    if (shape.kind == ShapeKind::kDisc) {
      const int radius = static_cast<int>(std::lround(shape.width * fit_.y)), x = X(shape.x), y = Y(shape.y);
      return {x - radius, y - radius, x + radius + 1, y + radius + 1};
    }
    RECT frame = {X(shape.x), Y(shape.y), X(shape.x + shape.width), Y(shape.y + shape.height)};
    frame.right = std::max(frame.right, frame.left + 1);
    frame.bottom = std::max(frame.bottom, frame.top + 1);
    return frame;
  }

  void PaintRectangle(const Shape& shape) {
    const RECT frame = FrameOf(shape);
    FillRect(device_, &frame, BrushOf(ColourOf(shape)));
    if (shape.paint == Paint::kBeneath) FrameRect(device_, &frame, GetSysColorBrush(COLOR_BTNSHADOW));
    if (!shape.faulty) return;
    if (!hatch_) hatch_ = brushes_[kHatched] = CreateHatchBrush(HS_BDIAGONAL, kFaulty);
    FillRect(device_, &frame, hatch_);
    FrameRect(device_, &frame, BrushOf(kFaulty));
  }

  void PaintLine(const Shape& shape) {
    HGDIOBJ old =
        SelectObject(device_, PenOf(ColourOf(shape), shape.paint == Paint::kEdge ? PS_DOT : PS_SOLID));
    MoveToEx(device_, X(shape.x), Y(shape.y), nullptr);
    LineTo(device_, X(shape.x + shape.width), Y(shape.y + shape.height));
    SelectObject(device_, old);
  }

  void PaintDisc(const Shape& shape) {
    const RECT frame = FrameOf(shape);
    HGDIOBJ brush = SelectObject(device_, BrushOf(ColourOf(shape)));
    HGDIOBJ pen = SelectObject(device_, PenOf(GetSysColor(COLOR_WINDOW), PS_SOLID));
    Ellipse(device_, frame.left, frame.top, frame.right, frame.bottom);
    SelectObject(device_, pen);
    SelectObject(device_, brush);
  }

  void PaintText(const Shape& shape) {
    const bool upwards = shape.place == TextPlace::kUpwards;
    HGDIOBJ old = SelectObject(device_, fonts_[upwards ? 1 : 0]);
    SetTextColor(device_, ColourOf(shape));
    const UINT across = shape.place == TextPlace::kMiddle ? TA_CENTER
                        : shape.place == TextPlace::kEnd  ? TA_RIGHT
                                                          : TA_LEFT;
    SetTextAlign(device_, TA_BASELINE | across);
    const std::wstring text = Wide(shape.text);
    TextOutW(device_, X(shape.x), Y(shape.y), text.c_str(), static_cast<int>(text.size()));
    SelectObject(device_, old);
  }

  static constexpr COLORREF kHatched = 0xFFFFFFFF;  // no colour: the place of the hatching among the brushes
  HDC device_;
  RECT area_;
  Fit fit_;
  int state_ = 0;
  HBRUSH hatch_ = nullptr;
  std::array<HFONT, 2> fonts_{};  // as it reads; upwards
  std::map<COLORREF, HBRUSH> brushes_;
  std::map<std::pair<COLORREF, int>, HPEN> pens_;
};

}  // namespace

double DotsPerUnit(HWND window) {
  return std::max(1, Scaled(window, 100)) / 100.0;
}

OffscreenPicture::OffscreenPicture(HDC target, const RECT& area)
    : target_(target),
      device_(CreateCompatibleDC(target)),
      area_(area),
      bitmap_(CreateCompatibleBitmap(target, std::max(1L, area.right), std::max(1L, area.bottom))),
      before_(SelectObject(device_, bitmap_)) {
  FillRect(device_, &area_, GetSysColorBrush(COLOR_WINDOW));
}

OffscreenPicture::~OffscreenPicture() {
  SelectObject(device_, before_);
  DeleteObject(bitmap_);
  DeleteDC(device_);
}

void OffscreenPicture::Show() const {
  BitBlt(target_, 0, 0, area_.right, area_.bottom, device_, 0, 0, SRCCOPY);
}

void PaintDrawing(HDC device, const RECT& area, const Drawing& drawing, const Fit& fit, size_t marked) {
  Painter painter(device, area, fit);
  const Shape* mark = nullptr;
  for (const Shape& shape : drawing.shapes) {
    painter.Paint(shape);
    if (marked != kNoItem && shape.item == marked) mark = &shape;
  }
  if (mark) painter.Mark(*mark);
}

}  // namespace vexa
