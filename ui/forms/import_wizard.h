// The import wizard's three dialogs, one after the other.
#pragma once

#include "import/work_files.h"
#include "ui/controls/application.h"

namespace vexa {

// Leaves the chosen records; false when the user closed a step.
bool RunImportWizard(Application& app, WorkRecords& work);

}  // namespace vexa
