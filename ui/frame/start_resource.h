// Numbers of the controls of the page over the empty frame.
#pragma once

#include "view/dialog_ids.h"

#define IDC_START_HINT 421
#define IDC_START_FIRST 422
