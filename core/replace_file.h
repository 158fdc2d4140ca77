// The question before a save replaces a file that somebody else wrote to.
#pragma once

#include "core/messages.h"
#include "platform/file_identity.h"

namespace vexa {

// `known` is the file's state when it was last read or saved here; nothing for a file that never was. False
// when the user wants to keep what another program made of the file since. A file that is gone is not asked
// about.
bool MayReplaceFile(const Messages& messages, const Path& path, const std::optional<FileState>& known);

}  // namespace vexa
