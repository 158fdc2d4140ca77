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
// Whether files can be made in the folder; false after a message.
bool MayKeepCopies(const Context& context, const Path& folder);
// The decode step of a download that is to be kept (Transfer::decode): the database, and the regions that the
// download left in the temporary folder. False after a message.
bool CollectCopy(const Context& context, const ProjectConfig& config, std::vector<FileContent>& copy);
// Writes what was collected under the name, or with "-2", "-3" behind it when that is taken; all files or
// none. False after a message.
bool WriteCopy(const Context& context, const Path& folder, const std::string& name,
               std::vector<FileContent>& copy);
// Reads the receiver and keeps it so. False after a message, or when it was cancelled.
bool RunBackup(ReceiverRun& run, const Path& folder, const std::string& name);

// The regions of a copy, from 0: "-1.raw".
std::string RawSuffix(size_t region);
inline constexpr size_t kRawRegions = 2;
inline constexpr const char* kCopyExtension = ".bin";

}  // namespace vexa
