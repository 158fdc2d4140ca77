#include "view/upload_steps.h"

#include "platform/text.h"

namespace vexa {

namespace {

constexpr const char* kCopyFolderName = "Vexa Editor Copies";

}  // namespace

UploadStep FirstUploadStep(const TransferSettings& settings, bool copied) {
  return settings.keep_copy && !copied ? UploadStep::kCopy : UploadStep::kSend;
}

UploadStep NextUploadStep(UploadStep step, StepEnd end, const TransferSettings& settings, bool copied) {
  if (end == StepEnd::kBeginAgain) return FirstUploadStep(settings, copied);
  if (end == StepEnd::kNotDone || step == UploadStep::kCompare) return UploadStep::kEnd;
  if (step == UploadStep::kCopy) return UploadStep::kSend;
  return settings.verify ? UploadStep::kCompare : UploadStep::kEnd;
}

bool CallsForCopy(const TransferSettings& settings, bool copied, bool answered) {
  return settings.keep_copy && !copied && !answered;
}

Path CopyFolderIn(const TransferSettings& settings, const Path& documents) {
  return settings.copy_folder.empty() ? documents / kCopyFolderName : PathFromUtf8(settings.copy_folder);
}

std::string CopyFolderText(const std::string& typed, const Path& documents) {
  const std::string text(Trimmed(typed));
  return PathFromUtf8(text) == CopyFolderIn({}, documents) ? "" : text;
}

bool ChooseOptionSet(const Context& context, const SettingsStore& store, const OptionSet& set, Path& ecf,
                     ProjectConfig& config) {
  if (!LoadOptionSet(context, set, config)) return false;
  ecf = PathFromUtf8(set.file);
  SavePortSettings(store, config);
  return true;
}

}  // namespace vexa
