// The "Compression" dialog without its window: one file compressed or expanded as a zlib stream.
#pragma once

#include <optional>
#include <string>

#include "core/context.h"
#include "view/refusal.h"

namespace vexa {

inline constexpr uint64_t kLargestExpanded = uint64_t{1} << 30;  // bytes that expanding may make

struct CompressionForm {
  bool expand = false;
  Path input, output;
  Path agreed{};  // an output that the user has agreed to replace
  int level = 5;  // place in the list of levels "1" to "9"
};

struct CompressionField {
  enum : int { kNone, kInput, kOutput };
};

// A new name beside the input: "list.bin" <-> "list.bin.z", "list.txt" to "list.txt.out" when it is expanded.
Path ProposeCompressionOutput(const Path& input, bool expand);
// Why OK does nothing, with a CompressionField to focus; nothing when the file can be converted. A
// new file that was named without a folder is put beside the old one.
std::optional<Refusal> CheckCompression(CompressionForm& form);
// False when the output is there and may not be replaced; a Yes is remembered in the dialog.
bool MayWriteCompressed(const Messages& messages, CompressionForm& form);
struct CompressionSizes {
  uint64_t before = 0, after = 0;  // bytes of the input and of the output
};
// Converts the files of a checked dialog; nothing after a message, with the output as it was.
std::optional<CompressionSizes> RunCompression(const Context& context, const CompressionForm& form);

}  // namespace vexa
