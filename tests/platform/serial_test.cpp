// The system's serial ports, on a pseudo-terminal where there is one: what the line is set to, and which
// names open one port.
#include "platform/serial.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>

#include "platform/pseudo_terminal.h"
#include "tests/support/recorder.h"

#if !defined(_WIN32)
#include <fcntl.h>
#include <stdarg.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <termios.h>
#include <unistd.h>

namespace {
int modem_error = 0;             // what asking for a port's modem lines fails with; 0: not at all
std::optional<int> modem_lines;  // of every port; nothing: the system's own answer
}  // namespace

// The system's, but for ports with modem lines, which no pseudo-terminal has.
extern "C" int ioctl(int file, unsigned long request, ...) noexcept {
  va_list more;
  va_start(more, request);
  void* const argument = va_arg(more, void*);
  va_end(more);
  if (!modem_lines || (request != TIOCMGET && request != TIOCMBIS))
    return static_cast<int>(syscall(SYS_ioctl, file, request, argument));
  int& lines = *static_cast<int*>(argument);
  if (request == TIOCMGET) lines = *modem_lines;
  if (request == TIOCMBIS) *modem_lines |= lines;
  errno = modem_error;
  return modem_error == 0 ? 0 : -1;
}
#endif

namespace vexa {
namespace {

#if !defined(_WIN32)

termios LineStateOf(const std::string& terminal) {
  termios state{};
  const int file = open(terminal.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  EXPECT_EQ(tcgetattr(file, &state), 0);
  close(file);
  return state;
}

// What the kernel keeps of a line: its flags and special bytes, and the speeds of both directions last.
std::array<uint32_t, 11> KernelStateOf(const std::string& terminal) {
  std::array<uint32_t, 11> state{};
  const int file = open(terminal.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  EXPECT_EQ(ioctl(file, _IOR('T', 0x2A, uint32_t[11]), state.data()), 0);
  close(file);
  return state;
}

// A pseudo-terminal keeps the flags that its line has no use for, but drops PARENB and the number of bits.
TEST(SerialPorts, TheLineIsSetAsTheControlBlockSays) {
  const auto terminal = OpenPseudoTerminal({}).value;
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  const CommApi& api = SystemCommApi();
  const SerialDevicePtr port = api.create_file(terminal->path).value;
  ASSERT_TRUE(port);
  struct Row {
    const char* name;
    uint32_t baud;
    uint8_t size, parity, stop;
    bool works;
    tcflag_t flags;
    speed_t speed;
  };
  constexpr tcflag_t kFlags = CSTOPB | PARODD | CMSPAR | CRTSCTS | CREAD | CLOCAL, kBase = CREAD | CLOCAL;
  const Row rows[] = {
      {"plain", 9600, 8, kNoParity, kOneStopBit, true, kBase, B9600},
      {"odd, two stop bits", 115200, 7, kOddParity, kTwoStopBits, true, kBase | PARODD | CSTOPB, B115200},
      {"even", 300, 7, kEvenParity, kOneStopBit, true, kBase, B300},
      {"mark", 57600, 8, kMarkParity, kTwoStopBits, true, kBase | PARODD | CMSPAR | CSTOPB, B57600},
      {"space", 110, 5, kSpaceParity, kOneStopBit, true, kBase | CMSPAR, B110},
      {"four bits", 9600, 4, kNoParity, kOneStopBit, false, kBase | CMSPAR, B110},
      {"nine bits", 9600, 9, kNoParity, kOneStopBit, false, kBase | CMSPAR, B110},
      {"one and a half stop bits", 9600, 5, kNoParity, kOne5StopBits, false, kBase | CMSPAR, B110},
      {"plain again", 38400, 8, kNoParity, kOneStopBit, true, kBase, B38400}};
  for (const Row& row : rows) {
    PortDcb dcb;
    dcb.baud_rate = row.baud;
    dcb.byte_size = row.size;
    dcb.parity = row.parity;
    dcb.stop_bits = row.stop;
    EXPECT_EQ(api.set_state(port, dcb).done, row.works) << row.name;
    const termios state = LineStateOf(terminal->path);
    EXPECT_EQ(state.c_cflag & kFlags, row.flags) << row.name;
    EXPECT_EQ(cfgetospeed(&state), row.speed) << row.name;
    EXPECT_EQ(state.c_lflag & (ICANON | ECHO | ISIG), 0u) << row.name;
    EXPECT_EQ(state.c_iflag & (ICRNL | IXON | IXOFF), 0u) << row.name;
  }
  PortDcb dcb;
  dcb.baud_rate = 123456;  // of no table
  dcb.byte_size = 8;
  EXPECT_TRUE(api.set_state(port, dcb));
  const auto state = KernelStateOf(terminal->path);
  EXPECT_EQ(state[9], 123456u);
  EXPECT_EQ(state[10], 123456u);
}

TEST(SerialPorts, ModemLinesAreToldAndRaised) {
  const auto terminal = OpenPseudoTerminal({}).value;
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  const CommApi& api = SystemCommApi();
  const SerialDevicePtr port = api.create_file(terminal->path).value;
  ASSERT_TRUE(port);
  uint32_t told = 0;
  const std::pair<int, uint32_t> rows[] = {
      {TIOCM_CTS, 0x10}, {TIOCM_DSR, 0x20}, {TIOCM_RNG, 0x40}, {TIOCM_CAR, 0x80}, {TIOCM_RTS, 0}};
  for (const auto& [line, expected] : rows) {
    modem_lines = line;
    EXPECT_TRUE(api.modem_status(port, told));
    EXPECT_EQ(told, expected) << line;
  }
  EXPECT_TRUE(api.raise_dtr(port));
  EXPECT_EQ(modem_lines, TIOCM_RTS | TIOCM_DTR);
  for (const auto& [error, borne] : {std::pair(ENOTTY, true), {EINVAL, true}, {EIO, false}}) {
    modem_error = error;
    EXPECT_EQ(api.modem_status(port, told).done, borne) << error;
    EXPECT_EQ(api.raise_dtr(port).done, borne) << error;
  }
  modem_error = 0;
  modem_lines.reset();
}

TEST(SerialPorts, BytesCrossBothWaysAndAnUnpluggedPortIsSeen) {
  auto terminal = OpenPseudoTerminal({}).value;
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  const CommApi& api = SystemCommApi();
  const SerialDevicePtr port = api.create_file(terminal->path).value;
  ASSERT_TRUE(port);
  EXPECT_FALSE(api.create_file(terminal->path)) << "a port has one user";
  Bytes buffer(8);
  size_t count = 99;
  Overlapped reading;
  reading.event = api.create_event(true, false).value;
  EXPECT_EQ(api.read(port, buffer, count, reading), IoResult::kPending);
  const SerialEventPtr events[] = {api.create_event(false, false).value, reading.event};
  EXPECT_EQ(api.wait(events, 1), kWaitTimeout);
  EXPECT_EQ(api.result(port, reading, count), IoResult::kPending);
  terminal->Write(BytesOf("abc"));
  EXPECT_EQ(api.wait(events, 5000), 1);
  EXPECT_EQ(api.result(port, reading, count), IoResult::kDone);
  ASSERT_EQ(count, 3u);
  EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 3), BytesOf("abc"));
  // An event that is taken by its wait is signalled once.
  api.set_event(events[0]);
  EXPECT_EQ(api.wait(events, 1), 0);
  EXPECT_EQ(api.wait(events, 1), 1);
  api.reset_event(reading.event);
  EXPECT_EQ(api.wait(events, 1), kWaitTimeout);

  terminal->Write(BytesOf("late"));
  CommStatus status;
  for (int i = 0; i < 500 && status.in_queue == 0; ++i) {
    EXPECT_TRUE(api.clear_error(port, status));
    usleep(1000);
  }
  EXPECT_EQ(status.in_queue, 4u);
  EXPECT_TRUE(api.purge(port, kPurgeReceive));
  EXPECT_TRUE(api.clear_error(port, status));
  EXPECT_EQ(status.in_queue, 0u);

  // Writes end when all is written; one that the line does not take can be given up.
  EXPECT_EQ(api.write(port, BytesOf("xyz"), count, nullptr), IoResult::kDone);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(terminal->Read(buffer, 1000), 3u);
  const Bytes much(1 << 20, 'm');
  Overlapped writing;
  writing.event = api.create_event(false, false).value;
  EXPECT_EQ(api.write(port, much, count, &writing), IoResult::kPending);
  api.cancel(port, writing);
  EXPECT_EQ(api.result(port, writing, count), IoResult::kFailed) << "nothing is under way";

  uint32_t lines = 99;
  EXPECT_TRUE(api.modem_status(port, lines) && lines == 0 && api.raise_dtr(port)) << "without such lines";
  terminal.reset();
  EXPECT_FALSE(api.clear_error(port, status));
  const IoResult gone = api.read(port, buffer, count, reading);
  EXPECT_EQ(gone, IoResult::kFailed);
  EXPECT_EQ(CauseOf(gone.error), Cause::kGone);
  EXPECT_TRUE(api.close_file(port));
  EXPECT_FALSE(api.close_file(port));
}

TEST(SerialPorts, ALinkIsThePortThatItLeadsTo) {
  Recorder recorder;
  const Path link = recorder.context.temporary_folder / "line";
  const auto terminal = OpenPseudoTerminal(link).value;
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  EXPECT_TRUE(IsSamePort(terminal->path, Utf8FromPath(link)));
  EXPECT_FALSE(IsSamePort(terminal->path, "/dev/null"));
  EXPECT_FALSE(IsSamePort("COM1", "com1"));
}

#else

TEST(SerialPorts, APortHasManySpellings) {
  EXPECT_TRUE(IsSamePort("\\\\.\\COM7", "com7"));
  EXPECT_FALSE(IsSamePort("COM7", "COM8"));
}

#endif

TEST(SerialPorts, ANameIsItselfAndNoNameIsNoPort) {
  EXPECT_TRUE(IsSamePort("COM7", "COM7"));
  EXPECT_FALSE(IsSamePort("", ""));
  EXPECT_FALSE(IsSamePort("COM7", ""));
}

}  // namespace
}  // namespace vexa
