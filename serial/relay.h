// Work that the threads of a transfer hand to the face's thread, and the figures that its dialog shows.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "core/messages.h"

namespace vexa {

// Thread-safe. The face's thread is the one that made the relay.
class Relay {
 public:
  // `notify` is called on any thread when there is work; it leads to Run on the face's thread and must not
  // wait.
  explicit Relay(std::function<void()> notify) : notify_(std::move(notify)) {}
  // Leaves the work behind and goes on.
  void Post(std::function<void()> work);
  // Waits until the work is done; false when it was not, because the relay was closed. On the face's thread
  // the work is done at once.
  bool Call(const std::function<void()>& work);
  // Does what waits, in order; on the face's thread. Work that shows a box may lead to Run again.
  void Run();
  // Nobody waits any longer, so that the face may join its threads: whoever waits goes on, later calls give
  // false.
  void Close();

 private:
  struct Item {
    std::function<void()> work;
    std::shared_ptr<bool> done;  // null: nobody waits
  };
  std::function<void()> notify_;
  const std::thread::id owner_ = std::this_thread::get_id();
  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<Item> waiting_;
  bool closed_ = false;
};

// `messages` on the face's thread, for any thread. What is told when the relay is closed is lost; what is
// asked gets "No".
Messages RelayedMessages(Relay& relay, const Messages& messages);

// How a transfer goes, from samples taken a few times a second.
class TransferMeter {
 public:
  // `seconds` of a clock; bytes that crossed the line so far, both ways; the progress bar's place and range.
  void Sample(double seconds, uint64_t bytes, uint64_t position, uint64_t range);
  // Of the last seconds; 0 while unknown.
  double BytesPerSecond() const;
  // -1 while unknown.
  double SecondsLeft() const;
  // "11,310 bytes/s   0:42 left   3 packets repeated", without what is not known or did not happen.
  std::string Text(uint64_t repeated) const;

 private:
  struct Reading {
    double seconds;
    uint64_t bytes, position;
  };
  std::deque<Reading> readings_;
  uint64_t range_ = 0;
};

}  // namespace vexa
