// vexa: the editor's engine without its windows.
#include "platform/main.h"

#include "cli/program.h"

VEXA_MAIN(vexa::RunProgram)
