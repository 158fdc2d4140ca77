#include "serial/backup.h"

#include "image/decoder.h"
#include "image/transfer_files.h"

namespace vexa {

namespace {

constexpr const char* kRegionFiles[] = {kAdbImageFile, kE2pImageFile};

Path Copy(const Path& folder, const std::string& name) {
  return folder / PathFromUtf8(name);
}
std::string RawName(const std::string& name, size_t region) {
  return name + "-" + std::to_string(region + 1) + ".raw";
}

bool IsTaken(const Path& folder, const std::string& name) {
  std::error_code error;
  for (const std::string& file : {name + ".bin", RawName(name, 0), RawName(name, 1)}) {
    if (std::filesystem::exists(std::filesystem::symlink_status(Copy(folder, file), error))) return true;
  }
  return false;
}

std::string FreeName(const Path& folder, const std::string& name) {
  std::string free = name;
  for (int i = 2; IsTaken(folder, free); ++i) free = name + "-" + std::to_string(i);
  return free;
}

// The regions as they lie in the temporary folder, and the database in them first.
bool Collect(const ReceiverRun& run, std::vector<FileContent>& copies) {
  const Context& context = run.face.context;
  auto decoded = DecodeFolder(context, run.config, context.temporary_folder, UserBoxInfo{});
  if (!decoded) return false;
  copies.push_back({"", std::move(decoded->file)});
  for (const char* name : kRegionFiles) {
    auto raw = ReadWholeFile(context.temporary_folder / name);
    if (raw) copies.push_back({"", std::move(*raw)});
  }
  return true;
}

}  // namespace

std::string BackupName(const LocalTime& time, const std::string& serial) {
  std::string name = Format("%04d%02d%02d-%02d%02d%02d", time.year, time.month, time.day, time.hour,
                            time.minute, time.second);
  if (!serial.empty()) name += '-';
  constexpr std::string_view kKept = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
  for (const char c : serial) name += kKept.find(c) != kKept.npos ? c : '_';
  return name;
}

bool RunBackup(ReceiverRun& run, const Path& folder, const std::string& name) {
  std::vector<FileContent> copies;
  if (!RunFetch(run, TransferPhase::kDownload, [&] { return Collect(run, copies); })) return false;
  const Context& context = run.face.context;
  const std::string free = FreeName(folder, name);
  copies[0].path = Copy(folder, free + ".bin");
  for (size_t i = 1; i < copies.size(); ++i) copies[i].path = Copy(folder, RawName(free, i - 1));
  size_t refused = 0;
  const WriteResult written = WriteWholeFiles(copies, refused, *context.files);
  if (written == WriteResult::kDone) return true;
  const Path& file = copies[refused].path;
  TellWhy(context.messages, Icon::kStop, WriteReason(file, written.error),
          "The copy could not be written to \"%s\".", Utf8FromPath(file).c_str());
  Tell(context.messages, Icon::kInformation, "%s", ReceiverStateSentence(run).c_str());
  return false;
}

}  // namespace vexa
