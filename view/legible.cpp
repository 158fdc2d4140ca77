#include "view/legible.h"

#include <cmath>

namespace vexa {

namespace {

// Relative luminance, 0 to 1, and the contrast ratio, 1 to 21, of https://www.w3.org/TR/WCAG21/.
double Luminance(uint32_t colour) {
  const auto linear = [](uint32_t part) {
    const double share = (part & 0xFF) / 255.0;
    return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour) + 0.7152 * linear(colour >> 8) + 0.0722 * linear(colour >> 16);
}

constexpr double kDarkSurface = 0.18;  // the middle between black and white to the eye
constexpr double kSeen = 2.5;

}  // namespace

bool IsLostOn(uint32_t colour, uint32_t surface) {
  const double ours = Luminance(colour), under = Luminance(surface);
  if (under > kDarkSurface) return false;
  return (ours > under ? (ours + 0.05) / (under + 0.05) : (under + 0.05) / (ours + 0.05)) < kSeen;
}

uint32_t SeenColour(uint32_t colour, const SystemColours& system) {
  return system.high_contrast || IsLostOn(colour, system.surface) ? system.text : colour;
}

}  // namespace vexa
