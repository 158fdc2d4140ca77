#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "config/project_config.h"
#include "loader/run.h"
#include "serial/port.h"

namespace vexa {

namespace {

constexpr size_t kHeld =
    1 << 20;  // bytes that wait for the receiver; what comes beyond is lost, as on any line

// What the reader thread uses.
struct Received {
  Port port;
  std::atomic<bool> gone{false};
  std::mutex lock;
  std::condition_variable arrived;
  std::deque<uint8_t> bytes;

  void Take(std::span<const uint8_t> chunk) {
    const std::lock_guard hold(lock);
    if (bytes.size() < kHeld) bytes.insert(bytes.end(), chunk.begin(), chunk.end());
    arrived.notify_all();
  }
};

struct PortLine : PseudoTerminal {
  std::unique_ptr<Received> received = std::make_unique<Received>();

  // A reader that the driver does not let go keeps what it uses.
  ~PortLine() override {
    AbandonWrites(received->port);
    if (StopThread(received->port))
      ClosePort(received->port);
    else
      static_cast<void>(received.release());
  }
  size_t Read(std::span<uint8_t> buffer, int milliseconds) override {
    std::unique_lock hold(received->lock);
    auto& bytes = received->bytes;
    received->arrived.wait_for(hold, std::chrono::milliseconds(milliseconds),
                               [&bytes] { return !bytes.empty(); });
    const size_t count = std::min(buffer.size(), bytes.size());
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(bytes.begin(), end, buffer.begin());
    bytes.erase(bytes.begin(), end);
    gone = received->gone.load();
    return count;
  }
  size_t Write(std::span<const uint8_t> all) override { return WritePort(received->port, all); }
};

}  // namespace

std::unique_ptr<PseudoTerminal> OpenReceiverPort(const std::string& name, uint32_t baud,
                                                 const Messages& messages) {
  auto line = std::make_unique<PortLine>();
  line->keeps_pace = true;
  line->path = name;
  Received* const received = line->received.get();
  Port& port = received->port;
  port.messages = WatchedPortMessages(port, received->gone, messages);
  BuildPortDcb(port, ProjectConfig{});
  port.dcb.baud_rate = baud;
  if (!OpenPort(port, name)) return nullptr;
  if (!StartReaderThread(port, [received](std::span<uint8_t> chunk) { received->Take(chunk); }))
    return nullptr;
  return line;
}

}  // namespace vexa
