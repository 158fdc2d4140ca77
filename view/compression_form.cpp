#include "view/compression_form.h"

#include <algorithm>

#include "core/zlib_com.h"
#include "platform/file_reader.h"
#include "view/target_file.h"

namespace vexa {

namespace {

constexpr uint64_t kHighestRatio = 1032;  // deflate makes no more of one byte
constexpr uint64_t kFirstRoom = 1 << 16;

std::optional<Bytes> Compress(const Context& context, std::span<const uint8_t> source, int level) {
  Bytes made(static_cast<size_t>(CompressedCapacity(source.size())));
  const uint64_t length = CompressBuffer(context.messages, source, made, level, "");
  if (length == 0) return std::nullopt;
  made.resize(static_cast<size_t>(length));
  return made;
}

// The stream does not say how long it gets: the room grows until it fits. Only the last try may complain.
std::optional<Bytes> Expand(const Context& context, std::span<const uint8_t> source) {
  const uint64_t most = std::min(kLargestExpanded, std::max(kFirstRoom, source.size() * kHighestRatio));
  for (uint64_t room = std::min(most, std::max<uint64_t>(kFirstRoom, source.size() * 4));;) {
    const bool last = room >= most;
    Bytes made(static_cast<size_t>(room));
    uint64_t length = 0;
    if (DecompressBuffer(last ? context.messages : Messages{}, source, made, length, "") == 0) {
      made.resize(static_cast<size_t>(length));
      return made;
    }
    if (last) return std::nullopt;
    room = std::min(most, room * 4);
  }
}

// Whether the first two bytes are a zlib stream's; files that hold something else are not read any further.
bool BeginsAsPacked(const Path& path) {
  auto reader = OpenFileReader(path);
  uint8_t head[2];
  if (!reader || reader->size < sizeof head || !reader->Read(0, head)) return true;  // said when it is read
  return (head[0] & 15) == 8 && (head[0] << 8 | head[1]) % 31 == 0;
}

}  // namespace

Path ProposeCompressionOutput(const Path& input, bool expand) {
  Path output = input;
  if (input.empty()) return output;
  if (!expand) return output += ".z";
  if (input.extension() == ".z") return output.replace_extension();
  return output += ".out";
}

std::optional<Refusal> CheckCompression(CompressionForm& form) {
  form.output = BesideInput(form.input, form.output);
  if (form.input.empty()) return Refusal{"Choose a file.", Icon::kStop, CompressionField::kInput};
  if (const std::error_code why = WhyUnreadable(form.input)) {
    const char* text =
        CauseOf(why) == Cause::kMissing ? "The file does not exist." : "The file cannot be read.";
    return Refusal{text, Icon::kStop, CompressionField::kInput, 0, ReadReason(form.input, why)};
  }
  std::error_code error;
  if (!std::filesystem::is_regular_file(form.input, error))  // a pipe or a device, which may never end
    return Refusal{"Choose a file.", Icon::kStop, CompressionField::kInput};
  if (form.output.empty())
    return Refusal{"Give the new file a name.", Icon::kStop, CompressionField::kOutput};
  if (NameOneFile(form.input, form.output)) {
    return Refusal{"The new file would take the place of the old one.", Icon::kStop,
                   CompressionField::kOutput};
  }
  return std::nullopt;
}

bool MayWriteCompressed(const Messages& messages, CompressionForm& form) {
  if (!MayReplace(messages, form.output, form.agreed)) return false;
  form.agreed = form.output;
  return true;
}

std::optional<CompressionSizes> RunCompression(const Context& context, const CompressionForm& form) {
  if (form.expand && !BeginsAsPacked(form.input)) {
    context.messages.tell({Icon::kStop, "Decompression failed.", "Compression", Utf8FromPath(form.input)});
    return std::nullopt;
  }
  Bytes source;
  const ReadResult read = ReadWholeFile(form.input, source);
  if (read != ReadResult::kDone) {
    TellWhy(context.messages, Icon::kStop, ReadReason(form.input, read.error), "Could not read file \"%s\".",
            Utf8FromPath(form.input).c_str());
    return std::nullopt;
  }
  const Context about = About(context, Utf8FromPath(form.input));
  const auto made =
      form.expand ? Expand(about, source) : Compress(about, source, std::clamp(form.level, 0, 8) + 1);
  if (!made) return std::nullopt;
  const WriteResult written = WriteWholeFile(form.output, *made, *context.files);
  if (written != WriteResult::kDone) {
    TellWhy(context.messages, Icon::kStop, WriteReason(form.output, written.error),
            "Could not write file \"%s\".", Utf8FromPath(form.output).c_str());
    return std::nullopt;
  }
  return CompressionSizes{source.size(), made->size()};
}

}  // namespace vexa
