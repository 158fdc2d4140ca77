// The receiver's commands, with the simulated receiver on a pseudo-terminal where the system has them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <thread>

#include "core/bin_file.h"
#include "loader/run.h"
#include "platform/serial.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"
#include "tests/support/run_vexa.h"

namespace vexa {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class ReceiverCommands : public testing::Test {
 protected:
  std::string Place(const std::string& name) {
    return Utf8FromPath(recorder_.context.temporary_folder / name);
  }
  std::string PutDatabase() {
    std::mt19937 random(7);
    Document document = NewDocument();
    document.sdbs[0].database = MakeRandomDatabase(random, RandomShape{});
    EXPECT_TRUE(SaveBin(recorder_.context, document, PathFromUtf8(Place("list.bin"))));
    return Place("list.bin");
  }
  // False where there are no pseudo-terminals.
  bool StartReceiver(const LoaderFaults& faults = {}) {
    terminal_ = OpenPseudoTerminal(PathFromUtf8(Place("line")));
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
  Recorder recorder_;
  std::unique_ptr<PseudoTerminal> terminal_;
  Receiver receiver_;
  std::atomic<bool> stop_{false}, heard_{false};
  std::thread loader_;
};

TEST_F(ReceiverCommands, APortThatIsNotThereIsToldWithThoseThatAre) {
  const std::string file = PutDatabase(), none = Place("no-port");
  const std::string library = "error: Port is not available.\n",
                    frame = "error: Can't open port.\nPort may be opened by another application.\n";
  struct Row {
    std::vector<std::string> arguments;
    std::string errors;
  };
  const Row rows[] = {{{"upload", "adb", file}, library + frame},
                      {{"upload", "sdb", file}, library + frame},
                      {{"upload", "urt", file}, library},
                      {{"download", "-o", Place("out.bin")}, library + frame}};
  for (Row row : rows) {
    row.arguments.insert(row.arguments.end(), {"--port", none});
    const ProgramResult result = RunVexa(row.arguments);
    EXPECT_EQ(result.status, 1) << row.arguments[1];
    EXPECT_THAT(result.errors, StartsWith(row.errors + "info: ")) << row.arguments[1];
    for (const SerialPortInfo& port : ListSerialPorts()) EXPECT_THAT(result.errors, HasSubstr(port.name));
  }
  EXPECT_FALSE(std::filesystem::exists(PathFromUtf8(Place("out.bin"))));
}

TEST_F(ReceiverCommands, ADatabaseGoesAndComesBackAndATraceTellsOfIt) {
  if (!StartReceiver()) GTEST_SKIP() << "no pseudo-terminals on this system";
  const std::string file = PutDatabase(), line = Place("line"), trace = Place("trace");
  const ProgramResult up =
      RunVexa({"upload", "adb", file, "--port", line, "--select", "0/0/1", "--trace", trace});
  ASSERT_EQ(up.status, 0) << up.errors;
  EXPECT_EQ(up.errors,
            "Receiver not connected.\nWait...\nADB upload inprogress.\nADB upload completed.\n"
            "User Box Info upload inprogress.\nUser Box Info upload completed.\n");
  const Bytes traced = ReadWholeFile(PathFromUtf8(trace)).value_or(Bytes{});
  const std::string text(traced.begin(), traced.end());
  EXPECT_THAT(text, HasSubstr("PC>  02 44 46 55 20 0A "));
  EXPECT_THAT(text, HasSubstr("STB> 11 "));
  const ProgramResult down =
      RunVexa({"download", "-o", Place("back.bin"), "--port", line, "--select", "0/0/1"});
  ASSERT_EQ(down.status, 0) << down.errors;
  EXPECT_THAT(down.errors, HasSubstr("CRC Verification - Success"));
  ASSERT_EQ(RunVexa({"adb", "build", file, "-o", Place("images"), "--select", "0/0/1"}).status, 0);
  ASSERT_EQ(
      RunVexa({"adb", "decode", Place("images"), "-o", Place("direct.bin"), "--select", "0/0/1"}).status, 0);
  EXPECT_EQ(ReadWholeFile(PathFromUtf8(Place("back.bin"))), ReadWholeFile(PathFromUtf8(Place("direct.bin"))));
}

TEST_F(ReceiverCommands, ATransferThatCannotGoOnEndsWithItsReason) {
  LoaderFaults faults;
  faults.silence = 1;
  if (!StartReceiver(faults)) GTEST_SKIP() << "no pseudo-terminals on this system";
  const std::string file = PutDatabase(), line = Place("line");
  // The port is free again each time, or the next would not open it.
  PutFile(PathFromUtf8(Place("bad.urt")), BytesOf("no such file"));
  ProgramResult result = RunVexa({"upload", "urt", Place("bad.urt"), "--port", line});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("   Problem : Magic ID not found\n"));
  EXPECT_EQ(result.errors.find("Terminated"), std::string::npos);
  result = RunVexa({"upload", "sdb", file, "--port", line, "--timeout", "0.4"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("error: The transfer made no progress for 0.4 seconds."));
  for (const char* what : {"urt", "adb"}) {
    heard_ = false;
    std::thread user([this] {
      while (!heard_) std::this_thread::sleep_for(std::chrono::milliseconds(5));
      std::raise(SIGINT);
    });
    result = RunVexa({"upload", what, file, "--port", line});
    user.join();
    EXPECT_EQ(result.status, 1) << what;
    EXPECT_EQ(result.errors.find("Terminated by user") != std::string::npos, std::string(what) == "urt");
  }
}

TEST_F(ReceiverCommands, AnUnpluggedPortEndsTheTransferWithOneMessage) {
  auto terminal = OpenPseudoTerminal(PathFromUtf8(Place("line")));
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  std::thread user([&] {
    Bytes heard(1);
    while (terminal->Read(heard, 100) == 0) {
    }
    terminal.reset();
  });
  const ProgramResult result = RunVexa({"upload", "adb", PutDatabase(), "--port", Place("line")});
  user.join();
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors, "Receiver not connected.\nerror: " + Place("line") +
                               " is not available any more.\nThe transfer was ended.\n");
}

}  // namespace
}  // namespace vexa
