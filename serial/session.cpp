#include "serial/session.h"

#include <chrono>
#include <mutex>

#include "image/transfer_files.h"

namespace vexa {

namespace {

int RunJob(Transfer& transfer, TransferJob job) {
  switch (job) {
    case TransferJob::kAdb:
      return UploadAdbThread(transfer);
    case TransferJob::kSdb:
      return UploadSdbThread(transfer);
    case TransferJob::kConsole:
      return UploadUrtPacketThread(transfer);
    case TransferJob::kDownload:
      return UploadDownloadScriptThread(transfer);
  }
  return 0;
}

bool OpenForFrame(TransferSession& session, const ProjectConfig& config, bool console) {
  if (IsSamePort(config.port_name, session.console_port)) {
    Tell(session.transfer.context.messages, Icon::kStop,
         "The console is connected to %s.\nDisconnect it and try again.", config.port_name.c_str());
    return false;
  }
  BuildPortDcb(session.port, config);
  session.transfer.bytes_per_second = BytesPerSecond(session.port.dcb);
  if (OpenPort(session.port, config.port_name)) return true;
  if (!console) {
    TellWhy(session.transfer.context.messages, Icon::kStop, session.port.refusal,
            "Can't open port.\nPort may be opened by another application.");
  }
  return false;
}

bool StartThreads(TransferSession& session, TransferJob job) {
  Transfer& transfer = session.transfer;
  const bool download = job == TransferJob::kDownload;
  const auto receive = [&transfer, download](std::span<uint8_t> bytes) {
    download ? DownloadReceive(transfer, bytes) : TransferReceive(transfer, bytes);
  };
  if (!StartReaderThread(session.port, receive)) return false;
  const Outcome started = session.port.api->start_thread(session.job, [&session, job] {
    session.outcome = RunJob(session.transfer, job);
    session.job_ended = true;
    Wake(session.transfer);
  });
  const std::string why = Reason(Attempt::kUsePort, session.port.name, started.error);
  if (!started && job != TransferJob::kConsole)
    TellWhy(transfer.context.messages, Icon::kStop, why, "Thread creation problem - Upload as ADB");
  if (!started && job == TransferJob::kAdb)
    TellWhy(transfer.context.messages, Icon::kStop, why, "Unable to initialise ADB uploading process.");
  return started.done;
}

// Joins the job and the part of a download that it started. False when one of them does not answer.
bool EndJobs(TransferSession& session) {
  Transfer& transfer = session.transfer;
  std::thread* const threads[] = {&session.job, &transfer.receive_thread};
  const bool ended = !session.job.joinable() || AwaitEnd(session.port, [&](std::chrono::milliseconds time) {
    std::unique_lock hold(transfer.lock);
    return transfer.changed.wait_for(hold, time, [&] { return IsTransferOver(session); });
  });
  for (std::thread* thread : threads) {
    if (ended && thread->joinable()) thread->join();
  }
  return ended;
}

// A port that is gone has nothing left to close.
Outcome CloseSessionPort(TransferSession& session) {
  const bool gone = IsPortGone(session.port);
  const Outcome closed = ClosePort(session.port);
  if (closed || !gone) return closed;
  session.port.device = nullptr;
  return true;
}

double SecondsSince(std::chrono::steady_clock::time_point then) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - then).count();
}

void RemoveFiles(TransferSession& session) {
  Transfer& transfer = session.transfer;
  if (transfer.packet.file && !session.left_behind) {
    std::fclose(transfer.packet.file);
    transfer.packet.file = nullptr;
  }
  if (!session.own_files) return;
  std::error_code ignored;
  for (const auto* files : {&transfer.files, &transfer.region_files}) {
    for (const Path& file : *files) std::filesystem::remove(file, ignored);
  }
  RemoveTransferFiles(transfer.context.temporary_folder);
}

}  // namespace

bool StartTransfer(TransferSession& session, const ProjectConfig& config, TransferJob job) {
  Transfer& transfer = session.transfer;
  ResetTransfer(transfer);
  session.outcome = 0;
  session.job_ended = session.port_gone = false;
  session.own_files = job != TransferJob::kConsole;
  transfer.deaf = job != TransferJob::kConsole;
  session.kind = job;
  session.port_name = transfer.port_name = config.port_name;
  session.gone_reason.clear();
  session.started = std::chrono::steady_clock::now();
  session.seconds = 0;
  if (!transfer.start_thread) transfer.start_thread = session.port.api->start_thread;
  transfer.line.write = [&session](std::span<const uint8_t> bytes) { return WritePort(session.port, bytes); };
  transfer.line.purge = [&session] { PurgeReceived(session.port); };
  if (!OpenForFrame(session, config, job == TransferJob::kConsole)) return false;
  if (StartThreads(session, job)) return true;
  session.left_behind = !StopThread(session.port);
  if (!session.left_behind) ClosePort(session.port);
  return false;
}

bool CancelTransfer(TransferSession& session) {
  Transfer& transfer = session.transfer;
  const Messages& messages = transfer.context.messages;
  if (session.seconds == 0) session.seconds = SecondsSince(session.started);
  transfer.ack = transfer.enq = false;
  transfer.counter = 0;
  transfer.cancel = true;
  Wake(transfer);
  std::this_thread::sleep_for(std::chrono::milliseconds(500));
  AbandonWrites(session.port);
  if (session.port_gone) session.gone_reason = GoneReason(session.port);
  const bool jobs_ended = EndJobs(session);
  session.left_behind = !StopThread(session.port) || !jobs_ended;
  const Outcome closed = session.left_behind ? Outcome(false) : CloseSessionPort(session);
  if (session.left_behind) {
    TellNoAnswer(messages, session.port.name);
  } else if (!closed) {
    TellWhy(messages, Icon::kStop, Reason(Attempt::kUsePort, session.port.name, closed.error),
            "Port Close API failed");
  }
  RemoveFiles(session);
  return closed.done;
}

bool IsPortMissed(const TransferSession& session) {
  return session.port_gone && !session.transfer.line_done;
}

bool TestPort(TransferSession& session, const ProjectConfig& config) {
  if (!OpenForFrame(session, config, false)) return false;
  const Outcome closed = ClosePort(session.port);
  if (closed) return true;
  TellWhy(session.transfer.context.messages, Icon::kStop,
          Reason(Attempt::kUsePort, session.port.name, closed.error),
          "Port Close API failed - Upload as SDB");
  return false;
}

bool IsTransferOver(const TransferSession& session) {
  if (!session.job_ended) return false;
  return !session.transfer.script_done || session.transfer.receive_ended;
}

}  // namespace vexa
