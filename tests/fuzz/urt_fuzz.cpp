// A URT file of any content, and an image of any content through the writer and back.
#include <cstdlib>

#include "core/bytes.h"
#include "image/bin2cod.h"
#include "image/urt.h"

using namespace vexa;

namespace {

void RoundTrip(ByteReader& reader) {
  Context context;
  context.messages.tell = [](const Message&) {};
  ConversionParameters parameters;
  parameters.block_size = 1024u * (reader.U8() & 3);
  parameters.packet_size = reader.U16() & 0x1FFF;
  parameters.compressed = reader.U8() & 1;
  parameters.compression_type = reader.U8() & 1;
  ImageDescription description;
  description.type = reader.U8() & 15;
  description.flag = reader.U8() & 3;
  description.name.assign(reader.U8() & 63, 'x');
  description.start = reader.U32();
  // The fill up to the end address: enough for some blocks, few enough packets for speed.
  description.end = description.start + (reader.U16() & 0x1FFF);
  const auto image = reader.Take(reader.remaining());
  Bytes urt;
  const Bytes copy(image.begin(), image.end());
  if (BuildUrt(context, parameters, description, copy, urt) != ConversionResult::kDone) return;
  const UrtContent content = ReadUrt(urt);
  if (!content.findings.empty()) std::abort();
  if (content.header && OriginalImage(content) != copy) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ByteReader reader({data, size});
  switch (reader.U8() & 3) {
    case 0:
      RoundTrip(reader);
      break;
    case 1: {
      const uint32_t length = reader.U16();
      ExpandBin2Cod(reader.Take(reader.remaining()), length);
      break;
    }
    default: {
      const UrtContent content = ReadUrt(reader.Take(reader.remaining()));
      OriginalImage(content);
    }
  }
  return 0;
}
