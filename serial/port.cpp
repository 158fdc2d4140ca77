#include "serial/port.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <set>

#include "image/line_frame.h"

namespace vexa {

namespace {

constexpr const char* kTitle = "Serial Comm lib";

void TellPort(const Messages& messages, const std::string& name, const std::string& text,
              const std::error_code& error, Icon icon = Icon::kStop) {
  if (messages.tell) messages.tell({icon, text, kTitle, Reason(Attempt::kUsePort, name, error)});
}

void TellPort(const Port& port, const std::string& text, const std::error_code& error) {
  TellPort(port.messages, port.name, text, error);
}

}  // namespace

struct PortReader {
  const CommApi* api = nullptr;
  Messages messages;
  std::string name;  // of the port
  LineTap tap;
  std::function<void(const std::string&)> status;
  ReceiveCallback callback;
  SerialDevicePtr device;
  uint32_t event_mask = 0;

  SerialEventPtr read_event, status_event;
  std::error_code read_event_error, status_event_error;  // of one that is null
  Overlapped reading, waiting;
  bool read_outstanding = false, wait_outstanding = false;
  uint32_t applied_mask = 0, reported_mask = 0;
  bool mask_applied = false;
  CommStatus last_status;
  uint32_t last_modem = 0;
  std::array<uint8_t, kReadSize> buffer{};

