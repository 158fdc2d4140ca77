#include "serial/port.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tests/serial/fake_comm.h"
#include "tests/serial/shared_messages.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Strings = std::vector<std::string>;

struct PortRig {
  FakeComm comm;
  SharedMessages shown;
  Port port;
  std::mutex lock;
  std::vector<Bytes> chunks;
  std::condition_variable arrived;

  PortRig() {
    port.api = &comm.api;
    port.messages = shown.messages();
  }
  ~PortRig() {
    comm.Fail({});
    StopThread(port);
    ClosePort(port);
  }
  bool Open() {
    BuildPortDcb(port, ProjectConfig{});
    return OpenPort(port, "COM1");
  }
  bool Start() {
    return StartReaderThread(port, [this](std::span<uint8_t> bytes) {
      const std::lock_guard hold(lock);
      chunks.emplace_back(bytes.begin(), bytes.end());
      arrived.notify_all();
    });
  }
  std::vector<size_t> AwaitSizes(size_t count) {
    std::unique_lock hold(lock);
    arrived.wait_for(hold, std::chrono::seconds(5), [&] { return chunks.size() >= count; });
    std::vector<size_t> sizes;
    for (const Bytes& chunk : chunks) sizes.push_back(chunk.size());
    return sizes;
  }
};

TEST(Port, TheSettingsBecomeTheControlBlock) {
  struct Row {
    const char* name;
    uint8_t baud, data, parity, stop;
    uint32_t rate;
    uint8_t size, api_parity, api_stop;
  };
  const Row rows[] = {{"defaults", 12, 4, 0, 0, 115200, 8, 0, 0},
                      {"even", 0, 3, 1, 1, 110, 7, 2, 1},
                      {"odd", 10, 0, 2, 2, 56000, 4, 1, 2},
                      {"mark", 13, 1, 3, 0, 128000, 5, 3, 0},
                      {"space", 14, 2, 4, 0, 256000, 6, 4, 0}};
  for (const Row& row : rows) {
    Port port;
    ProjectConfig config;
    config.baud_index = row.baud;
    config.data_bits_index = row.data;
    config.parity_index = row.parity;
    config.stop_bits_index = row.stop;
    BuildPortDcb(port, config);
    const PortDcb& dcb = port.dcb;
    EXPECT_EQ(dcb.baud_rate, row.rate) << row.name;
    EXPECT_EQ(dcb.byte_size, row.size) << row.name;
    EXPECT_EQ(dcb.parity, row.api_parity) << row.name;
    EXPECT_EQ(dcb.stop_bits, row.api_stop) << row.name;
    EXPECT_TRUE(dcb.parity_check && !dcb.binary && dcb.dtr_control == 1 && dcb.rts_control == 0) << row.name;
    EXPECT_FALSE(dcb.out_x || dcb.in_x || dcb.cts_flow || dcb.dsr_flow) << row.name;
    EXPECT_EQ(dcb.xon_char, 0x11);
    EXPECT_EQ(dcb.xoff_char, 0x13);
    EXPECT_EQ(dcb.length, 28u);
  }
}

TEST(Port, EveryFailureHasItsMessageAndOnlyAMissingPortStopsTheOpening) {
  struct Row {
    const char* operation;
    bool opens;
    Strings texts;
  };
  const Row rows[] = {{"create_file", false, {"Port is not available."}},
                      {"create_event 1", true, {"CreateEvent (Thread exit event)"}},
                      {"get_timeouts", true, {"Error - GetCommTimeouts"}},
                      {"set_state", true, {"Error - SetCommState."}},
                      {"set_timeouts", true, {"Error - SetCommTimeouts."}},
                      {"setup_queues", true, {}},
                      {"raise_dtr", true, {"Error - EscapeCommFunction"}}};
  for (const Row& row : rows) {
    PortRig rig;
    rig.comm.failing = {row.operation};
    EXPECT_EQ(rig.Open(), row.opens) << row.operation;
    EXPECT_EQ(rig.shown.Texts(), row.texts) << row.operation;
    for (const Message& message : rig.shown.All()) {
      EXPECT_EQ(message.title, "Serial Comm lib");
      EXPECT_EQ(message.icon, Icon::kStop);
      EXPECT_EQ(message.detail,
                Reason(row.opens ? Attempt::kUsePort : Attempt::kOpenPort, rig.port.name, rig.comm.error));
    }
  }
}

