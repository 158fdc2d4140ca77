#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "loader/run.h"
#include "serial/port.h"

namespace vexa {

namespace {

constexpr size_t kHeld =
    1 << 20;  // bytes that wait for the receiver; what comes beyond is lost, as on any line

struct PortLine : PseudoTerminal {
  Port port;
  std::mutex lock;
  std::condition_variable arrived;
  std::deque<uint8_t> bytes;

  ~PortLine() override {
    AbandonWrites(port);
    if (StopReaderThread(port)) ClosePort(port);
  }
  void Take(std::span<const uint8_t> chunk) {
    const std::lock_guard hold(lock);
    if (bytes.size() < kHeld) bytes.insert(bytes.end(), chunk.begin(), chunk.end());
    arrived.notify_all();
  }
  size_t Read(std::span<uint8_t> buffer, int milliseconds) override {
    std::unique_lock hold(lock);
    arrived.wait_for(hold, std::chrono::milliseconds(milliseconds), [this] { return !bytes.empty(); });
    const size_t count = std::min(buffer.size(), bytes.size());
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(count);
    std::copy(bytes.begin(), end, buffer.begin());
    bytes.erase(bytes.begin(), end);
    return count;
  }
  size_t Write(std::span<const uint8_t> all) override { return WritePort(port, all); }
};

}  // namespace

std::unique_ptr<PseudoTerminal> OpenReceiverPort(const std::string& name, uint32_t baud,
                                                 const Messages& messages) {
  auto line = std::make_unique<PortLine>();
  line->keeps_pace = true;
  line->path = name;
  line->port.messages = WatchedPortMessages(line->port, line->gone, messages);
  BuildPortDcb(line->port, ProjectConfig{});
  line->port.dcb.baud_rate = baud;
  if (!OpenPort(line->port, name)) return nullptr;
  if (!StartReaderThread(line->port, [raw = line.get()](std::span<uint8_t> chunk) { raw->Take(chunk); }))
    return nullptr;
  return line;
}

}  // namespace vexa
