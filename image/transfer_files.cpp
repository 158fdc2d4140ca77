#include "image/transfer_files.h"

namespace vexa {

void RemoveTransferFiles(const Path& folder) {
  for (const char* name : {kAdbImageFile, kE2pImageFile, kAdbUrtFile, kE2pUrtFile, kRequestFile, kDecodedFile,
                           kPacketFile, kRegionFile}) {
    std::error_code ignored;
    std::filesystem::remove(folder / name, ignored);
  }
}

}  // namespace vexa