TEST(Port, ThePlatformDecidesHowIsWritten) {
  struct Row {
    SerialPlatform platform;
    bool opens, plain;
  };
  const Row rows[] = {{SerialPlatform::kUnknown, false, true},
                      {SerialPlatform::kWin32s, false, true},
                      {SerialPlatform::kWindows9x, true, true},
                      {SerialPlatform::kWindowsNt, true, false},
                      {SerialPlatform::kOther, true, true}};
  for (const Row& row : rows) {
    PortRig rig;
    rig.comm.platform = row.platform;
    EXPECT_EQ(rig.Open(), row.opens);
    EXPECT_EQ(rig.port.plain_writes, row.plain);
    EXPECT_TRUE(rig.shown.Texts().empty());  // a refusal is silent
  }
}

TEST(Port, TheReaderTellsItsFailuresAndGoesOn) {
  struct Row {
    const char* operation;
    const char* text;
    Icon icon = Icon::kStop;
  };
  const Row rows[] = {{"create_event 2", "Error - CreateEvent ( Reader Event )", Icon::kNone},
                      {"create_event 3", "Error - CreateEvent ( Status Event )"},
                      {"set_mask", "Error - SetCommMask"},
                      {"wait_event", "Error - WaitCommEvent"},
                      {"wait", "Error - WaitForMultipleObjects(Reader & Status handles)"},
                      {"clear_error", "ClearCommError"},
                      {"modem_status", "GetCommModemStatus"}};
  for (const Row& row : rows) {
    PortRig rig;
    ASSERT_TRUE(rig.Open());
    rig.comm.failing = {row.operation};
    ASSERT_TRUE(rig.Start());
    EXPECT_TRUE(rig.shown.Await(row.text)) << row.operation;
    EXPECT_EQ(rig.shown.All()[0].icon, row.icon) << row.operation;
    EXPECT_TRUE(StopThread(rig.port)) << row.operation;
  }
  PortRig rig;
  ASSERT_TRUE(rig.Open());
  rig.comm.failing = {"start_thread"};
  EXPECT_FALSE(rig.Start());
  EXPECT_EQ(rig.shown.Texts(), Strings{"Error in CreateThread(Reader/Status)"});
}

// A driver that refuses the wait for line events delivers bytes all the same.
TEST(Port, WhatIsReceivedCountsWithoutLineEvents) {
  PortRig rig;
  ASSERT_TRUE(rig.Open());
  rig.comm.failing = {"wait_event"};
  ASSERT_TRUE(rig.Start());
  ASSERT_TRUE(rig.shown.Await("Error - WaitCommEvent"));
  ASSERT_TRUE(rig.comm.AwaitCount("read", 1));
  rig.comm.Feed(Bytes{1, 2, 3});
  EXPECT_EQ(rig.AwaitSizes(1), std::vector<size_t>{3});
  EXPECT_TRUE(StopThread(rig.port));
}

TEST(Port, AChunkOf2049BytesComesAs2048And1) {
  PortRig rig;
  ASSERT_TRUE(rig.Open() && rig.Start());
  ASSERT_TRUE(rig.comm.AwaitCount("read", 1));
  Bytes bytes(2049);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(i * 7);
  rig.comm.Feed(bytes);
  EXPECT_EQ(rig.AwaitSizes(2), (std::vector<size_t>{2048, 1}));
  Bytes joined = rig.chunks[0];
  joined.insert(joined.end(), rig.chunks[1].begin(), rig.chunks[1].end());
  EXPECT_EQ(joined, bytes);
}

TEST(Port, AFailedReadCountsAsOutstandingAndTheReaderStillStops) {
  PortRig rig;
  ASSERT_TRUE(rig.Open());
  rig.comm.failing = {"read"};
  ASSERT_TRUE(rig.Start());
  ASSERT_TRUE(rig.comm.AwaitCount("clear_error", 3));  // looked at the line twice when idle
  EXPECT_EQ(rig.comm.Count("read"), 1);
  EXPECT_TRUE(rig.shown.Texts().empty());
  EXPECT_TRUE(StopThread(rig.port));
}

