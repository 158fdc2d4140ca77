// What is done around an upload of ADB data, and in which order:
//
//   a copy of what the receiver holds --> the upload --> its memory read back and compared
#pragma once

#include <string>

#include "config/option_sets.h"
#include "config/settings.h"

namespace vexa {

enum class UploadStep { kCopy, kSend, kCompare, kEnd };

// How a step ended.
enum class StepEnd {
  kDone,
  kNotDone,     // failed or cancelled
  kBeginAgain,  // the user wants it done otherwise, and no receiver had answered yet
};

// `copied`: a copy was kept in this run.
UploadStep FirstUploadStep(const TransferSettings& settings, bool copied = false);
UploadStep NextUploadStep(UploadStep step, StepEnd end, const TransferSettings& settings, bool copied);

// Whether the box for a copy, as it stands now, calls for another order than that of the running upload. A
// receiver that has `answered` goes on with what it has begun: the box counts for the next one.
bool CallsForCopy(const TransferSettings& settings, bool copied, bool answered);

// What is said when the copy failed or was cancelled, and the upload was not begun for it.
inline constexpr const char* kNothingSent =
    "Nothing was sent: what the receiver holds could not be kept before.";
inline constexpr const char* kKeepingCopy = "Keeping a copy of what is in the receiver";

// Where copies are kept: the folder that the user chose, else one in his documents.
Path CopyFolderIn(const TransferSettings& settings, const Path& documents);
// What is kept of a folder that was typed: nothing when it is the one in the documents.
std::string CopyFolderText(const std::string& typed, const Path& documents);

// The choices of the set are in force, and kept for the next start. False after a message; then nothing has
// changed.
bool ChooseOptionSet(const Context& context, const SettingsStore& store, const OptionSet& set, Path& ecf,
                     ProjectConfig& config);

}  // namespace vexa
