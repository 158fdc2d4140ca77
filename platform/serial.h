// Serial ports of the operating system, as one table of operations (`CommApi`) whose steps and failures are
// those of the Win32 communication functions: a read, a write or a wait for a line event either completes at
// once, stays pending until its event is signalled, or fails. What fails answers with the system's error. The
// port library (serial/port.h) is written against the table alone; tests hand in one whose steps fail on
// demand.
//
// Threads: reading, writing and waiting may run at the same time on one port, each with its own `Overlapped`;
// one Overlapped belongs to one thread. Events may be signalled from any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "platform/system_error.h"

namespace vexa {

enum class SerialPlatform { kUnknown, kWin32s, kWindows9x, kWindowsNt, kOther };

inline constexpr uint8_t kNoParity = 0, kOddParity = 1, kEvenParity = 2, kMarkParity = 3, kSpaceParity = 4;
inline constexpr uint8_t kOneStopBit = 0, kOne5StopBits = 1, kTwoStopBits = 2;

// The device control block, by its Win32 field names. Zero-initialised: no flow control of any kind.
struct PortDcb {
  uint32_t length = 0;
  uint32_t baud_rate = 0;  // bits a second
  bool binary = false, parity_check = false;
  bool cts_flow = false, dsr_flow = false, dsr_sensitivity = false, continue_on_xoff = false;
  bool out_x = false, in_x = false;
  uint8_t dtr_control = 0;  // 0 disabled, 1 enabled, 2 handshake
  uint8_t rts_control = 0;
  uint16_t xon_limit = 0, xoff_limit = 0;
  uint8_t byte_size = 0;  // 4-8
  uint8_t parity = kNoParity, stop_bits = kOneStopBit;
  uint8_t xon_char = 0, xoff_char = 0;
};

// Milliseconds; an interval of 1 ends a read at the first gap between bytes.
struct CommTimeouts {
  uint32_t read_interval = 0, read_multiplier = 0, read_constant = 0, write_multiplier = 0,
           write_constant = 0;
};

// Line events and errors: the Win32 bits.
inline constexpr uint32_t kEventRxChar = 0x1, kEventRxFlag = 0x2, kEventTxEmpty = 0x4, kEventCts = 0x8,
                          kEventDsr = 0x10, kEventRlsd = 0x20, kEventBreak = 0x40, kEventError = 0x80,
                          kEventRing = 0x100;
inline constexpr uint32_t kPurgeTransmit = 0x4, kPurgeReceive = 0x8;

struct CommStatus {
  uint32_t errors = 0;
  uint32_t flags = 0;
  uint32_t in_queue = 0;  // bytes received and not read yet
  bool operator==(const CommStatus&) const = default;
};

struct SerialDevice {  // an open port; the system's part derives from it
  virtual ~SerialDevice() = default;
};
struct SerialEvent {
  virtual ~SerialEvent() = default;
};
using SerialDevicePtr = std::shared_ptr<SerialDevice>;
using SerialEventPtr = std::shared_ptr<SerialEvent>;

// One operation that may be pending. `system` is the implementation's; the buffer handed to a read or write
// must live until the operation completed or `cancel` returned.
struct Overlapped {
  SerialEventPtr event;
  std::shared_ptr<void> system;
};

struct IoResult {
  enum State { kDone, kPending, kAborted, kFailed };
  State state = kDone;
  std::error_code error;  // of kFailed

  IoResult(State reached = kDone, std::error_code why = {}) : state(reached), error(why) {}
  operator State() const { return state; }
};

inline constexpr int kWaitTimeout = -1, kWaitFailed = -2;
struct WaitResult {
  int index = kWaitFailed;  // of the signalled event, or one of the two above
  std::error_code error;    // of kWaitFailed

