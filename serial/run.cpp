#include "serial/run.h"

#include <algorithm>
#include <memory>

#include "core/bytes.h"
#include "image/line_frame.h"
#include "image/urt.h"
#include "serial/backup.h"
#include "serial/prepare.h"
#include "serial/reports.h"
#include "serial/verdict.h"

namespace vexa {

struct ShownTexts {
  std::mutex lock;  // a download shows from two threads
  std::vector<std::string> texts;
  std::function<void(const std::string&)> show;
};

namespace {

using Clock = std::chrono::steady_clock;

// One transfer of a run. It stays when a thread hangs in the driver.
struct OneTransfer {
  TransferSession session;
  TransferPhase phase = TransferPhase::kUpload;
  uint64_t total = 0;
  std::atomic<bool> pressed{false}, file_refused{false}, timed_out{false};
  std::string problem;  // of a file that was refused
};

double Now() {
  return std::chrono::duration<double>(Clock::now().time_since_epoch()).count();
}

bool IsCancelled(const ReceiverRun& run) {
  return run.face.cancelled && run.face.cancelled();
}

void ShowOnce(ShownTexts& shown, const std::string& text) {
  const std::lock_guard hold(shown.lock);
  if (text.empty() || std::find(shown.texts.begin(), shown.texts.end(), text) != shown.texts.end()) return;
  shown.texts.push_back(text);
  Show(shown.show, text);
}

void Connect(ReceiverRun& run, OneTransfer& attempt, TransferJob job) {
  TransferSession& session = attempt.session;
  Transfer& transfer = session.transfer;
  transfer.context = run.face.context;
  transfer.context.files = &SystemFiles();  // the job ends by its own rules
  session.port.api = run.face.api;
  session.port.messages = WatchedPortMessages(session.port, session.port_gone, run.face.context.messages);
  session.port.tap = run.face.tap;
  if (attempt.phase != TransferPhase::kVerify)
    transfer.view.status = [shown = run.shown](const std::string& text) { ShowOnce(*shown, text); };
  transfer.view.press_cancel = [&attempt] { attempt.pressed = true; };
  transfer.report = [&attempt, job, report = run.face.report](int code) {
    ReportTarget target;
    target.frame_upload = job == TransferJob::kAdb || job == TransferJob::kSdb;
    target.download = job == TransferJob::kDownload;
    target.append = [&](const std::string& text, ReportColour) { Show(report, text); };
    if (code == 23 && (attempt.file_refused || IsPortMissed(attempt.session) || attempt.timed_out))
      return;  // told already, and not the user's doing
    ReportLoaderStatus(target, code);
    if (code >= 0 || attempt.file_refused) return;
    attempt.problem = LoaderProblemOf(code);
    attempt.file_refused = true;
  };
}

void Follow(ReceiverRun& run, const OneTransfer& attempt, const RunResult& before) {
  const Transfer& transfer = attempt.session.transfer;
  RunResult& result = run.result;
  result.packets = before.packets + transfer.packets_moved;
  result.repeated = before.repeated + transfer.packets_repeated;
  result.bytes = before.bytes + transfer.bytes_moved;
  const bool woken = transfer.packets_moved > 0;
  if (run.meter.now.phase == TransferPhase::kWakeUp && woken)
    BeginPhase(run.meter, attempt.phase, attempt.total, Now());
  const bool upload = attempt.phase == TransferPhase::kUpload;
  Measure(run.meter, upload ? transfer.bytes_moved : transfer.region_bytes, result.repeated, Now());
  result.phase = run.meter.now.phase;
}

// Until the job presses Cancel or is through, the user cancels, or nothing moves. True: the job ended by
// itself.
bool AwaitJob(ReceiverRun& run, OneTransfer& attempt, const RunResult& before) {
  TransferSession& session = attempt.session;
  Transfer& transfer = session.transfer;
  const Messages& messages = run.face.context.messages;
  const std::string& port = run.config.port_name;
  uint64_t moved = 0;
  auto last = Clock::now(), shown = last - std::chrono::seconds(1);
  while (!attempt.pressed && !IsTransferOver(session)) {
    if (IsCancelled(run) || attempt.file_refused) return false;
    if (IsPortMissed(session)) break;
    const auto now = Clock::now();
    // Bytes from before the job are no answer to it.
    run.answered |= transfer.xon;
    if (transfer.packets_moved != moved || (run.face.patient && !run.answered)) {
      moved = transfer.packets_moved;
      last = now;
    }
    if (now - shown >= std::chrono::milliseconds(100)) {
      shown = now;
      Follow(run, attempt, before);
      if (run.face.progress) run.face.progress(run.meter.now);
    }
    if (run.face.timeout > 0 && std::chrono::duration<double>(now - last).count() > run.face.timeout) {
      TellWhy(messages, Icon::kStop,
              port + ": no answer. Check the cable, and switch the receiver off and on.",
              "The transfer made no progress for %g seconds.", run.face.timeout);
      attempt.timed_out = true;
      return false;
    }
    AwaitTransfer(transfer, 20, [&attempt] { return attempt.pressed.load(); });
  }
  if (!IsPortMissed(session)) return true;
  TellWhy(messages, Icon::kStop, GoneReason(session.port),
          "%s is not available any more.\nThe transfer was ended.", port.c_str());
  return false;
}

// The whole transfer. False: failed or cancelled. What a download's `decode` said is the caller's to look at.
bool RunAttempt(ReceiverRun& run, std::unique_ptr<OneTransfer>& owned, TransferJob job) {
  OneTransfer& attempt = *owned;
  const RunResult before = run.result;
  if (IsCancelled(run)) return false;
  attempt.total = BytesToMove(attempt.session.transfer, job);
  const bool first = !run.begun;
  run.begun = true;
  BeginPhase(run.meter, first ? TransferPhase::kWakeUp : attempt.phase, first ? 0 : attempt.total, Now());
  run.result.phase = run.meter.now.phase;
  const auto leave_behind = [&] {
    run.left_behind = attempt.session.left_behind;
    if (run.left_behind) static_cast<void>(owned.release());  // a thread still uses it
  };
  run.unopened = !StartTransfer(attempt.session, run.config, job);
  if (run.unopened) {
    leave_behind();
    return false;
  }
  bool over = false;
  try {
    over = AwaitJob(run, attempt, before);
  } catch (...) {
    CancelTransfer(attempt.session);
    leave_behind();
    throw;
  }
  const bool ended = CancelTransfer(attempt.session) && over;
  Follow(run, attempt, before);
  run.result.seconds = before.seconds + attempt.session.seconds;
  if (attempt.phase == TransferPhase::kUpload) run.uploaded += attempt.session.transfer.packets_moved;
  if (attempt.file_refused) run.problem = attempt.problem;
  const bool done = ended && attempt.session.outcome == 1 && !attempt.file_refused;
  leave_behind();
  return done;
}

std::unique_ptr<OneTransfer> MakeAttempt(ReceiverRun& run, TransferPhase phase, TransferJob job) {
  auto attempt = std::make_unique<OneTransfer>();
  attempt->phase = phase;
  if (!run.shown) {
    run.shown = std::make_shared<ShownTexts>();
    run.shown->show = run.face.status;
  }
  Connect(run, *attempt, job);
  return attempt;
}

// Says how the receiver is left, unless the user knows that he cancelled.
bool Ended(ReceiverRun& run, bool done) {
  if (done) {
    Measure(run.meter, run.meter.now.total, run.result.repeated, Now());
    if (run.face.progress) run.face.progress(run.meter.now);
  } else if (!IsCancelled(run)) {
    Tell(run.face.context.messages, Icon::kInformation, "%s", ReceiverStateSentence(run).c_str());
  }
  return done;
}

using DecodeStep = std::function<bool(const Context& context, bool crc_failed)>;

// Reads the regions into the temporary folder; `decode` as Transfer::decode, with the transfer's context.
// False: failed, cancelled or `decode` did.
bool Fetch(ReceiverRun& run, TransferPhase phase, const DecodeStep& decode) {
  auto files = PrepareDownload(run.face.context, run.config);
  if (!files) return false;
  auto attempt = MakeAttempt(run, phase, TransferJob::kDownload);
  Transfer& transfer = attempt->session.transfer;
  transfer.files = std::move(files->script);
  transfer.region_files = std::move(files->regions);
  const auto decoded = std::make_shared<std::atomic<bool>>(false);
  const auto shown = phase == TransferPhase::kDownload ? run.shown : nullptr;
  transfer.decode = [decoded, shown, decode, &context = transfer.context](bool crc_failed) {
    if (!crc_failed && shown) ShowOnce(*shown, kCrcHolds);
    *decoded = decode(context, crc_failed);
    return decoded->load();
  };
  return Ended(run, RunAttempt(run, attempt, TransferJob::kDownload) && *decoded);
}

}  // namespace

bool RunUpload(ReceiverRun& run, TransferJob job, std::vector<Path> files) {
  auto attempt = MakeAttempt(run, TransferPhase::kUpload, job);
  attempt->session.transfer.files = std::move(files);
  run.unopened = job == TransferJob::kSdb && !TestPort(attempt->session, run.config);
  run.sent = !run.unopened && RunAttempt(run, attempt, job);
  return Ended(run, run.sent);
}

bool RunFetch(ReceiverRun& run, TransferPhase phase, const std::function<bool()>& take) {
  return Fetch(run, phase, [take, port = run.config.port_name](const Context& context, bool crc_failed) {
    if (crc_failed) TellCrcFailed(context.messages, port);
    return !crc_failed && take();
  });
}

bool RunVerify(ReceiverRun& run, const Document& document, size_t sdb, const AdbImages& images) {
  run.result.verified = false;
  Show(run.face.status, kVerifying);
  const StaticDatabase& database = *document.sdbs[sdb].database;
  const bool held = Fetch(run, TransferPhase::kVerify, [&](const Context& context, bool crc_failed) {
    const Verdict verdict = JudgeDownload(context, run.config, database, images, crc_failed);
    run.differs = verdict == Verdict::kDiffers;
    return verdict == Verdict::kSame;
  });
  if (held) Show(run.face.status, VerdictText(Verdict::kSame));
  run.result.verified = held;
  return held;
}

bool ServeReceiver(ReceiverRun& run, const ReceiverOrder& order) {
  const LocalTime start = LocalTimeNow();
  const Context& context = run.face.context;
  const auto images = BuildAdbImages(context, *order.document, order.sdb, run.config);
  if (!images) return false;
  if (!order.backup_folder.empty() && !RunBackup(run, order.backup_folder, BackupName(start, order.serial)))
    return false;
  auto files = PrepareAdbUpload(context, *order.document, order.sdb, run.config, order.time);
  if (!files || !RunUpload(run, TransferJob::kAdb, std::move(*files))) return false;
  return !order.verify || RunVerify(run, *order.document, order.sdb, *images);
}

uint64_t BytesToMove(const Transfer& transfer, TransferJob job) {
  const bool download = job == TransferJob::kDownload;
  const size_t files =
      job == TransferJob::kAdb ? transfer.files.size() : std::min<size_t>(1, transfer.files.size());
  uint64_t bytes = 0;
  for (const Path& file : std::span(transfer.files).first(files)) {
    Bytes content;
    if (ReadUrtBytes(file, content) != ReadResult::kDone) continue;  // the job tells why, and sends nothing
    ByteReader reader(content);
    reader.Seek(2);
    const uint32_t count = reader.U32Big();
    auto rest = std::span<const uint8_t>(content).subspan(std::min<size_t>(6, content.size()));
    for (uint32_t i = 0; i < count; ++i) {
      const FrameView frame = LookAtFrame(rest);
      if (!frame.length || frame.start != kStx) break;
      const size_t size = std::min(frame.size(), rest.size());
      ByteReader record(rest.subspan(kFrameHead, std::min(size - kFrameHead, size_t{*frame.length})));
      record.Seek(5);  // behind the count and the region's number
      const uint32_t start = record.U32Big(), end = record.U32Big();
      bytes += !download ? *frame.length : record.ok() && end > start ? end - start : 0;
      rest = rest.subspan(size);
    }
  }
  return bytes;
}

}  // namespace vexa
