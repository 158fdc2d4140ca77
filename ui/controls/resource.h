// Numbers of the pictures and of the progress box.
#pragma once

#define IDI_VEXA 300
// Strips of pictures; the same in more sizes behind them, in the order of kPictureSizes.
#define IDB_TOOLBAR 301
#define IDB_TREE 311

#define IDD_PROGRESS 410
#define IDC_PROGRESS_BAR 411
#define IDC_PROGRESS_TEXT 412
