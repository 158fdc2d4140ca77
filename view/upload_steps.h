// What is done around an upload of ADB data, and in which order:
//
//   a copy of what the receiver holds --> the upload --> its memory read back and compared
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/option_sets.h"
#include "config/settings.h"
#include "core/bin_file.h"

namespace vexa {

enum class UploadStep { kCopy, kSend, kCompare, kEnd };

// How a step ended.
enum class StepEnd {
  kDone,
  kNotDone,     // failed or cancelled
  kBeginAgain,  // the user wants it done otherwise, and no receiver had answered yet
};

// Where an upload is.
struct UploadSteps {
  UploadStep step = UploadStep::kEnd;
  bool copied = false;  // what this receiver holds was kept
};
UploadSteps FirstUploadStep(const TransferSettings& settings);
// The settings are those that hold when the step has ended.
void GoOn(UploadSteps& steps, StepEnd end, const TransferSettings& settings);

// Whether the box for a copy, as it stands now, calls for another order than that of the running upload. A
// receiver that has `answered` goes on with what it has begun: the box counts for the next one.
bool CallsForCopy(const TransferSettings& settings, bool copied, bool answered);
// The text of that box, which says for which upload it counts.
std::string CopyBoxText(bool copied, bool answered);
// How an upload ended that was `given_up` for another order, or ran to its end, which gave `done`. Once
// packets were sent, nothing can be kept any more of what the receiver held.
StepEnd EndOfUpload(bool given_up, uint64_t packets_sent, bool done);

// What is said when the copy failed or was cancelled, and the upload was not begun for it.
inline constexpr const char* kNothingSent =
    "Nothing was sent: what the receiver holds could not be kept before.";
inline constexpr const char* kKeepingCopy = "Keeping a copy of what is in the receiver";

// Whether the user is asked which parts of the document go to the receiver as SDB data.
bool AsksWhatToSend(const ProjectConfig& config, const Document& document);
// What he is offered, a row each: the names of the SDBs, then those of the user box records.
std::vector<std::string> PartsToSend(const Document& document);
// Those with a tick, beside the rows; nothing when no SDB is among them.
std::optional<BinSelection> SelectionOf(const Document& document, const std::vector<bool>& ticked);

// Where copies are kept: the folder that the user chose, else one in his documents.
Path CopyFolderIn(const TransferSettings& settings, const Path& documents);
// What is kept of a folder that was typed: nothing when it is the one in the documents.
std::string CopyFolderText(const std::string& typed, const Path& documents);

// The choices of the set are in force, and kept for the next start. False after a message; then nothing has
// changed.
bool ChooseOptionSet(const Context& context, const SettingsStore& store, const OptionSet& set, Path& ecf,
                     ProjectConfig& config);

}  // namespace vexa
