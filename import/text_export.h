// The report of one database: plain single-byte text in fixed columns, lines ending with CR LF.
#pragma once

#include <string>

#include "core/database.h"
#include "platform/files.h"

namespace vexa {

// The whole report in single-byte text; an SDB without satellites gives its head of ten lines.
std::string DatabaseReport(const StaticDatabase& database);

// Writes the report in place of whatever `path` held. Nothing is shown when it cannot be written.
WriteResult ExportDatabaseText(const StaticDatabase& database, const Path& path,
                               const FileOperations& files = SystemFiles());

}  // namespace vexa
