// What is said of the data that a receiver has sent: whether it came whole, and whether it is what the
// receiver should hold.
#pragma once

#include <string>

#include "config/project_config.h"
#include "core/context.h"
#include "core/database.h"
#include "image/adb.h"

namespace vexa {

inline constexpr const char* kCrcHolds = "CRC Verification - Success";
inline constexpr const char* kCrcFailed = "CRC Verification - failed";
// With what to do next, as a box and the transfer window say it.
std::string CrcFailedText();
void TellCrcFailed(const Messages& messages, const std::string& port);

inline constexpr const char* kVerifying = "Verifying";

enum class Verdict { kSame, kDiffers, kNotCompared };
// How a comparison ended, in one line.
const char* VerdictText(Verdict verdict);

// The decode step of a download that compares (Transfer::decode): the regions that it left in the temporary
// folder beside the images, which BuildAdbImages made from `database`. Told unless they are the same.
Verdict JudgeDownload(const Context& context, const ProjectConfig& config, const StaticDatabase& database,
                      const AdbImages& images, bool crc_failed);

}  // namespace vexa
