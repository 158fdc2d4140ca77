// What a form answers when a value of its dialog may not be stored.
#pragma once

#include <cstddef>
#include <string>

#include "core/messages.h"

namespace vexa {

struct Refusal {
  std::string text;  // UTF-8, whole
  Icon icon = Icon::kStop;
  int field = 0;         // control to focus, as the form numbers them
  size_t row = 0;        // of a list of alike rows: which one
  std::string detail{};  // of the message
};

}  // namespace vexa
