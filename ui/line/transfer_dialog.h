// The dialog of a transfer: starts it, shows how it goes, and ends with it.
#pragma once

#include "core/context.h"
#include "serial/session.h"
#include "ui/controls/application.h"

namespace vexa {

struct TransferOrder {
  TransferJob job = TransferJob::kAdb;
  std::string subject;             // what is sent, for the status text
  std::vector<Path> files;         // to send
  std::vector<Path> region_files;  // of a download
  // Called on the transfer's thread with a context of that thread; see Transfer::decode.
  std::function<bool(const Context&, bool crc_failed)> decode;
  bool offers_verify =
      false;              // shows the box that chooses whether the upload is compared, and keeps its state
  bool verifies = false;  // a download that compares, and says so instead of its own texts
};

// True when the transfer ran to its end. Its messages have been shown; the frame's status line says how it
// ended.
bool RunTransferDialog(Application& app, TransferOrder order);

}  // namespace vexa
