// Numbers of all dialogs. The resource compiler reads this file too. Each dialog has its page of the help
// (help_pages.h); controls have their numbers beside the dialogs' resources.
#pragma once

#define IDD_ABOUT 400
#define IDD_START 420
#define IDD_PROGRESS 410
#define IDD_LNB 1100
#define IDD_SATELLITE 1101
#define IDD_CARRIER 1102
#define IDD_SERVICE 1103
#define IDD_USER_BOX 1104
#define IDD_FAVOURITES 1105
#define IDD_EDIT_SDB 1106
#define IDD_MOVE 1107
#define IDD_MOVE_SERVICE 1108
#define IDD_CHANGE_CARRIERS 1109
#define IDD_DETAILED_SERVICE 1110
#define IDD_VERSION 1111
#define IDD_SELECT_PARTS 1112
#define IDD_SETTINGS 1300
#define IDD_DEFAULTS 1301
#define IDD_COLOURS 1302
#define IDD_SORT 1303
#define IDD_FIND 1304
#define IDD_FINDINGS 1305
#define IDD_WIZARD_SATELLITES 1500
#define IDD_WIZARD_CARRIERS 1501
#define IDD_WIZARD_SERVICES 1502
#define IDD_MERGER 1503
#define IDD_IMPORT_QUESTION 1504
#define IDD_COMPLETION 1505
#define IDD_COMPARE 1550
#define IDD_TRANSFER 1700
#define IDD_UPLOAD_SDBS 1720
#define IDD_RESTORE 1730
#define IDD_PRODUCTION 1740
#define IDD_SINGLE_IMAGE 1800
#define IDD_MULTIPLE_IMAGE 1801
#define IDD_COMPRESSION 1840
#define IDD_CONSOLE_PANEL 1900
#define IDD_CONSOLE_FIND 1930
