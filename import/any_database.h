// Databases of every kind of file that the program reads: database files, documents (JSON, CSV) and channel
// lists.
#pragma once

#include <string>

#include "core/context.h"
#include "core/database.h"
#include "import/import_command.h"
#include "platform/code_page.h"
#include "platform/files.h"

namespace vexa {

// "json" or "csv", by the name of the file; empty: it is no document.
std::string DocumentFormat(const Path& path);
// The database of a document (`json`: JSON, else CSV), whose names come to stand in `page`. False after a
// message, with the line or the path of what does not fit.
bool ReadDocumentFile(const Messages& messages, const Path& path, bool json, const CodePage& page,
                      Document& document);

struct AnyDatabase {
  Document document;
  bool favourites = true;  // a list of channels has none, and no running order
};
// False after a message. `steps` are those of the import of a list. `page`: in which the names of the
// database stand and are shown; those of documents and of lists in text are converted to it, lists in bytes
// keep them.
bool OpenAnyDatabase(const Context& context, const Path& path, const DefaultRecords& defaults,
                     const ImportSteps& steps, const CodePage& page, AnyDatabase& database);

}  // namespace vexa
