// Messages recorded from several threads.
#pragma once

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "core/messages.h"
#include "tests/support/recorder.h"

namespace vexa {

class SharedMessages {
 public:
  Messages messages() {
    Messages made;
    made.tell = [this](Icon icon, const std::string& text, const std::string& title) {
      const std::lock_guard hold(lock_);
      shown_.push_back({icon, text, title});
      changed_.notify_all();
    };
    made.ask = [](const std::string&, const std::string&, bool) { return true; };
    return made;
  }
  std::vector<ShownMessage> All() {
    const std::lock_guard hold(lock_);
    return shown_;
  }
  // The texts alone; cleared by the call.
  std::vector<std::string> Texts() {
    const std::lock_guard hold(lock_);
    std::vector<std::string> texts;
    for (const ShownMessage& message : shown_) texts.push_back(message.text);
    shown_.clear();
    return texts;
  }
  // Until the text was shown, up to 5 s.
  bool Await(const std::string& text) {
    std::unique_lock hold(lock_);
    return changed_.wait_for(hold, std::chrono::seconds(5), [&] {
      return std::any_of(shown_.begin(), shown_.end(), [&](const ShownMessage& m) { return m.text == text; });
    });
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<ShownMessage> shown_;
};

}  // namespace vexa
