#include "view/upload_steps.h"

#include "core/field_texts.h"
#include "platform/text.h"

namespace vexa {

namespace {

constexpr const char* kCopyFolderName = "Vexa Editor Copies";

}  // namespace

UploadSteps FirstUploadStep(const TransferSettings& settings) {
  return {settings.keep_copy ? UploadStep::kCopy : UploadStep::kSend, false};
}

void GoOn(UploadSteps& steps, StepEnd end, const TransferSettings& settings) {
  if (end == StepEnd::kBeginAgain) {
    steps = FirstUploadStep(settings);  // another receiver stands at the port of another set
  } else if (end == StepEnd::kNotDone) {
    steps.step = UploadStep::kEnd;
  } else if (steps.step == UploadStep::kCopy) {
    steps = {UploadStep::kSend, true};
  } else {
    const bool compares = steps.step == UploadStep::kSend && settings.verify;
    steps.step = compares ? UploadStep::kCompare : UploadStep::kEnd;
  }
}

bool CallsForCopy(const TransferSettings& settings, bool copied, bool answered) {
  return settings.keep_copy && !copied && !answered;
}

std::string CopyBoxText(bool copied, bool answered) {
  return std::string("&Keep a copy of what is in the receiver") + (copied     ? " (one was kept)"
                                                                   : answered ? " (from the next upload on)"
                                                                              : "");
}

StepEnd EndOfUpload(bool given_up, uint64_t packets_sent, bool done) {
  if (given_up && packets_sent == 0) return StepEnd::kBeginAgain;
  return done ? StepEnd::kDone : StepEnd::kNotDone;
}

bool AsksWhatToSend(const ProjectConfig& config, const Document& document) {
  return config.sdb_format != 0 && document.sdbs.size() + document.ubis.size() > 1;
}

std::vector<std::string> PartsToSend(const Document& document) {
  std::vector<std::string> names;
  for (const OpenSdb& sdb : document.sdbs) names.push_back(NameText(document, sdb.name));
  for (const OpenUbi& ubi : document.ubis) names.push_back(NameText(document, ubi.name));
  return names;
}

std::optional<BinSelection> SelectionOf(const Document& document, const std::vector<bool>& ticked) {
  BinSelection selection{0, 0};
  const size_t sdbs = document.sdbs.size();
  for (size_t i = 0; i < ticked.size(); ++i) {
    if (ticked[i]) (i < sdbs ? selection.sdbs : selection.ubis) |= 1u << (i < sdbs ? i : i - sdbs);
  }
  return selection.sdbs != 0 ? std::optional(selection) : std::nullopt;
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
