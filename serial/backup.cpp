#include "serial/backup.h"

#include "image/decoder.h"
#include "image/transfer_files.h"

namespace vexa {

namespace {

constexpr const char* kRegionFiles[kRawRegions] = {kAdbImageFile, kE2pImageFile};

Path Copy(const Path& folder, const std::string& name) {
  return folder / PathFromUtf8(name);
}

bool IsTaken(const Path& folder, const std::string& name) {
  std::error_code error;
  for (const std::string& file : {name + kCopyExtension, name + RawSuffix(0), name + RawSuffix(1)}) {
    if (std::filesystem::exists(std::filesystem::symlink_status(Copy(folder, file), error))) return true;
  }
  return false;
}

std::string FreeName(const Path& folder, const std::string& name) {
  std::string free = name;
  for (int i = 2; IsTaken(folder, free); ++i) free = name + "-" + std::to_string(i);
  return free;
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

std::string RawSuffix(size_t region) {
  return "-" + std::to_string(region + 1) + ".raw";
}

bool MayKeepCopies(const Context& context, const Path& folder) {
  const auto why = WhyNotWritable(folder / "copy.bin");
  if (!why) return true;
  TellWhy(context.messages, Icon::kStop, WriteReason(folder, why), "No copy can be kept in \"%s\".",
          Utf8FromPath(folder).c_str());
  return false;
}

bool CollectCopy(const Context& context, const ProjectConfig& config, std::vector<FileContent>& copy) {
  // What is wrong in which scratch file helps nobody, unless it cannot be read.
  Context judge = context;
  if (!WhyUnreadable(context.temporary_folder / kAdbImageFile)) judge.messages.tell = [](const Message&) {};
  auto decoded = DecodeFolder(judge, config, context.temporary_folder, UserBoxInfo{});
  if (!decoded) {
    Tell(context.messages, Icon::kStop,
         "What the receiver holds is no database of this configuration, so no copy of it can be kept. "
         "Without one, data can be sent to it.");
    return false;
  }
  copy.push_back({"", std::move(decoded->file)});
  for (const char* name : kRegionFiles) {
    auto raw = ReadWholeFile(context.temporary_folder / name);
    if (raw) copy.push_back({"", std::move(*raw)});
  }
  return true;
}

bool WriteCopy(const Context& context, const Path& folder, const std::string& name,
               std::vector<FileContent>& copy) {
  const std::string free = FreeName(folder, name);
  copy[0].path = Copy(folder, free + kCopyExtension);
  for (size_t i = 1; i < copy.size(); ++i) copy[i].path = Copy(folder, free + RawSuffix(i - 1));
  size_t refused = 0;
  const WriteResult written = WriteWholeFiles(copy, refused, *context.files);
  if (written == WriteResult::kDone) return true;
  const Path& file = copy[refused].path;
  TellWhy(context.messages, Icon::kStop, WriteReason(file, written.error),
          "The copy could not be written to \"%s\".", Utf8FromPath(file).c_str());
  return false;
}

bool RunBackup(ReceiverRun& run, const Path& folder, const std::string& name) {
  std::vector<FileContent> copy;
  const Context& context = run.face.context;
  if (!RunFetch(run, TransferPhase::kDownload, [&] { return CollectCopy(context, run.config, copy); }))
    return false;
  if (WriteCopy(context, folder, name, copy)) return true;
  Tell(context.messages, Icon::kInformation, "%s", ReceiverStateSentence(run).c_str());
  return false;
}

}  // namespace vexa
