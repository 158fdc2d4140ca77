// Whether something can be told from what it stands on.
#pragma once

#include <cstdint>

namespace vexa {

// True for a dark colour on a dark surface. The program's own colours are made for light surfaces: such a one
// gives way to the text colour of the system. Both are 0x00BBGGRR.
bool IsLostOn(uint32_t colour, uint32_t surface);

// The system's colours of texts, 0x00BBGGRR.
struct SystemColours {
  bool high_contrast = false;
  uint32_t text = 0, surface = 0xFFFFFF;
};
// What a text in a colour of the program's own is shown in: in high contrast, and where it would be lost, in
// the system's.
uint32_t SeenColour(uint32_t colour, const SystemColours& system);

}  // namespace vexa
