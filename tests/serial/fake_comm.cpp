#include "tests/serial/fake_comm.h"

#include <algorithm>
#include <chrono>

namespace vexa {

struct FakeComm::Event : SerialEvent {
  bool manual = true, signalled = false;
};

namespace {

struct Device : SerialDevice {};

struct Operation {
  IoResult state = IoResult::kPending;
  size_t moved = 0;
};

}  // namespace

bool FakeComm::Step(const std::string& operation) {
  const std::lock_guard hold(lock_);
  const int number = ++counts_[operation];
  changed_.notify_all();
  return !failing.contains(operation) && !failing.contains(operation + " " + std::to_string(number));
}

Outcome FakeComm::Answer(const std::string& operation) {
  return Step(operation) ? Outcome() : Outcome(error);
}

void FakeComm::Fail(std::set<std::string> operations) {
  const std::lock_guard hold(lock_);
  failing = std::move(operations);
}

int FakeComm::Count(const std::string& operation) {
  const std::lock_guard hold(lock_);
  return counts_[operation];
}

bool FakeComm::AwaitCount(const std::string& operation, int count) {
  std::unique_lock hold(lock_);
  return changed_.wait_for(hold, std::chrono::seconds(5), [&] { return counts_[operation] >= count; });
}

Bytes FakeComm::Written() {
  const std::lock_guard hold(lock_);
  return written_;
}

PortDcb FakeComm::Dcb() {
  const std::lock_guard hold(lock_);
  return dcb_;
}

// With the lock held.
void FakeComm::CompleteRead() {
  if (!read_ || received_.empty()) return;
  auto& operation = *std::static_pointer_cast<Operation>(read_);
  operation.moved = std::min(received_.size(), read_buffer_.size());
  std::copy_n(received_.begin(), operation.moved, read_buffer_.begin());
  received_.erase(received_.begin(), received_.begin() + static_cast<std::ptrdiff_t>(operation.moved));
  operation.state = IoResult::kDone;
  read_ = nullptr;
  if (read_event_) static_cast<Event&>(*read_event_).signalled = true;
}

void FakeComm::Feed(std::span<const uint8_t> bytes) {
  const std::lock_guard hold(lock_);
  received_.insert(received_.end(), bytes.begin(), bytes.end());
  CompleteRead();
  changed_.notify_all();
}

void FakeComm::RaiseEvent(uint32_t mask) {
  const std::lock_guard hold(lock_);
  if (!wait_) return;
  std::static_pointer_cast<Operation>(wait_)->state = IoResult::kDone;
  *mask_to_ = mask;
  static_cast<Event&>(*wait_event_).signalled = true;
  wait_ = nullptr;
  changed_.notify_all();
}

IoResult FakeComm::Read(std::span<uint8_t> buffer, size_t& count, Overlapped& overlapped) {
  const bool works = Step("read");
  const std::lock_guard hold(lock_);
  count = 0;
  const auto operation = std::make_shared<Operation>();
  overlapped.system = operation;
  if (overlapped.event) static_cast<Event&>(*overlapped.event).signalled = false;
  if (!works) {
    return operation->state = IoResult(IoResult::kFailed, error);
  }
  if (hung_up) return operation->state = IoResult::kDone;
  read_ = operation;
  read_buffer_ = buffer;
  read_event_ = nullptr;
  CompleteRead();
  count = operation->moved;
  read_event_ = overlapped.event;
  return operation->state;
}

IoResult FakeComm::Write(std::span<const uint8_t> bytes, size_t& count, Overlapped* overlapped) {
  if (!Step("write")) return {IoResult::kFailed, error};
  if (on_write) on_write(bytes);
  const std::lock_guard hold(lock_);
  const auto operation = std::make_shared<Operation>();
  if (overlapped) {
    overlapped->system = operation;
    if (overlapped->event) static_cast<Event&>(*overlapped->event).signalled = false;
  }
  const bool whole = write_mode == WriteMode::kDone || write_mode == WriteMode::kPending;
  const bool half = write_mode == WriteMode::kShort || write_mode == WriteMode::kPendingShort;
  operation->moved = whole ? bytes.size() : half ? bytes.size() / 2 : 0;
  written_.insert(written_.end(), bytes.begin(),
                  bytes.begin() + static_cast<std::ptrdiff_t>(operation->moved));
  count = operation->moved;
  switch (write_mode) {
    case WriteMode::kDone:
    case WriteMode::kShort:
      return IoResult::kDone;
    case WriteMode::kFail:
      return {IoResult::kFailed, error};
    case WriteMode::kNever:
      return IoResult::kPending;
    case WriteMode::kPendingAborted:
      operation->state = IoResult::kAborted;
      break;
    case WriteMode::kPendingFailed:
      operation->state = {IoResult::kFailed, error};
      break;
    default:
      operation->state = IoResult::kDone;
  }
  count = 0;
  if (overlapped && overlapped->event) static_cast<Event&>(*overlapped->event).signalled = true;
  changed_.notify_all();
  return IoResult::kPending;
}

IoResult FakeComm::Result(Overlapped& overlapped, size_t& count) {
  const std::lock_guard hold(lock_);
  const auto operation = std::static_pointer_cast<Operation>(overlapped.system);
  count = operation ? operation->moved : 0;
  return operation ? operation->state : IoResult(IoResult::kFailed);
}

WaitResult FakeComm::Wait(std::span<const SerialEventPtr> events, uint32_t milliseconds) {
  if (!Step("wait")) return {kWaitFailed, error};
  std::unique_lock hold(lock_);
  int found = kWaitTimeout;
  const auto look = [&] {
    for (size_t i = 0; i < events.size(); ++i) {
      auto& event = static_cast<Event&>(*events[i]);
      if (!event.signalled) continue;
      if (!event.manual) event.signalled = false;
      found = static_cast<int>(i);
      return true;
    }
    return false;
  };
  if (milliseconds == kWaitForever) {
    changed_.wait(hold, look);
  } else {
    changed_.wait_for(hold, std::chrono::milliseconds(milliseconds), look);
  }
  return found;
}

FakeComm::FakeComm() {
  ServePortAndEvents();
  ServeSettings();
  ServeTransfers();
}

void FakeComm::ServePortAndEvents() {
  api.platform = [this] { return platform; };
  api.create_file = [this](const std::string&) -> Made<SerialDevicePtr> {
    if (!Step("create_file")) return error;
    return std::make_shared<Device>();
  };
  api.close_file = [this](const SerialDevicePtr&) { return Answer("close_file"); };
  api.create_event = [this](bool manual, bool signalled) -> Made<SerialEventPtr> {
    if (!Step("create_event")) return error;  // by order: exit, read, status, then one a write
    const auto event = std::make_shared<Event>();
    event->manual = manual;
    event->signalled = signalled;
    return event;
  };
  api.set_event = [this](const SerialEventPtr& event) {
    const std::lock_guard hold(lock_);
    static_cast<Event&>(*event).signalled = true;
    changed_.notify_all();
  };
  api.reset_event = [this](const SerialEventPtr& event) {
    const std::lock_guard hold(lock_);
    static_cast<Event&>(*event).signalled = false;
  };
  api.wait = [this](std::span<const SerialEventPtr> events, uint32_t time) { return Wait(events, time); };
}

void FakeComm::ServeSettings() {
  api.get_timeouts = [this](const SerialDevicePtr&, CommTimeouts&) { return Answer("get_timeouts"); };
  api.set_timeouts = [this](const SerialDevicePtr&, const CommTimeouts&) { return Answer("set_timeouts"); };
  api.set_state = [this](const SerialDevicePtr&, const PortDcb& dcb) -> Outcome {
    if (!Step("set_state")) return error;
    const std::lock_guard hold(lock_);
    dcb_ = dcb;
    return true;
  };
  api.setup_queues = [this](const SerialDevicePtr&, uint32_t, uint32_t) { return Answer("setup_queues"); };
  api.raise_dtr = [this](const SerialDevicePtr&) { return Answer("raise_dtr"); };
  api.set_mask = [this](const SerialDevicePtr&, uint32_t) { return Answer("set_mask"); };
  api.purge = [this](const SerialDevicePtr&, uint32_t what) {
    const bool works = Step("purge");
    const std::lock_guard hold(lock_);
    if (what & kPurgeReceive) received_.clear();
    return works;
  };
  api.clear_error = [this](const SerialDevicePtr&, CommStatus&) { return Answer("clear_error"); };
  api.modem_status = [this](const SerialDevicePtr&, uint32_t&) { return Answer("modem_status"); };
}

void FakeComm::ServeTransfers() {
  api.read = [this](const SerialDevicePtr&, std::span<uint8_t> buffer, size_t& count,
                    Overlapped& overlapped) { return Read(buffer, count, overlapped); };
  api.write = [this](const SerialDevicePtr&, std::span<const uint8_t> bytes, size_t& count,
                     Overlapped* overlapped) { return Write(bytes, count, overlapped); };
  api.wait_event = [this](const SerialDevicePtr&, uint32_t& mask, Overlapped& overlapped) {
    if (!Step("wait_event")) return IoResult(IoResult::kFailed, error);
    const std::lock_guard hold(lock_);
    wait_ = std::make_shared<Operation>();
    wait_event_ = overlapped.event;
    if (wait_event_) static_cast<Event&>(*wait_event_).signalled = false;
    overlapped.system = wait_;
    mask_to_ = &mask;
    return IoResult(IoResult::kPending);
  };
  api.result = [this](const SerialDevicePtr&, Overlapped& overlapped, size_t& count) {
    return Result(overlapped, count);
  };
  api.cancel = [this](const SerialDevicePtr&, Overlapped& overlapped) {
    {
      const std::lock_guard hold(lock_);
      if (read_ == overlapped.system) read_ = nullptr;
      if (wait_ == overlapped.system) wait_ = nullptr;
      overlapped.system = nullptr;
    }
    Step("cancel");  // last: a test may then take the port away
  };
  api.cancel_all = [this](const SerialDevicePtr&) {
    Step("cancel_all");
    if (on_cancel_all) on_cancel_all();
  };
  api.start_thread = [this](std::thread& thread, std::function<void()> run) {
    return Step("start_thread") ? StartThread(thread, std::move(run)) : Outcome(error);
  };
}

}  // namespace vexa
