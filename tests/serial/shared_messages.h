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
    made.tell = [this](const Message& message) {
      const std::lock_guard hold(lock_);
      shown_.push_back(message);
      changed_.notify_all();
    };
    made.ask = [](const std::string&, const std::string&, bool) { return true; };
    return made;
  }
  std::vector<Message> All() {
    const std::lock_guard hold(lock_);
    return shown_;
  }
  // The texts alone; cleared by the call.
  std::vector<std::string> Texts() {
    const std::lock_guard hold(lock_);
    std::vector<std::string> texts;
    for (const Message& message : shown_) texts.push_back(message.text);
    shown_.clear();
    return texts;
  }
  // Until the text was shown, up to 5 s.
  bool Await(const std::string& text) {
    std::unique_lock hold(lock_);
    return changed_.wait_for(hold, std::chrono::seconds(5), [&] {
      return std::any_of(shown_.begin(), shown_.end(), [&](const Message& m) { return m.text == text; });
    });
  }

 private:
  std::mutex lock_;
  std::condition_variable changed_;
  std::vector<Message> shown_;
};

}  // namespace vexa