  std::thread thread;
  std::atomic<bool> stop{false};
  std::mutex lock;  // guards the members below
  std::condition_variable changed;
  bool ended = false;
};

namespace {

// Tells the owner, unless the reader was stopped: it may come out of the driver when its owner is gone.
void TellOwner(const PortReader& reader, const std::string& text, const std::error_code& error,
               Icon icon = Icon::kStop) {
  if (!reader.stop) TellPort(reader.messages, reader.name, text, error, icon);
}

void ShowStatus(const PortReader& reader, const std::string& line) {
  if (!reader.stop && reader.status) reader.status(line);
}

void CheckComStatus(PortReader& reader, bool update_now) {
  CommStatus now;
  const Outcome asked = reader.api->clear_error(reader.device, now);
  if (!asked) return TellOwner(reader, "ClearCommError", asked.error);
  if (update_now || now != reader.last_status) reader.last_status = now;
}

void CheckModemStatus(PortReader& reader, bool update_now) {
  uint32_t now = 0;
  const Outcome asked = reader.api->modem_status(reader.device, now);
  if (!asked) return TellOwner(reader, "GetCommModemStatus", asked.error);
  if (update_now || now != reader.last_modem) reader.last_modem = now;
}

void ReportCommError(PortReader& reader) {
  CommStatus now;
  const Outcome asked = reader.api->clear_error(reader.device, now);
  if (!asked) TellOwner(reader, "ClearCommError", asked.error);
  ShowStatus(reader, CommErrorText(now.errors));
}

void ReportCommEvent(PortReader& reader, uint32_t mask) {
  ShowStatus(reader, CommEventText(mask));
  if (mask & kEventError) ReportCommError(reader);
  CheckModemStatus(reader, false);
  if (!(mask & kEventError)) CheckComStatus(reader, false);
}

// Waits half a second, or until the reader is stopped: a call that failed at once would fail again and again.
void PauseReader(PortReader& reader) {
  std::unique_lock hold(reader.lock);
  reader.changed.wait_for(hold, std::chrono::milliseconds(kIdleWait), [&] { return reader.stop.load(); });
}

// A read that ends without a byte, or fails in the end, means that the line was hung up: its state is looked
// at as after a time-out.
void ReadNothing(PortReader& reader) {
  if (reader.stop) return;
  CheckModemStatus(reader, false);
  CheckComStatus(reader, false);
  PauseReader(reader);
}

void Deliver(PortReader& reader, size_t count) {
  if (count == 0) return ReadNothing(reader);
  if (count > reader.buffer.size() || reader.stop) return;
  const std::span<uint8_t> chunk(reader.buffer.data(), count);
  if (reader.tap) reader.tap(false, chunk);
  reader.callback(chunk);
}

void StartRead(PortReader& reader) {
  if (reader.read_outstanding) return;
  size_t count = 0;
  if (reader.api->read(reader.device, reader.buffer, count, reader.reading) == IoResult::kDone) {
    Deliver(reader, count);
  } else {
    reader.read_outstanding = true;
  }
}

void ApplyMask(PortReader& reader) {
  if (reader.mask_applied && reader.applied_mask == reader.event_mask) return;
  const Outcome set = reader.api->set_mask(reader.device, reader.event_mask);
  if (!set) TellOwner(reader, "Error - SetCommMask", set.error);
  reader.applied_mask = reader.event_mask;
  reader.mask_applied = true;
}

// False when a line event came at once. Where the driver refuses the wait for one, what is received still
// counts.
bool StartStatusWait(PortReader& reader) {
  if (reader.wait_outstanding) return true;
  const IoResult result = reader.api->wait_event(reader.device, reader.reported_mask, reader.waiting);
  reader.wait_outstanding = result == IoResult::kPending;
  if (result == IoResult::kDone) return false;
  if (!reader.wait_outstanding) TellOwner(reader, "Error - WaitCommEvent", result.error);
  return true;
}

void WaitForSomething(PortReader& reader) {
  const SerialEventPtr events[] = {reader.read_event, reader.status_event};
  const bool both = reader.read_event && reader.status_event;
  const std::span<const SerialEventPtr> awaited(events, reader.wait_outstanding ? 2 : 1);
  const WaitResult result = both ? reader.api->wait(awaited, kIdleWait) : WaitResult(kWaitFailed);
  size_t count = 0;
  switch (result.index) {
    case 0: {
      const bool done = reader.api->result(reader.device, reader.reading, count) == IoResult::kDone;
      reader.read_outstanding = false;
      done ? Deliver(reader, count) : ReadNothing(reader);
      break;
    }
    case 1:
      reader.wait_outstanding = false;
      if (reader.api->result(reader.device, reader.waiting, count) == IoResult::kDone) {
        ReportCommEvent(reader, reader.reported_mask);
      }
      break;
    case kWaitTimeout:
      CheckModemStatus(reader, false);
      CheckComStatus(reader, false);
      break;
    default:
      TellOwner(reader, "Error - WaitForMultipleObjects(Reader & Status handles)", result.error);
      PauseReader(reader);
      break;
  }
}

void PrepareReader(PortReader& reader) {
  reader.api->purge(reader.device, kPurgeTransmit | kPurgeReceive);
  reader.api->setup_queues(reader.device, kQueueSize, kQueueSize);
  reader.api->set_mask(reader.device, kEventRxChar | kEventCts | kEventDsr | kEventRlsd | kEventRing);
  if (!reader.read_event)
    TellOwner(reader, "Error - CreateEvent ( Reader Event )", reader.read_event_error, Icon::kNone);
  if (!reader.status_event)
    TellOwner(reader, "Error - CreateEvent ( Status Event )", reader.status_event_error);
  reader.reading.event = reader.read_event;
  reader.waiting.event = reader.status_event;
  CheckModemStatus(reader, true);
  CheckComStatus(reader, true);
}

void RunReader(PortReader& reader) {
  PrepareReader(reader);
  while (!reader.stop) {
    StartRead(reader);
    ApplyMask(reader);
    if (StartStatusWait(reader) && reader.read_outstanding) WaitForSomething(reader);
  }
  reader.api->cancel(reader.device, reader.reading);
  reader.api->cancel(reader.device, reader.waiting);
  const std::lock_guard hold(reader.lock);
  reader.ended = true;
  reader.changed.notify_all();
}

bool IsTimeoutOrAbandoned(Port& port, const WaitResult& result) {
  if (result == 1) return true;
  if (result == kWaitTimeout) {
    port.api->set_event(port.exit_event);
    return true;
  }
  if (result == 0) return false;
  TellPort(port, "WaitForMultipleObjects (WriterGeneric)", result.error);
  return true;
}

// A write that did not complete at once. Returns the bytes written.
size_t AwaitWrite(Port& port, Overlapped& overlapped, size_t asked) {
  const SerialEventPtr events[] = {overlapped.event, port.exit_event};
  const bool both = overlapped.event && port.exit_event;
  if (IsTimeoutOrAbandoned(port, both ? port.api->wait(events, kWaitForever) : WaitResult(kWaitFailed))) {
    port.api->cancel(port.device, overlapped);
    return 0;
  }
  size_t written = 0;
  const IoResult result = port.api->result(port.device, overlapped, written);
  if (result == IoResult::kAborted) {
    port.api->set_event(port.exit_event);
  } else if (result != IoResult::kDone) {
    TellPort(port, "GetOverlappedResult(in Writer)", result.error);
  }
  if (written < asked) TellPort(port, "Error writing data to port (overlapped)", result.error);
  return written;
}

size_t WriteOverlapped(Port& port, std::span<const uint8_t> bytes) {
  Overlapped overlapped;
  const auto event = port.api->create_event(false, true);
  overlapped.event = event.value;
  if (!event) TellPort(port, "CreateEvent (overlapped write hEvent)", event.error);
  size_t written = 0;
  const IoResult result = port.api->write(port.device, bytes, written, &overlapped);
  switch (result.state) {
    case IoResult::kDone:
      if (written < bytes.size() && port.exit_event) port.api->set_event(port.exit_event);
      return written;
    case IoResult::kPending:
      return AwaitWrite(port, overlapped, bytes.size());
    default:
      TellPort(port, "WriteFile (in Writer)", result.error);
      return written;
  }
}

struct BitName {
  uint32_t bit;
  const char* name;
};

constexpr BitName kEventNames[] = {
    {kEventCts, "CTS "},       {kEventDsr, "DSR "},       {kEventError, "ERR "},
    {kEventRing, "RING "},     {kEventRlsd, "RLSD "},     {kEventBreak, "BREAK "},
    {kEventRxFlag, "RXFLAG "}, {kEventRxChar, "RXCHAR "}, {kEventTxEmpty, "TXEMPTY "}};
constexpr BitName kErrorNames[] = {{0x800, "DNS "},    {0x400, "IOE "},   {0x1000, "OOP "},  {0x200, "PTO "},
                                   {0x8000, "MODE "},  {0x10, "BREAK "},  {0x8, "FRAME "},   {0x1, "RXOVER "},
                                   {0x100, "TXFULL "}, {0x2, "OVERRUN "}, {0x4, "RXPARITY "}};

}  // namespace

std::string CommEventText(uint32_t mask) {
  std::string text = "EVENT: ";
  for (const BitName& name : kEventNames) {
    if (mask & name.bit) text += name.name;
  }
  if (mask == 0) text += "NULL";
  return text + "\n";
}

std::string CommErrorText(uint32_t errors) {
  std::string text = "ERROR: ";
  for (const BitName& name : kErrorNames) {
    if (errors & name.bit) text += name.name;
  }
  return text + "\n";
}

void BuildPortDcb(Port& port, const ProjectConfig& config) {
  // The settings lists and the system number the parities differently.
  constexpr uint8_t parities[] = {kNoParity, kEvenParity, kOddParity, kMarkParity, kSpaceParity};
  constexpr uint8_t stops[] = {kOneStopBit, kOne5StopBits, kTwoStopBits};
  static_assert(std::size(parities) == kParities.size() && std::size(stops) == kStopBits.size());
  PortDcb& dcb = port.dcb;
  dcb.length = 28;
  if (config.baud_index < kLineSpeeds.size()) dcb.baud_rate = kLineSpeeds[config.baud_index];
  dcb.byte_size = static_cast<uint8_t>(config.data_bits_index + 4);
  if (config.parity_index < std::size(parities)) dcb.parity = parities[config.parity_index];
  if (config.stop_bits_index < std::size(stops)) dcb.stop_bits = stops[config.stop_bits_index];
  dcb.xon_char = kXon;
  dcb.xoff_char = kXoff;
  dcb.xon_limit = dcb.xoff_limit = 0;
  dcb.cts_flow = dcb.dsr_flow = dcb.dsr_sensitivity = dcb.continue_on_xoff = dcb.out_x = dcb.in_x = false;
  dcb.rts_control = 0;
  dcb.parity_check = true;
  dcb.dtr_control = 1;
}

double BytesPerSecond(const PortDcb& dcb) {
  constexpr double stop_bits[] = {1, 1.5, 2};
  const double stop = stop_bits[std::min<size_t>(dcb.stop_bits, 2)];
  return dcb.baud_rate / (1.0 + dcb.byte_size + (dcb.parity == kNoParity ? 0 : 1) + stop);
}

bool DetectPlatform(Port& port) {
  port.plain_writes = true;
  switch (port.api->platform()) {
    case SerialPlatform::kUnknown:
    case SerialPlatform::kWin32s:
      return false;
    case SerialPlatform::kWindowsNt:
      port.plain_writes = false;
      return true;
    default:
      return true;
  }
}

void ApplyPortState(Port& port) {
  const Outcome state = port.api->set_state(port.device, port.dcb);
  if (!state) TellPort(port, "Error - SetCommState.", state.error);
  const Outcome timeouts = port.api->set_timeouts(port.device, port.timeouts);
  if (!timeouts) TellPort(port, "Error - SetCommTimeouts.", timeouts.error);
}

bool OpenPort(Port& port, const std::string& name) {
  port.name = name;
  port.refusal.clear();
  if (!DetectPlatform(port)) return false;
  const auto device = port.api->create_file(name);
  port.device = device.value;
  if (!device) {
    port.refusal = PortRefusal(name, device.error);
    if (port.messages.tell) port.messages.tell({Icon::kStop, "Port is not available.", kTitle, port.refusal});
    return false;
  }
  const auto exit_event = port.api->create_event(true, false);
  port.exit_event = exit_event.value;
  if (!exit_event) TellPort(port, "CreateEvent (Thread exit event)", exit_event.error);
  const Outcome saved = port.api->get_timeouts(port.device, port.saved_timeouts);
  if (!saved) TellPort(port, "Error - GetCommTimeouts", saved.error);
  port.timeouts = {1, 0, 0, 0, 0};
  port.event_mask = kPortEventMask;
  ApplyPortState(port);
  port.api->setup_queues(port.device, kQueueSize, kQueueSize);
  const Outcome raised = port.api->raise_dtr(port.device);
  if (!raised) TellPort(port, "Error - EscapeCommFunction", raised.error);
  return true;
}

bool StartReaderThread(Port& port, ReceiveCallback callback) {
  const auto reader = std::make_shared<PortReader>();
  reader->api = port.api;
  reader->messages = port.messages;
  reader->name = port.name;
  reader->tap = port.tap;
  reader->status = port.status;
  reader->callback = std::move(callback);
  reader->device = port.device;
  reader->event_mask = port.event_mask;
  const auto read_event = port.api->create_event(true, false);
  const auto status_event = port.api->create_event(true, false);
  reader->read_event = read_event.value;
  reader->read_event_error = read_event.error;
  reader->status_event = status_event.value;
  reader->status_event_error = status_event.error;
  const Outcome started = port.api->start_thread(reader->thread, [reader] { RunReader(*reader); });
  if (!started) {
    TellPort(port, "Error in CreateThread(Reader/Status)", started.error);
    return false;
  }
  port.reader = reader;
  return true;
}

size_t WritePort(Port& port, std::span<const uint8_t> bytes) {
  if (!port.device || bytes.empty()) return 0;
  if (port.tap) port.tap(true, bytes);
  if (!port.plain_writes) return WriteOverlapped(port, bytes);
  size_t written = 0;
  port.api->write(port.device, bytes, written, nullptr);
  return written;
}

void PurgeReceived(Port& port) {
  if (port.device) port.api->purge(port.device, kPurgeReceive);
}

void AbandonWrites(Port& port) {
  if (port.exit_event) port.api->set_event(port.exit_event);
}

bool AwaitEnd(const Port& port, const std::function<bool(std::chrono::milliseconds)>& wait) {
  if (wait(kAnswerTime)) return true;
  if (port.device) port.api->cancel_all(port.device);
  return wait(kAnswerTime);
}

void TellNoAnswer(const Messages& messages, const std::string& port) {
  TellWhy(messages, Icon::kStop, port, "Exit Thread API failed");
  TellWhy(messages, Icon::kStop, port,
          "The driver of the port does not answer.\nThe port may stay in use until this program has ended.");
}

bool StopThread(Port& port) {
  const auto reader = std::move(port.reader);
  if (!reader) return true;
  reader->stop = true;
  if (reader->status_event) port.api->set_event(reader->status_event);  // the wait ends at once
  const bool ended = AwaitEnd(port, [&](std::chrono::milliseconds time) {
    std::unique_lock hold(reader->lock);
    reader->changed.notify_all();
    return reader->changed.wait_for(hold, time, [&] { return reader->ended; });
  });
  if (ended) {
    reader->thread.join();
  } else {
    reader->thread.detach();
  }
  return ended;
}

bool IsPortGone(const Port& port) {
  CommStatus status;
  return port.device && !port.api->clear_error(port.device, status);
}

std::string GoneReason(const Port& port) {
  CommStatus status;
  const Outcome asked = port.device ? port.api->clear_error(port.device, status) : Outcome();
  return Reason(Attempt::kUsePort, port.name, asked.error);
}

Messages WatchedPortMessages(const Port& port, std::atomic<bool>& gone, const Messages& messages) {
  struct Told {
    std::mutex lock;
    std::set<std::string> texts;
  };
  Messages watched = messages;
  const auto told = std::make_shared<Told>();
  watched.tell = [&port, &gone, told, tell = messages.tell](const Message& message) {
    if (IsPortGone(port)) {
      gone = true;
      return;
    }
    {
      const std::lock_guard hold(told->lock);
      if (!told->texts.insert(message.text).second) return;
    }
    if (tell) tell(message);
  };
  return watched;
}

Outcome ClosePort(Port& port) {
  if (!port.device) return false;
  const Outcome closed = port.api->close_file(port.device);
  if (!closed) return closed;
  port.device = nullptr;
  port.exit_event = nullptr;
  return true;
}

}  // namespace vexa
