// The image of a download, of any content, with partition sizes of any kind. What is made of it opens;
// compared with an erased memory it is equal, or a difference has its record.
#include <cstdlib>
#include <numeric>

#include "core/bin_file.h"
#include "core/bytes.h"
#include "image/decoder.h"
#include "image/verify.h"

using namespace vexa;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Context context;
  context.messages.tell = [](const Message&) {};
  context.messages.ask = [](const std::string&, const std::string&, bool) { return true; };
  ByteReader reader({data, size});
  ProjectConfig config;
  config.partitions.resize(1);
  config.configuration_index = reader.U8() & 3;
  const uint8_t kind = reader.U8();
  config.partition_sizes = {3368, 0, 2248, 2560, 512, 64, 8 * 7044};
  if (kind & 1) {
    for (uint32_t& partition : config.partition_sizes) partition = kind & 2 ? reader.U32() : reader.U16();
  }
  const auto e2p = reader.Take(reader.U8());
  // The bytes of the input, then an erased memory: most of an image need not be spelled out.
  const auto rest = reader.Take(reader.remaining());
  Bytes image(rest.begin(), rest.end());
  if (kind & 4) image.resize(70000, 0xFF);
  // The comparison goes byte by byte and takes most of the time: a sixty-fourth of the inputs have theirs
  // made.
  if (std::accumulate(data, data + size, 0u) % 64 == 0) {
    const AdbImages erased = {Bytes(image.size(), 0xFF), Bytes(kE2pRequested, 0xFF)};
    const auto found = CompareImages(config, StaticDatabase(), erased, image, e2p);
    if (found && (found->bytes == 0 || found->record.empty())) std::abort();
  }
  const auto decoded = DecodeImage(context, config, image, e2p, UserBoxInfo{});
  if (!decoded) return 0;
  Document document;
  if (!OpenBinBytes(context, decoded->file, document)) std::abort();
  for (const OpenSdb& sdb : document.sdbs) {
    if (!CheckLinks(*sdb.database).empty()) std::abort();
  }
  return 0;
}
