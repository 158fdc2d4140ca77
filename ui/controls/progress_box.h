// The box of a job under way.
#pragma once

#include "ui/controls/application.h"

namespace vexa {

// A modeless box with one bar; the window over which it stands takes no input meanwhile.
class ProgressBox {
 public:
  ProgressBox(Application& app, const std::string& text, const std::string& title = "Import");
  ~ProgressBox();
  ProgressBox(const ProgressBox&) = delete;
  ProgressBox& operator=(const ProgressBox&) = delete;
  // The context of the application with progress shown in this box.
  const Context& context() const { return context_; }

 private:
  void ShowPosition(uint64_t position);
  Busy busy_;
  HWND owner_ = nullptr;
  HWND window_ = nullptr;
  uint64_t total_ = 0;
  int shown_ = -1;
  Context context_;
};

}  // namespace vexa
