// The simulated receiver behind a port made of memory.
#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "loader/receiver.h"
#include "tests/serial/fake_comm.h"

namespace vexa {

// A receiver on a thread of its own behind a port made of memory. Answers come in pieces of random size.
class ReceiverRig {
 public:
  explicit ReceiverRig(const LoaderFaults& faults = {}) : ReceiverRig(faults, LoaderMemory()) {}
  ReceiverRig(const LoaderFaults& faults, LoaderMemory memory)
      : receiver_(MakeReceiver(faults, std::move(memory))), random_(static_cast<unsigned>(faults.seed)) {
    comm.on_write = [this](std::span<const uint8_t> written) {
      Bytes bytes(written.begin(), written.end());
      if (on_sent) on_sent(bytes);
      std::unique_lock hold(lock_);
      taken_.wait(hold, [&] { return queue_.size() < 16384; });  // a flood waits, as a driver makes it
      queue_.insert(queue_.end(), bytes.begin(), bytes.end());
      arrived_.notify_one();
    };
    thread_ = std::thread([this] { Run(); });
  }
  ~ReceiverRig() {
    stop_ = true;
    thread_.join();
  }
  FakeComm comm;
  // What the line makes of a write to the receiver, and of each of its answers; to be set before the first.
  std::function<void(Bytes&bytes)> on_sent, on_answer;
  void FeedLate(const Bytes& answer, int milliseconds) {
    late_.push_back({std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds), answer});
  }
  std::atomic<bool> swap_receiver{false};  // another, empty one takes its place
  std::atomic<unsigned> swaps_per_thousand{
      0};  // frames with two bytes of their data exchanged: the sum stays right
  LoaderMemory Memory() {
    const std::lock_guard hold(lock_);
    return receiver_.memory;
  }
  std::vector<std::string> Notes() {
    const std::lock_guard hold(lock_);
    return notes_;
  }

 private:
  void Run() {
    receiver_.note = [this](const std::string& line) { notes_.push_back(line); };
    const auto start = std::chrono::steady_clock::now();
    while (!stop_) {
      {
        std::unique_lock hold(lock_);
        arrived_.wait_for(hold, std::chrono::milliseconds(4), [&] { return !queue_.empty(); });
        const auto time = std::chrono::steady_clock::now() - start;
        const auto now = 1000000 + static_cast<uint64_t>(
                                       std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
        if (swap_receiver.exchange(false)) {
          receiver_ = MakeReceiver({}, {});
          queue_.clear();
        }
        const Bytes bytes(queue_.begin(), queue_.end());
        queue_.clear();
        FeedReceiver(receiver_, now, bytes);
        AdvanceReceiver(receiver_, now);
        Bytes answer;
        while (TakeAnswer(receiver_, now, answer)) {
          if (on_answer) on_answer(answer);
          if (answer.size() > 40 && random_() % 1000 < swaps_per_thousand) Swap(answer);
          FeedPieces(answer);
        }
        while (!late_.empty() && late_.front().first <= std::chrono::steady_clock::now()) {
          FeedPieces(late_.front().second);
          late_.pop_front();
        }
      }
      taken_.notify_all();
    }
  }
  void Swap(Bytes& frame) {
    const size_t one = 16 + random_() % (frame.size() - 21), two = 16 + random_() % (frame.size() - 21);
    std::swap(frame[one], frame[two]);
  }
  void FeedPieces(std::span<const uint8_t> answer) {
    while (!answer.empty()) {
      const size_t piece = std::min<size_t>(answer.size(), 1 + random_() % 3000);
      comm.Feed(answer.first(piece));
      answer = answer.subspan(piece);
    }
  }
  std::mutex lock_;
  std::condition_variable taken_, arrived_;
  std::deque<uint8_t> queue_;
  std::deque<std::pair<std::chrono::steady_clock::time_point, Bytes>> late_;
  std::vector<std::string> notes_;
  Receiver receiver_;
  std::mt19937 random_;
  std::atomic<bool> stop_{false};
  std::thread thread_;
};

}  // namespace vexa