TEST(Port, LineEventsAreWordedAndShowNothing) {
  EXPECT_EQ(CommEventText(0), "EVENT: NULL\n");
  EXPECT_EQ(CommEventText(0x1FF), "EVENT: CTS DSR ERR RING RLSD BREAK RXFLAG RXCHAR TXEMPTY \n");
  EXPECT_EQ(CommErrorText(0), "ERROR: \n");
  EXPECT_EQ(CommErrorText(0xFFFF),
            "ERROR: DNS IOE OOP PTO MODE BREAK FRAME RXOVER TXFULL OVERRUN RXPARITY \n");
  PortRig rig;
  SharedMessages lines;
  rig.port.status = [&](const std::string& line) { lines.messages().tell({Icon::kNone, line, "", ""}); };
  ASSERT_TRUE(rig.Open() && rig.Start());
  ASSERT_TRUE(rig.comm.AwaitCount("wait", 1));
  rig.comm.RaiseEvent(kEventError | kEventBreak);
  EXPECT_TRUE(lines.Await("ERROR: \n"));
  EXPECT_EQ(lines.Texts(), (Strings{"EVENT: ERR BREAK \n", "ERROR: \n"}));
  EXPECT_TRUE(rig.shown.Texts().empty());
}

TEST(Port, EveryEndOfAnOverlappedWrite) {
  struct Row {
    const char* name;
    WriteMode mode;
    size_t written, later;  // of ten bytes; of a pending write afterwards
    Strings texts;
  };
  const Row rows[] = {
      {"done", WriteMode::kDone, 10, 10, {}},
      {"short at once", WriteMode::kShort, 5, 0, {}},
      {"failed", WriteMode::kFail, 0, 10, {"WriteFile (in Writer)"}},
      {"pending", WriteMode::kPending, 10, 10, {}},
      {"pending, short", WriteMode::kPendingShort, 5, 10, {"Error writing data to port (overlapped)"}},
      {"pending, aborted", WriteMode::kPendingAborted, 0, 0, {"Error writing data to port (overlapped)"}},
      {"pending, failed",
       WriteMode::kPendingFailed,
       0,
       10,
       {"GetOverlappedResult(in Writer)", "Error writing data to port (overlapped)"}},
  };
  const Bytes ten = BytesOf("0123456789");
  for (const Row& row : rows) {
    PortRig rig;
    ASSERT_TRUE(rig.Open());
    rig.comm.write_mode = row.mode;
    EXPECT_EQ(WritePort(rig.port, ten), row.written) << row.name;
    EXPECT_EQ(rig.shown.Texts(), row.texts) << row.name;
    // A signalled exit event makes every later pending write give up until the port is closed.
    rig.comm.write_mode = row.later == 10 ? WriteMode::kPending : WriteMode::kNever;
    EXPECT_EQ(WritePort(rig.port, ten), row.later) << row.name;
    EXPECT_TRUE(ClosePort(rig.port));
    EXPECT_EQ(WritePort(rig.port, ten), 0u);
    ASSERT_TRUE(rig.Open());
    rig.comm.write_mode = WriteMode::kPending;
    EXPECT_EQ(WritePort(rig.port, ten), 10u) << row.name;
  }
}

TEST(Port, FailuresAroundAPendingWrite) {
  const Bytes ten = BytesOf("0123456789");
  PortRig rig;
  ASSERT_TRUE(rig.Open());
  rig.comm.write_mode = WriteMode::kPending;
  rig.comm.failing = {"wait"};
  EXPECT_EQ(WritePort(rig.port, ten), 0u);
  EXPECT_EQ(rig.shown.Texts(), Strings{"WaitForMultipleObjects (WriterGeneric)"});
  rig.comm.failing = {"create_event"};
  rig.comm.write_mode = WriteMode::kDone;
  EXPECT_EQ(WritePort(rig.port, ten), 10u);
  EXPECT_EQ(rig.shown.Texts(), Strings{"CreateEvent (overlapped write hEvent)"});
}

TEST(Port, AbandoningEndsAWriteThatHangs) {
  PortRig rig;
  ASSERT_TRUE(rig.Open());
  rig.comm.write_mode = WriteMode::kNever;
  std::thread ender([&] {
    rig.comm.AwaitCount("wait", 1);
    AbandonWrites(rig.port);
  });
  EXPECT_EQ(WritePort(rig.port, BytesOf("0123456789")), 0u);
  ender.join();
  EXPECT_TRUE(rig.shown.Texts().empty());
}

TEST(Port, AFailedCloseKeepsThePort) {
  PortRig rig;
  ASSERT_TRUE(rig.Open());
  rig.comm.failing = {"close_file"};
  EXPECT_FALSE(ClosePort(rig.port));
  EXPECT_EQ(WritePort(rig.port, BytesOf("x")), 1u);
  rig.comm.failing.clear();
  EXPECT_TRUE(ClosePort(rig.port));
}

}  // namespace
}  // namespace vexa
