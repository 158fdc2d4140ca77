// Dialogs beside the transfer's own.
#pragma once

#include <optional>
#include <string>

#include "serial/copies.h"
#include "ui/controls/application.h"

namespace vexa {

// Where copies of receivers are kept.
Path CopyFolder(const Application& app);
// "Restore": lists the copies that were kept. The name of the one that the user sends back, with what goes
// back in `back`; nothing when he gives up. The boxes for what is done around the upload are kept.
std::optional<std::string> ChooseCopy(Application& app, CopyToSend& back);
// "Production": one database for one receiver after the other.
void ShowProduction(Application& app);

}  // namespace vexa
