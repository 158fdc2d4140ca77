// A transfer from beginning to end, as a face runs it: port, reader, job thread, and the dialog's Cancel.
//
//   StartTransfer --> the job runs; it presses Cancel when it is through --> CancelTransfer --> `outcome`
//
// The face owns the object, fills `port.messages`, `transfer.context`, view, files and so on, and calls both
// functions from one thread. `view.press_cancel` must lead to a call of CancelTransfer on that thread.
#pragma once

#include <atomic>
#include <thread>

#include "config/project_config.h"
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
  std::atomic<bool> port_gone{false};  // unplugged; the face tells it and cancels
};

inline constexpr const char* kUploadTitle = "Transfer Data ( PC to STB )";
inline constexpr const char* kDownloadTitle = "Data from STB ( STB to PC )";

// False after a message, with the port closed. The console shows the port library's own message only.
bool StartTransfer(TransferSession& session, const ProjectConfig& config, TransferJob job);
// Ends the transfer in any state, after 500 ms that let the last bytes go out; joins the jobs, closes the
// port and removes the transfer's files. False after a message, when the port did not close or a thread did
// not answer; then see `left_behind`.
bool CancelTransfer(TransferSession& session);
// Opens and closes the port, as is done before an SDB upload. False after a message.
bool TestPort(TransferSession& session, const ProjectConfig& config);
// Whether the job, and the part of a download that it started, is through.
bool IsTransferOver(const TransferSession& session);

}  // namespace vexa
