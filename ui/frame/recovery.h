// Work that is not saved, kept while the program runs and offered at the next start; and the end of a program
// that fails. What is kept, and how, is decided in view/recovery.h.
#pragma once

#include "ui/controls/application.h"

namespace vexa {

// Begins to keep unsaved work, about every ten seconds. Where no folder can be had for it the user is told.
void StartRecovery(Application& app);
// Asks about the work that programs which are gone left behind, and opens it.
void OfferAbandonedWork(Application& app);
// Keeps what was changed since it was kept last, and forgets what has been saved. For the timer, when a
// transfer has ended, and at an end that the user did not ask for. Where it cannot be kept the user is told,
// once until it can be again.
void KeepUnsavedWork(Application& app);
// The same before the windows go without a question: it stays for the next start.
void LeaveUnsavedWork(Application& app);
// A failure that nothing handles: leaves a report that holds no data of the user's, and the unsaved work for
// the next start; then says where they are. `thrown`: what the failed part said; may be null. Works once.
void LeaveReport(const char* thrown, const EXCEPTION_POINTERS* failure) noexcept;
// From here on such failures of the program end with LeaveReport.
void HandleFailures(Application& app);

}  // namespace vexa
