// Numbers of the import wizard's and the merger's dialogs.
#pragma once

#include "view/dialog_ids.h"

#define IDC_WIZARD_OWNERS 1510
#define IDC_WIZARD_ITEMS 1511
#define IDC_WIZARD_INFORMATION 1512
#define IDC_WIZARD_SELECTED 1513
#define IDC_WIZARD_TOTAL 1514
#define IDC_WIZARD_BACK 1515
#define IDC_WIZARD_ALL 1516
#define IDC_WIZARD_ITEMS_LABEL 1517
#define IDC_WIZARD_OPTION_GROUP 1518
#define IDC_WIZARD_INFORMATION_GROUP 1519
// The option boxes of steps 2 and 3: this number and that of the option's bit, 0 to 4.
#define IDC_WIZARD_OPTION 1520

#define IDC_MERGE_LIST 1530
#define IDC_MERGE_FILES 1531
#define IDC_MERGE_FOLDER 1532
#define IDC_MERGE_REMOVE 1533
