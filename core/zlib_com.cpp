#include "core/zlib_com.h"

#include <zlib.h>

#include <algorithm>
#include <cstdio>

namespace vexa {

namespace {

// zlib looks at the first digit alone.
constexpr const char* kZlibVersion = "1.0.8";

// With what zlib says below the text, and what to do then.
void ShowFailure(const Messages& messages, const char* text, const char* title, int status,
                 const char* advice) {
  const std::string caption = title == nullptr ? kApplicationTitle : *title == 0 ? "Compression" : title;
  if (messages.tell)
    messages.tell({Icon::kStop, text, caption, Format("zlib: %s. %s", zError(status), advice)});
}

void Trace(int line) {
  std::printf("Returning from =>%s ,Line =>%d\n", "zlib_com.cpp", line);
}

// One deflate call over the two buffers; zlib's status.
int Deflate(std::span<const uint8_t> source, std::span<uint8_t> destination, int level, uint64_t& length) {
  z_stream stream{};
  stream.next_in = const_cast<Bytef*>(source.data());
  stream.avail_in = static_cast<uInt>(source.size());
  stream.next_out = destination.data();
  stream.avail_out = static_cast<uInt>(destination.size());
  int status = deflateInit_(&stream, level, kZlibVersion, static_cast<int>(sizeof stream));
  if (status != Z_OK) {
    Trace(__LINE__);
    return status;
  }
  status = deflate(&stream, Z_FINISH);
  if (status != Z_STREAM_END) {
    deflateEnd(&stream);
    Trace(__LINE__);
    return status == Z_OK ? Z_BUF_ERROR : status;
  }
  length = stream.total_out;
  return deflateEnd(&stream);
}

}  // namespace

uint64_t CompressedCapacity(uint64_t size) {
  return static_cast<uint64_t>(static_cast<double>(size) * 0.01 + static_cast<double>(size) + 12);
}

uint64_t CompressBuffer(const Messages& messages, std::span<const uint8_t> source,
                        std::span<uint8_t> destination, int level, const char* title) {
  const uint64_t capacity = std::min<uint64_t>(destination.size(), CompressedCapacity(source.size()));
  uint64_t length = 0;
  const int status = Deflate(source, destination.first(static_cast<size_t>(capacity)), level, length);
  if (status != Z_OK || length == 0) {
    ShowFailure(messages, "Compression failed.", title, status,
                "Switch compression off, or choose another level.");
    return 0;
  }
  return length;
}

int DecompressBuffer(const Messages& messages, std::span<const uint8_t> source,
                     std::span<uint8_t> destination, uint64_t& length, const char* title) {
  uLongf used = static_cast<uLongf>(destination.size());
  const int status = uncompress(destination.data(), &used, source.data(), static_cast<uLong>(source.size()));
  length = used;
  if (status != Z_OK)
    ShowFailure(messages, "Decompression failed.", title, status,
                "The data is damaged: use another copy of it.");
  return status;
}

}  // namespace vexa
