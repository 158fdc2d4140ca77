// One database for many receivers: what is tried before the first of them, and how each is served.
#pragma once

#include <string>

#include "serial/run.h"
#include "serial/run_log.h"

namespace vexa {

// Not changed while receivers are served.
struct ReceiverBatch {
  Document document;
  size_t sdb = 0;
  std::string database, sha256;  // the file, as the log names it
  std::string configuration;     // as --select takes it
  bool verify = false;
  Path backup_folder;  // of copies; empty: none are kept
  Path log;            // empty: none is kept
};

// Tries what would only show behind minutes on the line: a database that does not fit the configuration, a
// folder or a log that takes nothing. False after a message.
bool MayServe(const Context& context, const ReceiverBatch& batch, const ProjectConfig& config);
// The log's part of that.
bool MayWriteLog(const Context& context, const ReceiverBatch& batch);

// Serves one receiver by ServeReceiver, and gives it its row in the log. `time`: of the row and of the files
// that are sent. `end`: how the run ended. Not done when the row could not be written. Several threads may
// serve receivers of one batch, each with a run of its own.
Outcome ServeOneOf(ReceiverRun& run, const ReceiverBatch& batch, const std::string& serial,
                   const LocalTime& time, RunEnd& end);

}  // namespace vexa
