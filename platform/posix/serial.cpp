// Serial ports through termios. The file is non-blocking; a pending read or write hangs on its event, and
// whoever waits for the event watches the file and finishes the operation when it can go on.
#include "platform/serial.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>

#include "platform/files.h"
#include "platform/posix/serial_speed.h"

namespace vexa {

namespace {

struct Device : SerialDevice {
  int file = -1;
  ~Device() override {
    if (file >= 0) close(file);
  }
};

// What a pending operation has done so far.
struct Pending {
  std::mutex lock;
  int file = -1;
  short watch = 0;  // POLLIN or POLLOUT while bytes are awaited; 0 else
  uint8_t* read_to = nullptr;
  const uint8_t* write_from = nullptr;
  size_t size = 0, moved = 0;
  IoResult state = IoResult::kFailed;
};

struct Event : SerialEvent {
  bool manual = true;
  int pipe_ends[2] = {-1, -1};  // one byte inside while signalled
  std::mutex lock;
  bool signalled = false;
  std::weak_ptr<Pending> pending;
  ~Event() override {
    for (const int end : pipe_ends) {
      if (end >= 0) close(end);
    }
  }
};

int FileOf(const SerialDevicePtr& device) {
  return static_cast<Device&>(*device).file;
}
Event& EventOf(const SerialEventPtr& event) {
  return static_cast<Event&>(*event);
}

void SetEvent(const SerialEventPtr& pointer) {
  Event& event = EventOf(pointer);
  const std::lock_guard hold(event.lock);
  if (event.signalled) return;
  event.signalled = true;
  const uint8_t one = 1;
  while (write(event.pipe_ends[1], &one, 1) < 0 && errno == EINTR) {
  }
}

void ResetEvent(const SerialEventPtr& pointer) {
  Event& event = EventOf(pointer);
  const std::lock_guard hold(event.lock);
  if (!event.signalled) return;
  event.signalled = false;
  uint8_t taken = 0;
  while (read(event.pipe_ends[0], &taken, 1) < 0 && errno == EINTR) {
  }
}

Made<SerialEventPtr> CreateEvent(bool manual_reset, bool signalled) {
  const auto event = std::make_shared<Event>();
  event->manual = manual_reset;
  if (pipe(event->pipe_ends) != 0) return LastSystemError();
  for (const int end : event->pipe_ends) fcntl(end, F_SETFD, FD_CLOEXEC);
  if (signalled) SetEvent(event);
  return event;
}

// Moves what can be moved now. Reads are done with the first bytes, writes with the last.
void GoOn(Pending& pending) {
  const bool reads = pending.read_to != nullptr;
  for (;;) {
    const size_t left = pending.size - pending.moved;
    const ssize_t count = reads ? read(pending.file, pending.read_to, left)
                                : write(pending.file, pending.write_from + pending.moved, left);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
      pending.state = IoResult::kPending;
      pending.watch = reads ? POLLIN : POLLOUT;
      return;
    }
    if (count <= 0) {
      const auto gone = std::make_error_code(std::errc::no_such_device);
      pending.state = {IoResult::kFailed, count < 0 ? LastSystemError() : gone};
      pending.watch = 0;
      return;
    }
    pending.moved += static_cast<size_t>(count);
    if (!reads && pending.moved < pending.size) continue;
    pending.state = IoResult::kDone;
    pending.watch = 0;
    return;
  }
}

std::shared_ptr<Pending> PendingOf(const Overlapped& overlapped) {
  return std::static_pointer_cast<Pending>(overlapped.system);
}

IoResult Start(Overlapped& overlapped, const std::shared_ptr<Pending>& pending, size_t& count) {
  overlapped.system = pending;
  if (overlapped.event) ResetEvent(overlapped.event);
  GoOn(*pending);
  count = pending->moved;
  if (pending->state == IoResult::kPending && overlapped.event) {
    Event& event = EventOf(overlapped.event);
    const std::lock_guard hold(event.lock);
    event.pending = pending;
  }
  return pending->state;
}

IoResult Read(const SerialDevicePtr& device, std::span<uint8_t> buffer, size_t& count,
              Overlapped& overlapped) {
  const auto pending = std::make_shared<Pending>();
  pending->file = FileOf(device);
  pending->read_to = buffer.data();
  pending->size = buffer.size();
  return Start(overlapped, pending, count);
}

IoResult Write(const SerialDevicePtr& device, std::span<const uint8_t> bytes, size_t& count,
               Overlapped* overlapped) {
  const auto pending = std::make_shared<Pending>();
  pending->file = FileOf(device);
  pending->write_from = bytes.data();
  pending->size = bytes.size();
  count = 0;
  if (bytes.empty()) return IoResult::kDone;
  if (overlapped) return Start(*overlapped, pending, count);
  for (;;) {
    GoOn(*pending);
    count = pending->moved;
    if (pending->state != IoResult::kPending) return pending->state;
    pollfd watched{pending->file, POLLOUT, 0};
    poll(&watched, 1, -1);
  }
}

// The line events that exist here are never reported: the wait stays pending, and the lines are looked at
// twice a second.
IoResult WaitEvent(const SerialDevicePtr& device, uint32_t&, Overlapped& overlapped) {
  const auto pending = std::make_shared<Pending>();
  pending->file = FileOf(device);
  pending->state = IoResult::kPending;
  overlapped.system = pending;
  return IoResult::kPending;
}

IoResult Result(const SerialDevicePtr&, Overlapped& overlapped, size_t& count) {
  const auto pending = PendingOf(overlapped);
  count = 0;
  if (!pending) return IoResult::kFailed;
  const std::lock_guard hold(pending->lock);
  count = pending->moved;
  return pending->state;
}

void Cancel(const SerialDevicePtr&, Overlapped& overlapped) {
  const auto pending = PendingOf(overlapped);
  if (!pending) return;
  const std::lock_guard hold(pending->lock);
  if (pending->state == IoResult::kPending) pending->state = IoResult::kAborted;
  pending->watch = 0;
  overlapped.system = nullptr;
}

// Finishes the operation that hangs on the event, when its file is ready.
void Finish(const SerialEventPtr& event, const std::shared_ptr<Pending>& pending) {
  const std::lock_guard hold(pending->lock);
  if (pending->watch == 0) return;
  GoOn(*pending);
  if (pending->state != IoResult::kPending) SetEvent(event);
}

std::shared_ptr<Pending> WatchedBy(const SerialEventPtr& pointer) {
  Event& event = EventOf(pointer);
  const std::lock_guard hold(event.lock);
  auto pending = event.pending.lock();
  return pending && pending->watch != 0 ? pending : nullptr;
}

int TakeSignalled(std::span<const SerialEventPtr> events) {
  for (size_t i = 0; i < events.size(); ++i) {
    Event& event = EventOf(events[i]);
    bool signalled = false;
    {
      const std::lock_guard hold(event.lock);
      signalled = event.signalled;
    }
    if (!signalled) continue;
    if (!event.manual) ResetEvent(events[i]);
    return static_cast<int>(i);
  }
  return kWaitTimeout;
}

WaitResult Wait(std::span<const SerialEventPtr> events, uint32_t milliseconds) {
  using Clock = std::chrono::steady_clock;
  const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
  for (;;) {
    const int ready = TakeSignalled(events);
    if (ready >= 0) return ready;
    int left = -1;
    if (milliseconds != kWaitForever) {
      const auto rest = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
      if (rest <= 0) return kWaitTimeout;
      left = static_cast<int>(rest) + 1;
    }
    std::vector<pollfd> watched;
    std::vector<std::shared_ptr<Pending>> operations;
    for (const SerialEventPtr& event : events) {
      watched.push_back({EventOf(event).pipe_ends[0], POLLIN, 0});
      operations.push_back(WatchedBy(event));
      watched.push_back({operations.back() ? operations.back()->file : -1,
                         operations.back() ? operations.back()->watch : short{0}, 0});
    }
    if (poll(watched.data(), watched.size(), left) < 0 && errno != EINTR)
      return {kWaitFailed, LastSystemError()};
    for (size_t i = 0; i < events.size(); ++i) {
      if (operations[i] && watched[2 * i + 1].revents != 0) Finish(events[i], operations[i]);
    }
  }
}

// The outcome of a call that gives 0 when it did what it was to do.
Outcome Done(int result) {
  return result == 0 ? Outcome() : Outcome(LastSystemError());
}

Made<SerialDevicePtr> CreateFile(const std::string& name) {
  const auto device = std::make_shared<Device>();
  device->file = open(PathFromUtf8(name).c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (device->file < 0 || !isatty(device->file)) return LastSystemError();
  if (flock(device->file, LOCK_EX | LOCK_NB) != 0) return LastSystemError();
  return device;
}

Outcome CloseFile(const SerialDevicePtr& pointer) {
  Device& device = static_cast<Device&>(*pointer);
  const Outcome closed = Done(close(device.file));
  device.file = -1;
  return closed;
}

struct NamedSpeed {
  uint32_t baud;
  speed_t speed;
};
constexpr NamedSpeed kSpeeds[] = {{110, B110},     {300, B300},     {600, B600},      {1200, B1200},
                                  {2400, B2400},   {4800, B4800},   {9600, B9600},    {19200, B19200},
                                  {38400, B38400}, {57600, B57600}, {115200, B115200}};

bool SetFrame(termios& state, const PortDcb& dcb) {
  constexpr tcflag_t sizes[] = {CS5, CS6, CS7, CS8};
  if (dcb.byte_size < 5 || dcb.byte_size > 8 || dcb.stop_bits == kOne5StopBits) return false;
  state.c_cflag &= ~static_cast<tcflag_t>(CSIZE | PARENB | PARODD | CSTOPB);
  state.c_cflag |= sizes[dcb.byte_size - 5] | CREAD | CLOCAL;
  if (dcb.stop_bits == kTwoStopBits) state.c_cflag |= CSTOPB;
  if (dcb.parity != kNoParity) state.c_cflag |= PARENB;
  if (dcb.parity == kOddParity || dcb.parity == kMarkParity) state.c_cflag |= PARODD;
#ifdef CMSPAR
  state.c_cflag &= ~static_cast<tcflag_t>(CMSPAR);
  if (dcb.parity == kMarkParity || dcb.parity == kSpaceParity) state.c_cflag |= CMSPAR;
#else
  if (dcb.parity == kMarkParity || dcb.parity == kSpaceParity) return false;
#endif
#ifdef CRTSCTS
  state.c_cflag &= ~static_cast<tcflag_t>(CRTSCTS);
#endif
  return true;
}

Outcome SetState(const SerialDevicePtr& device, const PortDcb& dcb) {
  const int file = FileOf(device);
  termios state{};
  const auto not_taken = std::make_error_code(std::errc::invalid_argument);
  if (tcgetattr(file, &state) != 0) return LastSystemError();
  cfmakeraw(&state);
  if (!SetFrame(state, dcb)) return not_taken;
  state.c_cc[VMIN] = 1;
  state.c_cc[VTIME] = 0;
  const auto* named = std::find_if(std::begin(kSpeeds), std::end(kSpeeds),
                                   [&](const NamedSpeed& speed) { return speed.baud == dcb.baud_rate; });
  const bool known = named != std::end(kSpeeds);
  if (known && (cfsetispeed(&state, named->speed) != 0 || cfsetospeed(&state, named->speed) != 0))
    return LastSystemError();
  if (tcsetattr(file, TCSANOW, &state) != 0) return LastSystemError();
  return known || SetAnySpeed(file, dcb.baud_rate) ? Outcome() : Outcome(not_taken);
}

// A terminal without modem lines (a pseudo-terminal) has none to raise, and none raised.
bool HasNoModemLines() {
  return errno == ENOTTY || errno == EINVAL;
}

Outcome RaiseDtr(const SerialDevicePtr& device) {
  const int line = TIOCM_DTR;
  const Outcome raised = Done(ioctl(FileOf(device), TIOCMBIS, &line));
  return raised || !HasNoModemLines() ? raised : Outcome();
}

Outcome ModemStatus(const SerialDevicePtr& device, uint32_t& modem) {
  int lines = 0;
  modem = 0;
  if (ioctl(FileOf(device), TIOCMGET, &lines) != 0)
    return HasNoModemLines() ? Outcome() : Outcome(LastSystemError());
  if (lines & TIOCM_CTS) modem |= 0x10;
  if (lines & TIOCM_DSR) modem |= 0x20;
  if (lines & TIOCM_RNG) modem |= 0x40;
  if (lines & TIOCM_CAR) modem |= 0x80;
  return true;
}

Outcome ClearError(const SerialDevicePtr& device, CommStatus& status) {
  int waiting = 0;
  status = {};
  if (ioctl(FileOf(device), FIONREAD, &waiting) != 0) {
    const bool unplugged = errno == EIO || errno == ENODEV;
    return unplugged ? Outcome(LastSystemError()) : Outcome();
  }
  status.in_queue = static_cast<uint32_t>(waiting);
  return true;
}

Outcome Purge(const SerialDevicePtr& device, uint32_t what) {
  Outcome done;
  if (what & kPurgeReceive) done = Done(tcflush(FileOf(device), TCIFLUSH));
  if (what & kPurgeTransmit && done) done = Done(tcflush(FileOf(device), TCOFLUSH));
  return done;
}

CommApi MakeApi() {
  CommApi api;
  api.platform = [] { return SerialPlatform::kWindowsNt; };  // overlapped writes, as there
  api.create_file = CreateFile;
  api.close_file = CloseFile;
  api.create_event = CreateEvent;
  api.set_event = SetEvent;
  api.reset_event = ResetEvent;
  api.wait = Wait;
  api.get_timeouts = [](const SerialDevicePtr&, CommTimeouts&) { return true; };
  api.set_timeouts = [](const SerialDevicePtr&, const CommTimeouts&) { return true; };
  api.set_state = SetState;
  api.setup_queues = [](const SerialDevicePtr&, uint32_t, uint32_t) { return true; };
  api.raise_dtr = RaiseDtr;
  api.set_mask = [](const SerialDevicePtr&, uint32_t) { return true; };
  api.purge = Purge;
  api.clear_error = ClearError;
  api.modem_status = ModemStatus;
  api.read = Read;
  api.write = Write;
  api.wait_event = WaitEvent;
  api.result = Result;
  api.cancel = Cancel;
  api.cancel_all = [](const SerialDevicePtr&) {
  };  // nothing waits inside the driver: the file is non-blocking
  api.start_thread = StartThread;
  return api;
}

}  // namespace

const CommApi& SystemCommApi() {
  static const CommApi api = MakeApi();
  return api;
}

namespace {

// What a converter calls itself, some steps above the terminal's device; else the driver's name. The kernel
// puts devices of the drivers "port" and "ctrl" between a UART and its own.
std::string DescriptionOf(const Path& device) {
  std::error_code error;
  Path place = std::filesystem::canonical(device, error);
  std::string driver;
  for (int step = 0; !error && step < 4; ++step, place = place.parent_path()) {
    std::string product;
    std::ifstream file(place / "product");
    if (std::getline(file, product) && !product.empty()) return product;
    std::error_code none;
    const std::string name = std::filesystem::read_symlink(place / "driver", none).filename().string();
    if (driver.empty() && name != "port" && name != "ctrl") driver = name;
  }
  return driver;
}

}  // namespace

std::vector<SerialPortInfo> ListSerialPorts() {
  namespace fs = std::filesystem;
  std::vector<SerialPortInfo> ports;
  std::error_code error;
  std::vector<Path> names;
  ListFolder("/sys/class/tty", names);
  for (const std::string name : names) {
    const Path entry = Path("/sys/class/tty") / name;
    const auto driver = fs::read_symlink(entry / "device" / "driver", error).filename().string();
    if (error || driver.empty()) continue;
    std::string kind;
    std::ifstream(entry / "type") >> kind;  // a UART's kind; 0 where the driver found none
    if (kind == "0" || !fs::exists("/dev/" + name, error)) continue;
    ports.push_back({"/dev/" + name, DescriptionOf(entry / "device")});
  }
  std::sort(ports.begin(), ports.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
  return ports;
}

bool IsSamePort(const std::string& one, const std::string& other) {
  if (one.empty() || one == other) return !one.empty();
  std::error_code missing, none;
  const Path place = std::filesystem::canonical(PathFromUtf8(one), missing);
  return !missing && place == std::filesystem::canonical(PathFromUtf8(other), none);
}

}  // namespace vexa
