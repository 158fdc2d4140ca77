// The import wizard's three dialogs, one after the other.
#pragma once

#include "import/work_files.h"
#include "platform/code_page.h"
#include "ui/controls/application.h"

namespace vexa {

// Leaves the chosen records; false when the user closed a step. Names stand in `page`.
bool RunImportWizard(Application& app, WorkRecords& work, const CodePage& page);

}  // namespace vexa
