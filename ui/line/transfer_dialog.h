// The dialog of a transfer: starts it, shows how it goes, and ends with it.
#pragma once

#include "core/context.h"
#include "serial/receiver_state.h"
#include "serial/session.h"
#include "ui/controls/application.h"
#include "view/upload_steps.h"

namespace vexa {

struct TransferOrder {
  TransferJob job = TransferJob::kAdb;
  std::string subject;             // what is sent, for the status text
  std::vector<Path> files;         // to send
  std::vector<Path> region_files;  // of a download
  // Called on the transfer's thread with a context of that thread; see Transfer::decode.
  std::function<bool(const Context&, bool crc_failed)> decode;
  // An upload of ADB data: shows the boxes of what is done around it, keeps their state, and offers the sets.
  bool offers_choices = false;
  bool copied = false;           // a copy was kept before this upload
  const char* title = nullptr;   // what a download is for; nullptr: the job says its titles itself
  const char* status = nullptr;  // what a download does, instead of its own status; nullptr: that
};

// How the transfer ended. Its messages have been shown; the frame's status line says it as well. What it made
// known of the receiver is added to `receiver`. kBeginAgain: the user ticked the box for a copy, or chose a
// set, before a receiver had answered.
StepEnd RunTransferDialog(Application& app, TransferOrder order, ReceiverFacts& receiver);

}  // namespace vexa
