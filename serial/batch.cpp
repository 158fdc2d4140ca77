#include "serial/batch.h"

#include "serial/backup.h"

namespace vexa {

namespace {

// A database, say: a text has no byte 0.
bool IsOtherFile(const Path& log) {
  std::error_code error;
  std::string start;
  return std::filesystem::is_regular_file(log, error) &&
         ReadFileStart(log, 4096, start) == ReadResult::kDone && start.find('\0') != std::string::npos;
}

}  // namespace

bool MayServe(const Context& context, const ReceiverBatch& batch, const ProjectConfig& config) {
  if (!BuildAdbImages(context, batch.document, batch.sdb, config)) return false;
  return (batch.backup_folder.empty() || MayKeepCopies(context, batch.backup_folder)) &&
         MayWriteLog(context, batch);
}

bool MayWriteLog(const Context& context, const ReceiverBatch& batch) {
  if (batch.log.empty()) return true;
  const std::string log = Utf8FromPath(batch.log);
  if (IsOtherFile(batch.log)) {
    TellWhy(context.messages, Icon::kStop, "It holds something else than a log. Choose another file.",
            "Could not write file \"%s\".", log.c_str());
    return false;
  }
  const Outcome tried = TryRunLog(batch.log);
  if (tried) return true;
  TellWhy(context.messages, Icon::kStop, Reason(Attempt::kWrite, log, tried.error),
          "Could not write file \"%s\".", log.c_str());
  return false;
}

Outcome ServeOneOf(ReceiverRun& run, const ReceiverBatch& batch, const std::string& serial,
                   const LocalTime& time, RunEnd& end) {
  const bool done =
      ServeReceiver(run, {&batch.document, batch.sdb, time, batch.verify, batch.backup_folder, serial});
  const bool cancelled = run.face.cancelled && run.face.cancelled();
  end = done ? RunEnd::kOk : cancelled ? RunEnd::kCancelled : RunEnd::kFailed;
  if (batch.log.empty()) return true;
  return AppendToRunLog(batch.log,
                        {time, serial, batch.database, batch.sha256, batch.configuration, run.result, end});
}

}  // namespace vexa