  WaitResult(int signalled, std::error_code why = {}) : index(signalled), error(why) {}
  operator int() const { return index; }
};
inline constexpr uint32_t kWaitForever = 0xFFFFFFFF;

// The system's calls on serial lines, one member each; tests put in their own. No member may be empty. Times
// are milliseconds, sizes bytes. An Outcome that is not done holds the system's error, which the call leaves
// as it was given. A device or event belongs to those who hold its pointer and ends with the last of them;
// the calls do not keep it. All may be called from any thread.
struct CommApi {
  std::function<SerialPlatform()> platform;  // kUnknown: the system's version cannot be told
  // Opens the port for this program alone. Null when it is not there, no port, or held by another.
  std::function<Made<SerialDevicePtr>(const std::string& name)> create_file;
  // Nothing else may be called with the device afterwards, also when this fails.
  std::function<Outcome(const SerialDevicePtr&)> close_file;
  // `signalled`: how it begins. One without `manual_reset` lets a single wait through.
  std::function<Made<SerialEventPtr>(bool manual_reset, bool signalled)> create_event;
  std::function<void(const SerialEventPtr&)> set_event;
  std::function<void(const SerialEventPtr&)> reset_event;
  // Waits, kWaitForever without an end, until one of the events is signalled; gives the lowest of them.
  std::function<WaitResult(std::span<const SerialEventPtr> events, uint32_t milliseconds)> wait;

  std::function<Outcome(const SerialDevicePtr&, CommTimeouts&)> get_timeouts;
  std::function<Outcome(const SerialDevicePtr&, const CommTimeouts&)> set_timeouts;
  std::function<Outcome(const SerialDevicePtr&, const PortDcb&)> set_state;
  // Bytes that the driver is asked to hold for each direction; it may hold others.
  std::function<Outcome(const SerialDevicePtr&, uint32_t receive, uint32_t transmit)> setup_queues;
  // Tells the far end by its line DTR that this program is ready.
  std::function<Outcome(const SerialDevicePtr&)> raise_dtr;
  // kEvent... bits: what `wait_event` waits for. 0 ends a wait that is pending.
  std::function<Outcome(const SerialDevicePtr&, uint32_t mask)> set_mask;
  // kPurge... bits: drops the bytes that are waiting there.
  std::function<Outcome(const SerialDevicePtr&, uint32_t what)> purge;
  // Gives what went wrong on the line since the last call, and forgets it; how much is waiting.
  std::function<Outcome(const SerialDevicePtr&, CommStatus&)> clear_error;
  // The lines CTS, DSR, ring and carrier as the Win32 bits have them (0x10, 0x20, 0x40, 0x80).
  std::function<Outcome(const SerialDevicePtr&, uint32_t& modem)> modem_status;

  // `count`: bytes moved, when kDone. A null `overlapped` waits until all is written.
  std::function<IoResult(const SerialDevicePtr&, std::span<uint8_t>, size_t& count, Overlapped&)> read;
  std::function<IoResult(const SerialDevicePtr&, std::span<const uint8_t>, size_t& count, Overlapped*)> write;
  // Which of the events of `set_mask` came, in `mask`, which must live while it is pending.
  std::function<IoResult(const SerialDevicePtr&, uint32_t& mask, Overlapped&)> wait_event;
  // Does not wait: kPending while the operation is not complete.
  std::function<IoResult(const SerialDevicePtr&, Overlapped&, size_t& count)> result;
  // Ends a pending operation; its buffer is free afterwards. Nothing when none is pending.
  std::function<void(const SerialDevicePtr&, Overlapped&)> cancel;
  // Asks the driver to let go of whatever any thread has under way on the port; does not wait for it.
  std::function<void(const SerialDevicePtr&)> cancel_all;

  // Not done when the system has no thread left.
  std::function<Outcome(std::thread&, std::function<void()>)> start_thread;
};

// The system's own; it belongs to the program.
const CommApi& SystemCommApi();
// Starts a thread, unless the system refuses one.
Outcome StartThread(std::thread& thread, std::function<void()> run);

struct SerialPortInfo {
  std::string name;         // what opens it: "COM1", "/dev/ttyUSB0"
  std::string description;  // the device or driver behind it; may be empty
};
std::vector<SerialPortInfo> ListSerialPorts();  // by name
// Why a port cannot be opened, for the user in one line:
//   "COM1 is in use", "/dev/ttyS0 is in use by PROGRAM (PID)" where the owner can be told, or as `Reason` has
//   it with the group that may use the port.
std::string PortRefusal(const std::string& name, const std::error_code& error);
// Whether two names open one port: on Windows "COM1", "com1" and "\\\\.\\COM1" do, elsewhere a device and a
// link to it. False when one is empty.
bool IsSamePort(const std::string& one, const std::string& other);

}  // namespace vexa
