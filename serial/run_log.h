// The log of many receivers: a CSV file that grows by a row for each.
#pragma once

#include <string>

#include "platform/files.h"
#include "serial/run.h"

namespace vexa {

enum class RunEnd { kOk, kFailed, kCancelled };
const char* RunEndName(RunEnd end);  // "ok", "failed", "cancelled"

struct RunLogRow {
  LocalTime time;
  std::string serial, database, sha256;
  std::string configuration;  // as --select takes it
  RunResult result;
  RunEnd end = RunEnd::kOk;
};

// Appends the row, behind the header in a file that is new or empty, as a line of its own in any. When not
// all of it can be written the file is as it was, as far as the system allows that.
Outcome AppendToRunLog(const Path& file, const RunLogRow& row);
// Whether rows can be appended. A file that was not there is not there afterwards.
Outcome TryRunLog(const Path& file);

}  // namespace vexa
