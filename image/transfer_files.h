// The files that a transfer leaves in the temporary folder on its way to and from the receiver.
#pragma once

#include "platform/files.h"

namespace vexa {

inline constexpr const char* kAdbImageFile = "~001adb.bin";
inline constexpr const char* kE2pImageFile = "~001e2p.bin";
inline constexpr const char* kAdbUrtFile = "~001adb.urt";
inline constexpr const char* kE2pUrtFile = "~001e2p.urt";
inline constexpr const char* kRequestFile = "~001dcl.urt";
inline constexpr const char* kDecodedFile = "~001sdb.bin";
inline constexpr const char* kPacketFile = "pckurt.bin";  // one downloaded packet
inline constexpr const char* kRegionFile = "~001db.bin";  // one downloaded region
inline constexpr const char* kConsoleLogFile =
    "~001ldr.log";  // belongs to the console, which removes it itself

// Removes all of them from `folder` but the console's log; before a new upload or download begins, and when
// one ends. Files that are not there or cannot be removed are passed over.
void RemoveTransferFiles(const Path& folder);

}  // namespace vexa
