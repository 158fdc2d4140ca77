// A transfer from beginning to end, as a face runs it: port, reader, job thread, and the dialog's Cancel.
//
//   StartTransfer --> the job runs; it presses Cancel when it is through --> CancelTransfer --> `outcome`
//
// The face owns the object, fills `port.messages`, `transfer.context`, view, files and so on, and calls both
// functions from one thread. `view.press_cancel` must lead to a call of CancelTransfer on that thread.
#pragma once

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "config/project_config.h"
#include "core/bin_file.h"
#include "serial/port.h"
#include "serial/transfer.h"

namespace vexa {

enum class TransferJob { kAdb, kSdb, kDownload, kConsole };

struct TransferSession {
  Port port;
  Transfer transfer;
  std::thread job;
  std::atomic<int> outcome{0};  // what the job returned; of a download, whether it ran to its end
  std::atomic<bool> job_ended{false};
  bool own_files = false;              // what is sent was made for it, and goes with it
  bool left_behind = false;            // a thread hangs in the driver: this object must stay
  std::atomic<bool> port_gone{false};  // unplugged; see IsPortMissed
  std::string console_port;            // the port that this program's console is connected to; empty: none
  const char* said = nullptr;          // what it is for, instead of the job's own status; nullptr: that
  std::string gone_reason;             // of a port that was unplugged, since CancelTransfer
  TransferJob kind = TransferJob::kAdb;
  std::string port_name;  // that it was started with
  std::chrono::steady_clock::time_point started;
  double seconds = 0;  // from the start to CancelTransfer
};

inline constexpr const char* kUploadTitle = "Transfer Data ( PC to STB )";
inline constexpr const char* kDownloadTitle = "Data from STB ( STB to PC )";

// False after a message, with the port closed. A port that `console_port` holds is refused with a text that
// says so. The console shows the port library's own message only.
bool StartTransfer(TransferSession& session, const ProjectConfig& config, TransferJob job);
// Ends the transfer in any state, after 500 ms that let the last bytes go out; joins the jobs, closes the
// port and removes the transfer's files. False after a message, when the port did not close or a thread did
// not answer; then see `left_behind`.
bool CancelTransfer(TransferSession& session);
// Whether the port went away while the job still needed it: the face tells it and cancels. One that goes when
// the last packet is on its way, or when all regions are here, changes nothing.
bool IsPortMissed(const TransferSession& session);
// Opens and closes the port, as is done before an SDB upload. False after a message.
bool TestPort(TransferSession& session, const ProjectConfig& config);
// Whether the job, and the part of a download that it started, is through.
bool IsTransferOver(const TransferSession& session);

// The status line of a running transfer, to be fetched a few times a second: the job's status, what is sent
// (`transfer.subject`) and, when nobody has answered for some seconds, for how long.
//   Receiver not connected.   "ASTRA" as ADB data   no answer for 0:12
std::string TransferStatusLine(TransferSession& session);
// `transfer.subject` of an upload: the names of what is sent, as ADB data or as SDB data.
std::string UploadSubject(const Document& document, const BinSelection& selection, TransferJob job);

// How a transfer ended, for the frame's status line; after CancelTransfer.
//   ADB upload completed.   241 packets   3 packets repeated   25.3 s
//   Cancelled: ADB upload inprogress.   12 packets   1.0 s
//   Failed: COM1 is not available any more.   12 packets   1.0 s
std::string TransferOutcomeText(TransferSession& session);

}  // namespace vexa
