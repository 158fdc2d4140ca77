#include "serial/relay.h"

#include <atomic>
#include <cmath>
#include <memory>

namespace vexa {

namespace {

constexpr double kWindow = 5;    // s that the rate looks back
constexpr double kShortest = 1;  // s before a figure means something

std::string Grouped(uint64_t number) {
  std::string text = std::to_string(number);
  for (size_t i = text.size(); i > 3;) text.insert(i -= 3, 1, ',');
  return text;
}

}  // namespace

void Relay::Post(std::function<void()> work) {
  {
    const std::lock_guard hold(lock_);
    waiting_.push_back({std::move(work), nullptr});
  }
  notify_();
}

bool Relay::Call(const std::function<void()>& work) {
  if (std::this_thread::get_id() == owner_) {
    work();
    return true;
  }
  const auto done = std::make_shared<bool>(false);
  {
    const std::lock_guard hold(lock_);
    if (closed_) return false;
    waiting_.push_back({work, done});
  }
  notify_();
  std::unique_lock hold(lock_);
  changed_.wait(hold, [&] { return closed_ || *done; });
  if (*done) return true;
  std::erase_if(waiting_, [&done](const Item& item) { return item.done == done; });
  return false;
}

void Relay::Run() {
  for (;;) {
    Item item;
    {
      const std::lock_guard hold(lock_);
      if (waiting_.empty()) return;
      item = std::move(waiting_.front());
      waiting_.pop_front();
    }
    item.work();
    if (!item.done) continue;
    {
      const std::lock_guard hold(lock_);
      *item.done = true;
    }
    changed_.notify_all();
  }
}

void Relay::Close() {
  {
    const std::lock_guard hold(lock_);
    closed_ = true;
  }
  changed_.notify_all();
}

Messages RelayedMessages(Relay& relay, const Messages& messages) {
  Messages relayed;
  relayed.tell = [&relay, tell = messages.tell](const Message& message) {
    // With a copy: a thread that Close lets go is away before the box has shown it.
    relay.Call([tell, message] { tell(message); });
  };
  relayed.ask = [&relay, ask = messages.ask](const std::string& text, const std::string& title,
                                             bool yes_is_default) {
    const auto answer = std::make_shared<std::atomic<bool>>(false);
    const bool asked = relay.Call(
        [ask, text, title, yes_is_default, answer] { *answer = ask(text, title, yes_is_default); });
    return asked && *answer;
  };
  return relayed;
}

void TransferMeter::Sample(double seconds, uint64_t bytes, uint64_t position, uint64_t range) {
  // Another file or region is measured from its beginning.
  if (range != range_ || (!readings_.empty() && position < readings_.back().position)) readings_.clear();
  range_ = range;
  readings_.push_back({seconds, bytes, position});
  while (readings_.size() > 2 && readings_[1].seconds <= seconds - kWindow) readings_.pop_front();
}

double TransferMeter::BytesPerSecond() const {
  if (readings_.size() < 2) return 0;
  const Reading &first = readings_.front(), &last = readings_.back();
  if (last.seconds - first.seconds < kShortest) return 0;
  return static_cast<double>(last.bytes - first.bytes) / (last.seconds - first.seconds);
}

double TransferMeter::SecondsLeft() const {
  if (readings_.size() < 2 || range_ == 0) return -1;
  const Reading &first = readings_.front(), &last = readings_.back();
  if (last.seconds - first.seconds < kShortest || last.position == first.position) return -1;
  if (last.position >= range_) return 0;
  return static_cast<double>(range_ - last.position) * (last.seconds - first.seconds) /
         static_cast<double>(last.position - first.position);
}

std::string TransferMeter::Text(uint64_t repeated) const {
  std::string text;
  const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : "   ") + part; };
  const double rate = BytesPerSecond(), left = SecondsLeft();
  if (rate >= 0.5) add(Grouped(static_cast<uint64_t>(std::llround(rate))) + " bytes/s");
  if (left >= 0) {
    const auto seconds = static_cast<unsigned long long>(std::ceil(left));
    add(Format("%llu:%02llu left", seconds / 60, seconds % 60));
  }
  if (repeated == 1) add("1 packet repeated");
  if (repeated > 1) add(Grouped(repeated) + " packets repeated");
  return text;
}

}  // namespace vexa
