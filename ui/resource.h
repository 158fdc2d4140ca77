// Numbers of the resources and of the controls in dialogs.
#pragma once

#define IDI_VEXA 300
// Strips of pictures; the same in more sizes behind them, in the order of kPictureSizes.
#define IDB_TOOLBAR 301
#define IDB_TREE 311

#define IDD_ABOUT 400
#define IDC_ABOUT_PROJECT 401
#define IDC_ABOUT_VERSION 402
#define IDC_ABOUT_DATE 403
#define IDC_ABOUT_TIME 404

#define IDD_PROGRESS 410
#define IDC_PROGRESS_BAR 411
#define IDC_PROGRESS_TEXT 412
