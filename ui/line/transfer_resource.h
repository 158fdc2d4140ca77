// Numbers of the dialogs that send to and fetch from the receiver: 1700-1799.
#pragma once

#include "view/dialog_ids.h"

#define IDC_TRANSFER_BAR 1701
#define IDC_TRANSFER_STATUS 1702
#define IDC_TRANSFER_FIGURES 1703
#define IDC_TRANSFER_RESULT 1704
#define IDC_TRANSFER_VERIFY 1705

#define IDC_UPLOAD_LIST 1721
