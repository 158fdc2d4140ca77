// The receiver's commands, with the simulated receiver on a pseudo-terminal where the system has them.
#include <atomic>
#include <csignal>
#include <thread>

#include "image/line_frame.h"
#include "platform/serial.h"
#include "tests/cli/receiver_test.h"
#include "tests/support/ecf_maker.h"

namespace vexa {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

#ifdef SIGHUP
constexpr int kHangUp = SIGHUP;
#else
constexpr int kHangUp = SIGBREAK;
#endif

using ReceiverCommands = ReceiverTest;

TEST_F(ReceiverCommands, APortThatIsNotThereIsToldWithThoseThatAre) {
  const auto missing = SystemCommApi().create_file(In("no-port")).error;
  ASSERT_EQ(CauseOf(missing), Cause::kMissing);
  const std::string library =
                        "error: Port is not available.\ninfo: " + PortRefusal(In("no-port"), missing) + "\n",
                    frame = "error: Can't open port.\nPort may be opened by another application.\n",
                    state =
                        "info: Nothing was written, the receiver keeps what it had; try again when the "
                        "port can be opened.\n";
  const std::pair<std::string, std::string> rows[] = {{"upload adb @list.bin", library + frame},
                                                      {"upload sdb @list.bin", library + frame},
                                                      {"upload urt @list.bin", library},
                                                      {"download -o @out.bin", library + frame}};
  for (const auto& [line, errors] : rows) {
    const ProgramResult result = Vexa(line + " --port @no-port");
    EXPECT_EQ(result.status, 1) << line;
    EXPECT_THAT(result.errors, StartsWith(errors + state + "info: ")) << line;
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
  PutFile(At("image"), Bytes(2000));
  ASSERT_EQ(
      Vexa("urt build @image -o @image.urt --type 3 --kind 5 --flag 0 --name N --start 0 --end 2000").status,
      0);
  for (const std::string what : {"sdb @list.bin", "urt @image.urt"}) {
    result = Vexa("upload " + what + " --port @line --timeout 0.4");
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("error: The transfer made no progress for 0.4 seconds."));
    EXPECT_EQ(result.errors.find("Terminated"), std::string::npos);
  }
  const std::pair<std::string, int> ends[] = {{"urt", SIGINT}, {"adb", SIGTERM}, {"adb", kHangUp}};
  for (const auto& [what, signal] : ends) {
    heard_ = false;
    std::signal(signal, SIG_DFL);  // whoever started the tests may have had it ignored
    std::thread user([this, number = signal] {
      while (!heard_) std::this_thread::sleep_for(std::chrono::milliseconds(5));
      std::raise(number);
    });
    result = Vexa("upload " + what + " @list.bin --port @line");
    user.join();
    EXPECT_EQ(result.status, 1) << what;
    EXPECT_EQ(result.errors.find("Terminated by user") != std::string::npos, what == "urt");
    EXPECT_THAT(result.errors, HasSubstr("error: vexa upload " + what + " was interrupted"));
    EXPECT_THAT(result.errors, HasSubstr("the receiver "));
  }
}

TEST_F(ReceiverCommands, TheTimeOutCountsFromTheLastPacket) {
  LoaderFaults faults;
  faults.delay = 240;
  if (!StartReceiver(faults)) GTEST_SKIP() << "no pseudo-terminals on this system";
  PutFile(At("image"), Bytes(20000));
  ASSERT_EQ(
      Vexa("urt build @image -o @image.urt --type 3 --kind 5 --flag 0 --name N --start 0 --end 20000").status,
      0);
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Vexa("upload urt @image.urt --port @line --timeout 3").status, 0);
  EXPECT_GT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(3200));
}

TEST_F(ReceiverCommands, ADownloadWhoseCrcFailsMakesNoFile) {
  if (!StartReceiver()) GTEST_SKIP() << "no pseudo-terminals on this system";
  ASSERT_EQ(Vexa("upload adb @list.bin --port @line").status, 0);
  // Two bytes of a long frame change places, which its sum does not show.
  const CommApi& system = SystemCommApi();
  std::span<uint8_t> place;
  bool swapped = false;
  const auto swap = [&](IoResult result, size_t count) {
    for (size_t i = 100; result == IoResult::kDone && i + 100 < count && !swapped; ++i) {
      swapped = place[i] != place[i + 1];
      if (swapped) std::swap(place[i], place[i + 1]);
    }
    return result;
  };
  const void* reading = nullptr;
  line_of_ports.read = [&](const SerialDevicePtr& device, std::span<uint8_t> bytes, size_t& count,
                           Overlapped& overlapped) {
    place = bytes;
    reading = &overlapped;
    return swap(system.read(device, bytes, count, overlapped), count);
  };
  line_of_ports.result = [&](const SerialDevicePtr& device, Overlapped& overlapped, size_t& count) {
    const IoResult result = system.result(device, overlapped, count);
    return &overlapped == reading ? swap(result, count) : result;
  };
  const ProgramResult result = Vexa("download -o @out --port @line --timeout 20");
  EXPECT_TRUE(swapped);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("error: CRC Verification - failed \n Retry once again\n"));
  EXPECT_FALSE(Exists("out"));
}

