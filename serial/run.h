// Whole runs at one receiver, for a face that waits: transfers one behind the other, measured and judged. A
// run sends, fetches or compares; what a receiver is to get altogether is one order:
//
//   ServeReceiver: a copy of what the receiver holds --> the upload --> its memory read back and compared
//
// Each function returns when it is through, has failed or was cancelled. Failures are told, and behind them,
// as information, once the port was asked for, what state the receiver is in and what to do next. Runs at
// several ports may go side by side, each with a temporary folder of its own.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "image/adb.h"
#include "platform/clock.h"
#include "serial/port.h"
#include "serial/progress.h"
#include "serial/receiver_state.h"
#include "serial/session.h"

namespace vexa {

// Whom a run tells. All but `context` and `api` may be empty. `context.messages`, `status`, `report` and
// `tap` are called from the threads of the transfer as well.
struct RunFace {
  Context context;
  const CommApi* api = &SystemCommApi();
  std::function<void(const std::string& text)> status;    // each text once a run, in order
  std::function<void(const std::string& text)> report;    // of a console upload
  std::function<void(const TransferProgress&)> progress;  // about ten times a second, and at each end
  LineTap tap;
  std::function<bool()> cancelled;
  double timeout = 0;    // s without a new packet, after which the run has failed; 0: none
  bool patient = false;  // which does not count until the receiver has answered the run for the first time
};

struct RunResult {
  TransferPhase phase = TransferPhase::kWakeUp;   // reached last
  uint64_t bytes = 0, packets = 0, repeated = 0;  // new frames and their payload; frames again
  double seconds = 0;
  std::optional<bool> verified;  // whether the receiver holds what it should; nothing: it was not asked
};

struct ShownTexts;  // the status texts of a run

struct ReceiverRun : ReceiverFacts {
  RunFace face;
  ProjectConfig config;  // with the port and its settings
  RunResult result;
  // The run's own.
  ProgressMeter meter;
  std::shared_ptr<ShownTexts> shown;
  bool begun = false;        // a transfer was started
  bool answered = false;     // the receiver was heard
  std::string problem;       // what a report said of the file that was sent; may be empty
  bool left_behind = false;  // a thread hangs in the driver; the port stays taken
};

// Sends the files. False: failed or cancelled.
bool RunUpload(ReceiverRun& run, TransferJob job, std::vector<Path> files);
// Reads the regions that the configuration asks for into the temporary folder, as the phase kDownload or
// kVerify, and hands them to `take`, on a thread of the transfer, which gives back whether it has use for
// them. False: failed, cancelled or `take` did.
bool RunFetch(ReceiverRun& run, TransferPhase phase, const std::function<bool()>& take);
// Reads the receiver back and compares it with the images of the document's SDB. False after a message when
// it differs, or failed or cancelled.
bool RunVerify(ReceiverRun& run, const Document& document, size_t sdb, const AdbImages& images);

struct ReceiverOrder {
  const Document* document = nullptr;
  size_t sdb = 0;
  LocalTime time;  // for the files that are sent
  bool verify = false;
  Path backup_folder;  // of the copy; empty: none is kept
  std::string serial;  // the receiver's serial number; may be empty
};
// All that the order asks for. A copy that cannot be kept ends it before anything is sent. False: failed or
// cancelled.
bool ServeReceiver(ReceiverRun& run, const ReceiverOrder& order);

// Bytes that the job moves, as its progress counts them: the payload of what the files hold, or the memory
// that a download's script asks for.
uint64_t BytesToMove(const Transfer& transfer, TransferJob job);

}  // namespace vexa
