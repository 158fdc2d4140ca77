// The serial port library: owns one RS-232 port at a time. It opens and configures the port, runs a reader
// thread that hands every received chunk to a callback, writes blocks (overlapped where the system can), and
// closes.
//
//   Closed --OpenPort--> Open --StartReaderThread--> Reading --StopThread, ClosePort--> Closed
//
// All failures are told with the title "Serial Comm lib" and the stop icon; apart from a port that cannot be
// opened the library goes on after each. `Messages` must bear calls from the reader's and the writers'
// threads. WritePort may be called from any thread; the rest belongs to one thread.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <thread>

#include "config/project_config.h"
#include "core/messages.h"
#include "platform/serial.h"

namespace vexa {

inline constexpr size_t kReadSize = 2048;     // bytes, the most that one callback gets
inline constexpr uint32_t kQueueSize = 3000;  // bytes in the driver, each way
inline constexpr uint32_t kPortEventMask =
    kEventCts | kEventDsr | kEventRlsd | kEventBreak | kEventError | kEventRing;
inline constexpr uint32_t kIdleWait = 500;  // ms between looks at the line's status
// How long a thread may take to end that was asked to. Then the driver is told to let go, and it has as long
// again.
inline constexpr std::chrono::milliseconds kAnswerTime{2000};

// Called on the reader's thread with 1 to kReadSize bytes, valid during the call.
using ReceiveCallback = std::function<void(std::span<uint8_t> bytes)>;
// Every byte that crossed the line, for a trace; called on the thread that moved it.
using LineTap = std::function<void(bool sent, std::span<const uint8_t> bytes)>;

struct PortReader;  // the reader thread's own state

struct Port {
  const CommApi* api = &SystemCommApi();
  Messages messages;
  LineTap tap;                                          // may be empty
  std::function<void(const std::string& line)> status;  // line events in words; may be empty
  PortDcb dcb;
  CommTimeouts saved_timeouts, timeouts;
  uint32_t event_mask = 0;
  bool plain_writes = true;   // synchronous
  std::string name;           // with which it was opened last
  std::string refusal;        // why that failed, for the user in one line; empty when it did not
  SerialDevicePtr device;     // null: closed
  SerialEventPtr exit_event;  // signalled: pending writes give up, until the port is closed
  std::shared_ptr<PortReader> reader;
};

// Sets `port.dcb` to the configuration's line settings, without flow control. An index beyond its list leaves
// what stands there.
void BuildPortDcb(Port& port, const ProjectConfig& config);
// Bytes a second that the line carries with these settings; 0: not known.
double BytesPerSecond(const PortDcb& dcb);
// Opens the port with the settings that BuildPortDcb made; `name` as the system has it ("COM1", a path),
// UTF-8. False after "Port is not available.", and silently on a system that cannot. All messages
// of the port bear its name and the system's reason as their detail.
bool OpenPort(Port& port, const std::string& name);
// Hands line settings and time-outs to the open port. Each failure is told and passed over.
void ApplyPortState(Port& port);
// Hands what arrives at the open port to `callback` from now on. False after a message: no thread could be
// made.
bool StartReaderThread(Port& port, ReceiveCallback callback);
// The number of bytes written; 0 when the write was given up. Of a closed port: 0.
size_t WritePort(Port& port, std::span<const uint8_t> bytes);
// Forgets what was received and not handed to the callback yet. Failures are silent.
void PurgeReceived(Port& port);
// Pending writes and all later ones that do not complete at once return 0.
void AbandonWrites(Port& port);
// Waits for a thread that was asked to end. `wait`: true once it has, false when the time is over before.
// False when it does not answer: it hangs in the driver, whatever it uses must stay, and so must the port,
// whose handle it may come back to.
bool AwaitEnd(const Port& port, const std::function<bool(std::chrono::milliseconds)>& wait);
// Tells that a thread did not answer; `port` is the port's name.
void TellNoAnswer(const Messages& messages, const std::string& port);
// Asks the reader to stop and waits for it. False when it does not answer: it is left behind, and calls
// nothing of its owner's any more. True without a reader.
bool StopThread(Port& port);
// Not done when the port's handle did not close.
Outcome ClosePort(Port& port);
// Whether an open port was unplugged. The port itself is asked: a failed call alone may pass.
bool IsPortGone(const Port& port);
// Of a port that is gone: its name, what the system says about it, and what to do.
std::string GoneReason(const Port& port);
// For `messages`: a failure may repeat with every write and twice a second, so each text is told once; of a
// port that is gone nothing is told, `gone` is set instead. Both must outlive the port's threads.
Messages WatchedPortMessages(const Port& port, std::atomic<bool>& gone, const Messages& messages);
// False: refuse to open. Sets `plain_writes`.
bool DetectPlatform(Port& port);

// "EVENT: CTS DSR \n" and "ERROR: BREAK \n" for the status line.
std::string CommEventText(uint32_t mask);
std::string CommErrorText(uint32_t errors);

}  // namespace vexa
