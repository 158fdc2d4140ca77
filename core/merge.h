// Joins database files into an open document.
#pragma once

#include <vector>

#include "core/context.h"
#include "core/database.h"

namespace vexa {

// Adds the SDBs and UBIs of all files, in the order given, behind those of the document. The document's own
// flags and settings stay. False after a message, nothing being added: a file cannot be opened whole, or the
// document would hold more SDBs or UBIs than it may.
bool MergeBins(const Context& context, const std::vector<Path>& files, Document& document);

}  // namespace vexa
