// The database that an import makes: one bare SDB stream, laid out as core/bin_file.h describes, with these
// marks of its own: stream version 5, initials "QMV", unnamed header bytes 0xFF, block names followed by NUL
// and 0xFF, an "lnb" block whose record size reads 12, only as many satellites as there are, no filler behind
// an odd count.
#pragma once

#include "import/work_files.h"

namespace vexa {

// Records keep the order and the indices of the work files. What a work record does not say is all ones in
// the database record. Counts above 65,535 wrap.
Bytes BuildBinFromWorkFiles(const WorkRecords& work, const DefaultRecords& defaults);

}  // namespace vexa
