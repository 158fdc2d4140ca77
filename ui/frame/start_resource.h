// Numbers of the page over the empty frame, which is no dialog by itself: its help is the frame's.
#pragma once

#define IDD_START 420
#define IDC_START_HINT 421
#define IDC_START_FIRST 422
