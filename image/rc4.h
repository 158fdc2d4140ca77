// The RC4 stream cipher; enciphering twice gives the plain bytes back.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vexa {

inline constexpr std::string_view kImageHeaderKey = "pelqorin";

// Enciphers `bytes` in place, from the start of the key stream. `key` must not be empty.
void Rc4(std::span<uint8_t> bytes, std::string_view key);

}  // namespace vexa
