// Choosing one configuration of an ECF file by what it is called.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/ecf.h"

namespace vexa {

// Zero-based positions in a configuration file.
struct Selection {
  uint8_t manufacturer = 0, product = 0, configuration = 0;
};

// "1A/Standard Receiver/Software only" in UTF-8: the manufacturer's id in hexadecimal digits, the names of
// product and configuration. The positions are those of a configuration in `tree`.
std::string SelectionName(const EcfTree& tree, const Selection& selection);

// What a text in UTF-8 chooses, without regard to the case of letters. With two slashes it is a
// manufacturer's id, a product and a configuration, each its name or any part of it; else it is a name, or
// part of one, looked for among the configurations and, where none has it, among the products, which then has
// a single configuration. Of several that match, those count whose name is the text as a whole. An empty name
// matches nothing.
struct SelectionFound {
  std::optional<Selection> selection;  // when exactly one was meant
  bool several = false;                // more than one may be meant
  std::vector<std::string>
      candidates;  // without a selection: the names of those that may be meant, or of all
};
// Looks `text` (UTF-8) up in the tree, as said above.
SelectionFound FindSelection(const EcfTree& tree, const std::string& text);

}  // namespace vexa
