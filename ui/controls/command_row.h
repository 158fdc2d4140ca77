// A command and what runs it. Each room gives rows of its own; the frame finds the function in them.
#pragma once

#include "ui/controls/application.h"
#include "view/command_table.h"

namespace vexa {

struct CommandRow {
  CommandId id;
  void (*run)(Application&);
};

}  // namespace vexa
