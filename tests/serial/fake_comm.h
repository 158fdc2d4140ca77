// A serial port made of memory: every operation can be made to fail, writes end as the test says, bytes are
// fed in from any thread.
#pragma once

#include <atomic>
#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/serial.h"

namespace vexa {

enum class WriteMode {
  kDone,
  kShort,
  kFail,
  kPending,
  kPendingShort,
  kPendingAborted,
  kPendingFailed,
  kNever
};

class FakeComm {
 public:
  FakeComm();
  CommApi api;
  std::set<std::string> failing;  // operations that fail from now on
  // With what they fail: the system's error for a device that does not work.
  std::error_code error = std::make_error_code(std::errc::io_error);
  std::atomic<bool> hung_up{false};  // reads end at once without a byte
  WriteMode write_mode = WriteMode::kDone;
  SerialPlatform platform = SerialPlatform::kWindowsNt;
  std::function<void(std::span<const uint8_t>)> on_write;  // called on the writer's thread; may be empty
  std::function<void()> on_cancel_all;                     // may be empty

  void Fail(std::set<std::string> operations);  // sets `failing` while the port is in use
  void Feed(std::span<const uint8_t> bytes);
  void RaiseEvent(uint32_t mask);  // completes the wait for a line event
  Bytes Written();
  PortDcb Dcb();
  int Count(const std::string& operation);                   // how often it was called
  bool AwaitCount(const std::string& operation, int count);  // up to 5 s

 private:
  // Fill in the members of `api`.
  void ServePortAndEvents();
  void ServeSettings();
  void ServeTransfers();
  struct Event;
  bool Step(const std::string& operation);  // counts; false when it is to fail
  IoResult Read(std::span<uint8_t> buffer, size_t& count, Overlapped& overlapped);
  IoResult Write(std::span<const uint8_t> bytes, size_t& count, Overlapped* overlapped);
  IoResult Result(Overlapped& overlapped, size_t& count);
  Outcome Answer(const std::string& operation);
  WaitResult Wait(std::span<const SerialEventPtr> events, uint32_t milliseconds);
  void CompleteRead();

  std::mutex lock_;
  std::condition_variable changed_;
  std::deque<uint8_t> received_;
  Bytes written_;
  PortDcb dcb_;
  std::map<std::string, int> counts_;
  std::span<uint8_t> read_buffer_;
  std::shared_ptr<void> read_, wait_;
  SerialEventPtr read_event_, wait_event_;
  uint32_t* mask_to_ = nullptr;
};

}  // namespace vexa