TEST_F(ReceiverCommands, TheLineIsSetAsTheOptionsSay) {
  PortDcb seen;
  line_of_ports.create_file = [](const std::string&) { return std::make_shared<SerialDevice>(); };
  line_of_ports.close_file = line_of_ports.raise_dtr = [](const SerialDevicePtr&) { return true; };
  line_of_ports.get_timeouts = [](const SerialDevicePtr&, CommTimeouts&) { return true; };
  line_of_ports.set_timeouts = [](const SerialDevicePtr&, const CommTimeouts&) { return true; };
  line_of_ports.setup_queues = [](const SerialDevicePtr&, uint32_t, uint32_t) { return true; };
  line_of_ports.set_mask = line_of_ports.purge = [](const SerialDevicePtr&, uint32_t) { return true; };
  line_of_ports.clear_error = [](const SerialDevicePtr&, CommStatus&) { return true; };
  line_of_ports.set_state = [&](const SerialDevicePtr&, const PortDcb& dcb) {
    seen = dcb;
    return true;
  };
  // The transfer ends before it has begun.
  line_of_ports.start_thread = [](std::thread&, const std::function<void()>&) { return false; };
  line_of_ports.cancel = [](const SerialDevicePtr&, Overlapped&) {};
  line_of_ports.cancel_all = [](const SerialDevicePtr&) {};
  const std::tuple<const char*, uint8_t, uint8_t, uint8_t> rows[] = {
      {"", kNoParity, 8, kOneStopBit},
      {"--parity Even --stop-bits 2", kEvenParity, 8, kTwoStopBits},
      {"--parity Odd --data-bits 7", kOddParity, 7, kOneStopBit},
      {"--parity Mark --baud 300", kMarkParity, 8, kOneStopBit},
      {"--parity Space --stop-bits 1.5 --data-bits 5", kSpaceParity, 5, kOne5StopBits}};
  for (const auto& [options, parity, bits, stops] : rows) {
    Put("x.urt", "MZ");
    EXPECT_EQ(Vexa(std::string("upload urt @x.urt --port P ") + options).status, 1);
    EXPECT_EQ(std::tuple(seen.parity, seen.byte_size, seen.stop_bits), std::tuple(parity, bits, stops))
        << options;
    EXPECT_EQ(seen.baud_rate, parity == kMarkParity ? 300u : 115200u);
  }
}

TEST_F(ReceiverCommands, WhatCannotBeReadOrWrittenIsToldBeforeTheLine) {
  bool opened = false;
  line_of_ports.create_file = [&](const std::string&) -> Made<SerialDevicePtr> {
    opened = true;
    return nullptr;
  };
  const std::pair<std::string, std::string> rows[] = {
      {"upload urt @none.urt",
       "error: File access error - UploadURTPacketThread\ninfo: " + In("none.urt") + ": "},
      {"download -o @no/such/folder", "error: Could not creat file \"" + In("no/such/folder") + "\".\n"},
      {"download -o @out --trace @no/such/trace",
       "error: Could not creat file \"" + In("no/such/trace") + "\".\n"}};
  for (const auto& [line, text] : rows) {
    const ProgramResult result = Vexa(line + " --port P");
    EXPECT_EQ(result.status, 1) << line;
    EXPECT_THAT(result.errors, StartsWith(text));
  }
  EXPECT_FALSE(opened);
}

TEST_F(ReceiverCommands, SdbDataGoesToTheRegionThatIsNamed) {
  const auto region = [](const char* name, uint8_t type, uint32_t start) {
    return EcfRegionSpec{name, type, start, start + 0x40000};
  };
  EcfConfigurationSpec spec;
  spec.regions = {region("Application", 3, 0x100000), region("Other", 1, 0x200000),
                  region("Data", 4, 0x300000)};
  const uint8_t loader[8] = {0xF0, 0, 0xF5, 0, 64, 0, 0xA3, 0x0B};
  std::copy(loader, loader + 8, spec.loader);
  EcfProductSpec product;
  product.configurations = {spec};
  PutFile(At("test.ecf"), MakeEcf({{0x2A, {product}}}));
  if (!StartReceiver()) GTEST_SKIP() << "no pseudo-terminals on this system";
  const std::pair<std::string, uint32_t> rows[] = {
      {"", 0x300000}, {"--image-type 0", 0x100000}, {"--image-type 2", 0x300000}};
  for (const auto& [options, address] : rows) {
    const ProgramResult result =
        Vexa("upload sdb @list.bin --ecf @test.ecf --port @line --timeout 20 " + options);
    ASSERT_EQ(result.status, 0) << result.errors;
    const bool warned =
        result.errors.find(
            "warning: SDB data would replace the image in \"Application\".\nDo you want to continue ?\n") !=
        std::string::npos;
    EXPECT_EQ(warned, address == 0x100000) << options;
    const LoaderMemory memory = StopReceiver();
    EXPECT_EQ(memory.spaces[0].begin()->first & 0xF00000, address) << options;
    EXPECT_EQ(memory.spaces[0].size(), 1u);
    terminal_.reset();
    ASSERT_TRUE(StartReceiver());
  }
  EXPECT_EQ(Vexa("upload sdb @list.bin --ecf @test.ecf --port @line --image-type 3").status, 1);
  EXPECT_EQ(Vexa("upload sdb @list.bin --ecf @test.ecf --port @line --image-type 256").status, 2);
}

