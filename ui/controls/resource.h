// Numbers of the pictures and of the progress box.
#pragma once

#include "view/dialog_ids.h"

#define IDI_VEXA 300
// Strips of pictures; the same in more sizes behind them, in the order of kPictureSizes.
#define IDB_TOOLBAR 301
#define IDB_TREE 311

#define IDC_PROGRESS_BAR 411
#define IDC_PROGRESS_TEXT 412
