// Numbers of the dialog about the program.
#pragma once

#include "view/dialog_ids.h"

#define IDC_ABOUT_PROJECT 401
#define IDC_ABOUT_VERSION 402
#define IDC_ABOUT_DATE 403
#define IDC_ABOUT_TIME 404