#if !defined(_WIN32)
TEST_F(ReceiverCommands, ATraceThatCannotBeWrittenIsAFailure) {
  if (!StartReceiver()) GTEST_SKIP() << "no pseudo-terminals on this system";
  const ProgramResult result = Vexa("upload adb @list.bin --port @line --trace /dev/full");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(
      result.errors,
      HasSubstr(
          "error: Could not write \"/dev/full\": No space left on device\ninfo: No space is left there"));
}

TEST_F(ReceiverCommands, TheLoaderReplacesNothingButADeadLinkOfItsOwnKind) {
  Put("file", "the user's own");
  std::filesystem::create_symlink("file", At("link"));
  std::filesystem::create_symlink("nowhere", At("dead"));
  std::filesystem::create_symlink("/dev/pts/999999", At("own"));
  for (const char* name : {"file", "link", "dead"}) {
    EXPECT_FALSE(OpenPseudoTerminal(At(name))) << name;
    EXPECT_EQ(std::filesystem::is_symlink(At(name)), std::string(name) != "file");
  }
  auto terminal = OpenPseudoTerminal(At("own")).value;
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  EXPECT_EQ(std::filesystem::read_symlink(At("own")), Path(terminal->path));
  EXPECT_FALSE(OpenPseudoTerminal(At("own"))) << "it is in use";
  // A port belongs to the one who opened it.
  const CommApi& api = SystemCommApi();
  const auto port = api.create_file(terminal->path).value;
  EXPECT_TRUE(port);
  EXPECT_FALSE(api.create_file(terminal->path));
  EXPECT_TRUE(api.close_file(port));
  EXPECT_TRUE(api.create_file(terminal->path));
}
#endif

TEST_F(ReceiverCommands, ADownloadThatCannotBeKeptSaysHowTheReceiverIsLeft) {
  if (!StartReceiver()) GTEST_SKIP() << "no pseudo-terminals on this system";
  ASSERT_EQ(Vexa("upload adb @list.bin --port @line").status, 0);
  std::filesystem::create_directory(At("folder"));
  heard_ = false;
  std::thread user([this] {
    while (!heard_) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    std::filesystem::remove(At("folder"));
  });
  const ProgramResult result = Vexa("download -o @folder/out --port @line --timeout 20");
  user.join();
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, HasSubstr("error: Could not creat file"));
  EXPECT_THAT(result.errors, testing::EndsWith("info: Nothing was written, the receiver keeps what it had; "
                                               "switch it off and on before the next try.\n"));
}

TEST_F(ReceiverCommands, NothingIsWrittenToTheLineItself) {
  auto terminal = OpenPseudoTerminal(At("line")).value;
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  for (const std::string line :
       {"download -o @line", "download -o @out --trace @line", "upload adb @list.bin --log @line"}) {
    EXPECT_EQ(Vexa(line + std::string(" --port ") + terminal->path).status, 2) << line;
  }
  EXPECT_EQ(Vexa("upload adb @list.bin --log /dev/null --trace /dev/null --port @no-port").status, 1);
}

TEST_F(ReceiverCommands, AnUnpluggedPortEndsTheTransferWithOneMessage) {
  auto terminal = OpenPseudoTerminal(At("line")).value;
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
  EXPECT_EQ(
      result.errors,
      "Receiver not connected.\nerror: " + In("line") +
          " is not available any more.\nThe transfer was ended.\ninfo: " + In("line") +
          ": Input/output error. Connect the device again, and start anew.\ninfo: Nothing was written, the "
          "receiver keeps what it had; switch it off and on before the next try.\n");
}

// A receiver that restarts as soon as it knows that all has arrived.
TEST_F(ReceiverCommands, APortThatGoesBehindADownloadHarmsNothing) {
  auto terminal = OpenPseudoTerminal(At("line")).value;
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  std::atomic<bool> downloads{false}, all_received{false};
  receiver_ = MakeReceiver({}, {});
  LoaderRun run;
  run.stop = [&] { return all_received.load(); };
  run.tap = [&](bool from_pc, std::span<const uint8_t> bytes) {
    if (from_pc && downloads && bytes.back() == kCan) all_received = true;
  };
  loader_ = std::thread([&] {
    RunReceiver(receiver_, *terminal, run);
    terminal.reset();
  });
  EXPECT_EQ(Vexa("upload adb @list.bin --port @line --timeout 20").status, 0);
  downloads = true;
  const ProgramResult result = Vexa("download -o @back.bin --port @line --timeout 20");
  EXPECT_TRUE(all_received.exchange(true));
  loader_.join();
  EXPECT_EQ(result.status, 0) << result.errors;
  EXPECT_TRUE(Exists("back.bin"));
}

}  // namespace
}  // namespace vexa
