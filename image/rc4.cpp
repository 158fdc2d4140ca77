#include "image/rc4.h"

#include <array>
#include <utility>

namespace vexa {

void Rc4(std::span<uint8_t> bytes, std::string_view key) {
  std::array<uint8_t, 256> state;
  for (size_t i = 0; i < 256; ++i) state[i] = static_cast<uint8_t>(i);
  uint8_t j = 0;
  for (size_t i = 0; i < 256; ++i) {
    j = static_cast<uint8_t>(j + state[i] + static_cast<uint8_t>(key[i % key.size()]));
    std::swap(state[i], state[j]);
  }
  uint8_t i = 0;
  j = 0;
  for (uint8_t& byte : bytes) {
    i = static_cast<uint8_t>(i + 1);
    j = static_cast<uint8_t>(j + state[i]);
    std::swap(state[i], state[j]);
    byte = static_cast<uint8_t>(byte ^ state[static_cast<uint8_t>(state[i] + state[j])]);
  }
}

}  // namespace vexa
