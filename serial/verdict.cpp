#include "serial/verdict.h"

#include "core/messages.h"
#include "image/transfer_files.h"
#include "image/verify.h"
#include "platform/files.h"
#include "platform/system_error.h"

namespace vexa {

namespace {

// A region of which nothing came has no file. False after a message.
bool ReadRegion(const Context& context, const char* name, Bytes& content) {
  const Path path = context.temporary_folder / name;
  const ReadResult read = ReadWholeFile(path, content);
  if (read == ReadResult::kDone || CauseOf(read.error) == Cause::kMissing) return true;
  TellWhy(context.messages, Icon::kStop, ReadReason(path, read.error), "The received data cannot be read.");
  return false;
}

}  // namespace

std::string CrcFailedText() {
  return "CRC Verification - failed \n Retry once again";
}

void TellCrcFailed(const Messages& messages, const std::string& port) {
  TellWhy(messages, Icon::kStop, port, "%s", CrcFailedText().c_str());
}

const char* VerdictText(Verdict verdict) {
  return verdict == Verdict::kSame ? "Verification - Success" : "Verification - failed";
}

Verdict JudgeDownload(const Context& context, const ProjectConfig& config, const StaticDatabase& database,
                      const AdbImages& images, bool crc_failed) {
  if (crc_failed) {
    TellCrcFailed(context.messages, config.port_name);
    return Verdict::kNotCompared;
  }
  Bytes adb, e2p;
  if (!ReadRegion(context, kAdbImageFile, adb) ||
      (!images.e2p.empty() && !ReadRegion(context, kE2pImageFile, e2p)))
    return Verdict::kNotCompared;
  const auto found = CompareImages(config, database, images, adb, e2p);
  if (!found) return Verdict::kSame;
  TellWhy(context.messages, Icon::kStop,
          Format("%llu bytes differ, the first at 0x%08X (%s)", static_cast<unsigned long long>(found->bytes),
                 unsigned{found->address}, found->record.c_str()),
          "%s", VerdictText(Verdict::kDiffers));
  return Verdict::kDiffers;
}

}  // namespace vexa
