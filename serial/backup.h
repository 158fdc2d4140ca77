// Copies of what a receiver held before it got something else: the database as a download makes it, and the
// regions of its memory as they came, in one folder
//
//   20240506-070809-SERIAL.bin   20240506-070809-SERIAL-1.raw   20240506-070809-SERIAL-2.raw
#pragma once

#include <string>

#include "serial/run.h"

namespace vexa {

// "YYYYMMDD-HHMMSS", and "-SERIAL" where there is one: its letters, digits, '.', '_' and '-', and '_' for
// whatever else stands in it.
std::string BackupName(const LocalTime& time, const std::string& serial);
// Reads the receiver and keeps it under the name, or with "-2", "-3" behind it when that is taken; all files
// or none. False after a message, or when it was cancelled.
bool RunBackup(ReceiverRun& run, const Path& folder, const std::string& name);

}  // namespace vexa
