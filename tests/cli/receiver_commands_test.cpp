// The receiver's commands, with the simulated receiver on a pseudo-terminal where the system has them.
#include <atomic>
#include <csignal>
#include <thread>

#include "loader/run.h"
#include "platform/serial.h"
#include "tests/cli/cli_test.h"

namespace vexa {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

#ifdef SIGHUP
constexpr int kHangUp = SIGHUP;
#else
constexpr int kHangUp = SIGBREAK;
#endif

class ReceiverCommands : public CliTest {
 protected:
  ReceiverCommands() {
    std::mt19937 random(7);
    Document document = NewDocument();
    document.sdbs[0].database = MakeRandomDatabase(random, RandomShape{});
    Save(document, "list.bin");
  }
  // False where there are no pseudo-terminals.
  bool StartReceiver(const LoaderFaults& faults = {}) {
    terminal_ = OpenPseudoTerminal(At("line"));
    if (!terminal_) return false;
    receiver_ = MakeReceiver(faults, {});
    LoaderRun run;
    run.stop = [this] { return stop_.load(); };
    run.tap = [this](bool from_pc, std::span<const uint8_t>) {
      if (from_pc) heard_ = true;
    };
    loader_ = std::thread([this, run] { RunReceiver(receiver_, *terminal_, run); });
    return true;
  }
  ~ReceiverCommands() override {
    stop_ = true;
    if (loader_.joinable()) loader_.join();
  }
  std::unique_ptr<PseudoTerminal> terminal_;
  Receiver receiver_;
  std::atomic<bool> stop_{false}, heard_{false};
  std::thread loader_;
};

TEST_F(ReceiverCommands, APortThatIsNotThereIsToldWithThoseThatAre) {
  const std::string library = "error: Port is not available.\n",
                    frame = "error: Can't open port.\nPort may be opened by another application.\n";
  const std::pair<std::string, std::string> rows[] = {{"upload adb @list.bin", library + frame},
                                                      {"upload sdb @list.bin", library + frame},
                                                      {"upload urt @list.bin", library},
                                                      {"download -o @out.bin", library + frame}};
  for (const auto& [line, errors] : rows) {
    const ProgramResult result = Vexa(line + " --port @no-port");
    EXPECT_EQ(result.status, 1) << line;
    EXPECT_THAT(result.errors, StartsWith(errors + "info: ")) << line;
    for (const SerialPortInfo& port : ListSerialPorts()) EXPECT_THAT(result.errors, HasSubstr(port.name));
  }
  EXPECT_FALSE(Exists("out.bin"));
}

TEST_F(ReceiverCommands, ADatabaseGoesAndComesBackAndATraceTellsOfIt) {
  if (!StartReceiver()) GTEST_SKIP() << "no pseudo-terminals on this system";
  const ProgramResult up = Vexa("upload adb @list.bin --port @line --select 0/0/1 --trace @trace");
  ASSERT_EQ(up.status, 0) << up.errors;
  EXPECT_EQ(up.errors,
            "Receiver not connected.\nWait...\nADB upload inprogress.\nADB upload completed.\n"
            "User Box Info upload inprogress.\nUser Box Info upload completed.\n");
  const Bytes traced = Get("trace");
  const std::string text(traced.begin(), traced.end());
  EXPECT_THAT(text, HasSubstr("PC>  02 44 46 55 20 0A "));
  EXPECT_THAT(text, HasSubstr("STB> 11 "));
  const ProgramResult down = Vexa("download -o @back.bin --port @line --select 0/0/1");
  ASSERT_EQ(down.status, 0) << down.errors;
  EXPECT_THAT(down.errors, HasSubstr("CRC Verification - Success"));
  ASSERT_EQ(Vexa("adb build @list.bin -o @images --select 0/0/1").status, 0);
  ASSERT_EQ(Vexa("adb decode @images -o @direct.bin --select 0/0/1").status, 0);
  EXPECT_EQ(Get("back.bin"), Get("direct.bin"));
}

TEST_F(ReceiverCommands, ATransferThatCannotGoOnEndsWithItsReason) {
  LoaderFaults faults;
  faults.silence = 1;
  if (!StartReceiver(faults)) GTEST_SKIP() << "no pseudo-terminals on this system";
  // The port is free again each time, or the next would not open it.
  Put("bad.urt", "no such file");
  ProgramResult result = Vexa("upload urt @bad.urt --port @line");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("   Problem : Magic ID not found\n"));
  EXPECT_EQ(result.errors.find("Terminated"), std::string::npos);
  for (const std::string what : {"sdb", "urt"}) {
    result = Vexa("upload " + what + " @list.bin --port @line --timeout 0.4");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("error: The transfer made no progress for 0.4 seconds."));
    EXPECT_EQ(result.errors.find("Terminated"), std::string::npos);
  }
  const std::pair<std::string, int> ends[] = {{"urt", SIGINT}, {"adb", SIGTERM}, {"adb", kHangUp}};
  for (const auto& [what, signal] : ends) {
    heard_ = false;
    std::thread user([this, number = signal] {
      while (!heard_) std::this_thread::sleep_for(std::chrono::milliseconds(5));
      std::raise(number);
    });
    result = Vexa("upload " + what + " @list.bin --port @line");
    user.join();
    EXPECT_EQ(result.status, 1) << what;
    EXPECT_EQ(result.errors.find("Terminated by user") != std::string::npos, what == "urt");
  }
}

TEST_F(ReceiverCommands, AnUnpluggedPortEndsTheTransferWithOneMessage) {
  auto terminal = OpenPseudoTerminal(At("line"));
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  std::thread user([&] {
    Bytes heard(1);
    while (terminal->Read(heard, 100) == 0) {
    }
    terminal.reset();
  });
  const ProgramResult result = Vexa("upload adb @list.bin --port @line");
  user.join();
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "Receiver not connected.\nerror: " + In("line") +
                               " is not available any more.\nThe transfer was ended.\n");
}

}  // namespace
}  // namespace vexa
