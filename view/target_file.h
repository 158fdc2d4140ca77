// The files that a dialog was told to write: whether two names are one file, and whether an old one may go.
#pragma once

#include "core/messages.h"
#include "platform/files.h"

namespace vexa {

// Whether both paths name one file, there or not: links are followed, and letter case does not count, since
// the file systems under the windows keep no two names that differ in it.
bool NameOneFile(const Path& one, const Path& other);

// Where a file goes that is made out of `input` and was named so: a name without a place stands beside it.
Path BesideInput(const Path& input, const Path& target);

// Beside the file, with its name and another extension (".bin"). What stands behind the last point and begins
// with a digit is no extension: "Astra-19.2E" becomes "Astra-19.2E.bin".
Path NamedAfter(const Path& file, const char* extension);

// True when nothing stands at `target`, when it is what the user has agreed to replace, or when he agrees;
// the answer to a plain Enter is No.
bool MayReplace(const Messages& messages, const Path& target, const Path& agreed);

}  // namespace vexa
