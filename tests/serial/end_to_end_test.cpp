// Whole transfers between the jobs and the simulated receiver, through the port library, in memory.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <random>

#include "core/bin_file.h"
#include "image/adb.h"
#include "image/decoder.h"
#include "loader/receiver.h"
#include "loader/run.h"
#include "serial/prepare.h"
#include "serial/session.h"
#include "tests/image/image_maker.h"
#include "tests/serial/end_transfer.h"
#include "tests/serial/fake_comm.h"
#include "tests/serial/receiver_rig.h"
#include "tests/serial/shared_messages.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

struct SessionRig {
  explicit SessionRig(const CommApi& api) {
    session.port.api = &api;
    session.port.messages = messages.messages();
    session.transfer.context = recorder.context;
    session.transfer.context.messages = messages.messages();
    session.transfer.view.press_cancel = [this] { pressed = true; };
    session.transfer.view.status = [this](const std::string& text) {
      const std::lock_guard hold(lock);
      statuses.push_back(text);
    };
    session.transfer.view.result = [this](const std::string& text) { result = text; };
  }
  // Runs the job to its end; false when it did not end in `seconds`.
  bool Run(const ProjectConfig& config, TransferJob job, int seconds = 60) {
    if (!StartTransfer(session, config, job)) return false;
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
    while (!pressed && !IsTransferOver(session) && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    const bool ended = pressed || IsTransferOver(session);
    return EndTransfer(session) && ended;
  }
  Recorder recorder;
  SharedMessages messages;
  std::atomic<bool> pressed{false};
  std::mutex lock;
  std::vector<std::string> statuses;
  std::string result;
  TransferSession session;
};

Document MakeDocument(unsigned seed) {
  std::mt19937 random(seed);
  Document document = NewDocument();
  document.sdbs[0].database = MakeRandomDatabase(random, RandomShape{});
  return document;
}

const LocalTime kTime{2024, 5, 6, 7, 8, 9};

void UploadAdb(const CommApi& api, const Document& document, const ProjectConfig& config,
               const std::string& name) {
  SessionRig rig(api);
  auto files = PrepareAdbUpload(rig.session.transfer.context, document, 0, config, kTime);
  ASSERT_TRUE(files) << name;
  rig.session.transfer.files = *files;
  ASSERT_TRUE(rig.Run(config, TransferJob::kAdb)) << name;
  EXPECT_EQ(rig.session.outcome, 1) << name;
  EXPECT_TRUE(rig.messages.Texts().empty()) << name;
  for (const Path& file : *files) EXPECT_FALSE(std::filesystem::exists(file)) << name;
}

// Nothing when the download ended without a database.
std::optional<Bytes> DownloadAll(const CommApi& api, const ProjectConfig& config, SessionRig& rig) {
  Transfer& transfer = rig.session.transfer;
  auto files = PrepareDownload(transfer.context, config);
  if (!files) return std::nullopt;
  transfer.files = files->script;
  transfer.region_files = files->regions;
  std::optional<Bytes> database;
  transfer.decode = [&](bool crc_failed) {
    if (crc_failed) return false;
    if (auto decoded = DecodeDownload(transfer.context, config, UserBoxInfo{})) database = decoded->file;
    return database.has_value();
  };
  rig.session.port.api = &api;
  rig.Run(config, TransferJob::kDownload);
  return database;
}

// What comes back must be what the images hold without any line between.
Bytes Direct(const Document& document, const ProjectConfig& config) {
  Recorder recorder;
  const auto images = BuildAdbImages(recorder.context, document, 0, config);
  return DecodeImage(recorder.context, config, images->adb, images->e2p, UserBoxInfo{})->file;
}

void ExpectSameDatabase(const Bytes& file, const Document& document, const std::string& name) {
  Recorder recorder;
  Document opened;
  ASSERT_TRUE(OpenBinBytes(recorder.context, file, opened)) << name;
  ASSERT_EQ(opened.sdbs.size(), 1u) << name;
  const StaticDatabase& back = *opened.sdbs[0].database;
  const StaticDatabase& sent = *document.sdbs[0].database;
  ASSERT_EQ(back.carriers.size(), sent.carriers.size()) << name;
  ASSERT_EQ(back.services.size(), sent.services.size()) << name;
  for (size_t i = 0; i < sent.carriers.size(); ++i) {
    EXPECT_EQ(back.carriers[i]->record.frequency, sent.carriers[i]->record.frequency)
        << name << " carrier " << i;
  }
}

TEST(EndToEnd, ADatabaseGoesToTheReceiverAndComesBack) {
  for (const uint8_t index : {uint8_t{0}, uint8_t{1}}) {
    const std::string name = "configuration " + std::to_string(index);
    const ProjectConfig config = MakeImageConfig(index);
    const Document document = MakeDocument(11 + index);
    ReceiverRig receiver;
    UploadAdb(receiver.comm.api, document, config, name);
    SessionRig rig(receiver.comm.api);
    const auto database = DownloadAll(receiver.comm.api, config, rig);
    ASSERT_TRUE(database) << name;
    EXPECT_EQ(*database, Direct(document, config)) << name;
    ExpectSameDatabase(*database, document, name);
    EXPECT_EQ(rig.result, "CRC Verification - Success") << name;
    EXPECT_EQ(rig.session.transfer.region_index, index == 0 ? 1u : 2u) << name;
  }
}

TEST(EndToEnd, FaultsThatCanBeMendedAre) {
  struct Row {
    const char* name;
    LoaderFaults faults;
  };
  const Row rows[] = {{"refused frames", {3, 0.2, 0, 0, 0}},
                      {"damaged frames", {4, 0, 0.2, 0, 0}},
                      {"slow answers", {5, 0, 0, 0, 40}},
                      {"all but losses", {6, 0.1, 0.1, 0, 5}}};
  const ProjectConfig config = MakeImageConfig(0);
  for (const Row& row : rows) {
    const Document document = MakeDocument(static_cast<unsigned>(row.faults.seed));
    ReceiverRig receiver(row.faults);
    UploadAdb(receiver.comm.api, document, config, row.name);
    SessionRig rig(receiver.comm.api);
    const auto database = DownloadAll(receiver.comm.api, config, rig);
    ASSERT_TRUE(database) << row.name << " " << testing::PrintToString(receiver.Notes());
    EXPECT_EQ(*database, Direct(document, config)) << row.name;
  }
}

TEST(EndToEnd, LostHandshakesOfAnUploadAreMended) {
  ReceiverRig receiver({9, 0, 0, 0.03, 0});
  const ProjectConfig config = MakeImageConfig(0);
  UploadAdb(receiver.comm.api, MakeDocument(9), config, "drop, seed 9");
  EXPECT_EQ(receiver.Memory().spaces[0].size(), 1u);
}

TEST(EndToEnd, SdbAndConsoleUploadsArriveByteByByte) {
  ProjectConfig config = MakeImageConfig(0);
  config.regions.clear();
  const Document document = MakeDocument(21);
  const BinVersion version{7, 3, "abc"};
  DefaultRecords defaults;
  defaults.satellite.angle = 77;
  for (const uint8_t format : {uint8_t{0}, uint8_t{1}}) {
    config.sdb_format = format;
    ReceiverRig receiver;
    SessionRig rig(receiver.comm.api);
    Context& context = rig.session.transfer.context;
    context.defaults = &defaults;
    auto files = PrepareSdbUpload(context, document, {1, 0}, config, kTime, version);
    ASSERT_TRUE(files);
    const Bytes urt = *ReadWholeFile((*files)[0]);
    rig.session.transfer.files = *files;
    ASSERT_TRUE(rig.Run(config, TransferJob::kSdb));
    EXPECT_EQ(rig.statuses, (std::vector<std::string>{"Receiver not connected.", "Wait...",
                                                      "SDB upload inprogress.", "SDB upload completed."}));
    const Bytes expected = format == 0 ? WriteSdbStream(*document.sdbs[0].database, version, defaults)
                                       : *BuildBin(context, document, version, {1, 0});
    const LoaderMemory memory = receiver.Memory();
    ASSERT_EQ(memory.spaces[0].size(), 1u) << testing::PrintToString(receiver.Notes());
    EXPECT_EQ(memory.spaces[0].begin()->second, expected);

    ReceiverRig other;
    SessionRig console(other.comm.api);
    const Path path = console.recorder.context.temporary_folder / "any.urt";
    PutFile(path, urt);
    console.session.transfer.files = {path};
    std::vector<int> codes;
    console.session.transfer.report = [&](int code) { codes.push_back(code); };
    ASSERT_TRUE(console.Run(config, TransferJob::kConsole));
    EXPECT_EQ(codes, std::vector<int>{1});
    EXPECT_EQ(other.Memory().spaces[0], memory.spaces[0]);
    EXPECT_TRUE(std::filesystem::exists(path));  // the user's own file stays
  }
}

TEST(EndToEnd, CancelEndsEveryWait) {
  struct Row {
    const char* name;
    TransferJob job;
    WriteMode mode;
  };
  const Row rows[] = {{"wake-up", TransferJob::kAdb, WriteMode::kDone},
                      {"flood", TransferJob::kConsole, WriteMode::kDone},
                      {"write that hangs", TransferJob::kConsole, WriteMode::kNever},
                      {"download", TransferJob::kDownload, WriteMode::kDone}};
  for (const Row& row : rows) {
    FakeComm comm;  // nobody answers
    comm.write_mode = row.mode;
    SessionRig rig(comm.api);
    const Path file = rig.recorder.context.temporary_folder / "sent";
    PutFile(file, BytesOf("MZ"));
    rig.session.transfer.files = {file};
    std::atomic<int> code{0};
    rig.session.transfer.report = [&](int value) { code = value; };
    ASSERT_TRUE(StartTransfer(rig.session, ProjectConfig{}, row.job)) << row.name;
    std::this_thread::sleep_for(std::chrono::milliseconds(250));  // behind the wait for quiet
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(CancelTransfer(rig.session)) << row.name;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << row.name;
    EXPECT_EQ(rig.session.outcome, 0) << row.name;
    EXPECT_EQ(std::filesystem::exists(file), row.job == TransferJob::kConsole) << "the user's own stays";
    EXPECT_EQ(code, row.job == TransferJob::kConsole ? 23 : 0) << row.name;
    EXPECT_TRUE(rig.messages.Texts().empty()) << row.name;
  }
}

// The driver keeps a thread inside one of its functions, until it is told to let go or for good.
TEST(EndToEnd, CancelDoesNotWaitForADriverThatNeverReturns) {
  struct Row {
    const char* name;
    bool reading, lets_go;
  };
  const Row rows[] = {{"a write, let go", false, true}, {"a write", false, false}, {"a read", true, false}};
  for (const Row& row : rows) {
    FakeComm comm;
    std::promise<void> release;
    const auto released = release.get_future().share();
    const auto hang = [released] { released.wait(); };
    if (!row.reading) comm.on_write = [hang](std::span<const uint8_t>) { hang(); };
    if (row.lets_go) comm.on_cancel_all = [&release] { release.set_value(); };
    if (row.reading) {
      comm.api.modem_status = [hang](const SerialDevicePtr&, uint32_t&) { return hang(), false; };
    }
    auto rig = std::make_unique<SessionRig>(comm.api);
    ASSERT_TRUE(StartTransfer(rig->session, ProjectConfig{}, TransferJob::kAdb)) << row.name;
    EXPECT_TRUE(comm.AwaitCount(row.reading ? "purge" : "write", 1));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(CancelTransfer(rig->session), row.lets_go) << row.name;
    EXPECT_LT(std::chrono::steady_clock::now() - start, 4 * kAnswerTime) << row.name;
    EXPECT_EQ(rig->session.left_behind, !row.lets_go) << row.name;
    EXPECT_EQ(comm.Count("close_file"), row.lets_go ? 1 : 0) << "not below the feet of who hangs in it";
    const auto texts = rig->messages.Texts();
    ASSERT_EQ(texts.size(), row.lets_go ? 0u : 2u) << row.name;
    if (!row.lets_go) {
      EXPECT_EQ(texts[0], "Exit Thread API failed");
    }
    if (!row.lets_go) release.set_value();
    if (rig->session.job.joinable()) rig->session.job.join();
    EXPECT_EQ(rig->session.outcome, 0) << row.name;
    EXPECT_TRUE(rig->messages.Texts().empty()) << row.name << ": what comes back late says nothing";
    if (row.reading) {
      EXPECT_TRUE(comm.AwaitCount("cancel", 2)) << "the reader ends when it can";
    }
  }
}

TEST(EndToEnd, StartingTellsWhatCannotBeOpenedOrClosed) {
  FakeComm comm;
  SessionRig rig(comm.api);
  comm.failing = {"create_file"};
  EXPECT_FALSE(StartTransfer(rig.session, ProjectConfig{}, TransferJob::kAdb));
  EXPECT_EQ(rig.messages.Texts(),
            (std::vector<std::string>{"Port is not available.",
                                      "Can't open port.\nPort may be opened by another application."}));
  EXPECT_FALSE(StartTransfer(rig.session, ProjectConfig{}, TransferJob::kConsole));
  EXPECT_EQ(rig.messages.Texts(), std::vector<std::string>{"Port is not available."});
  comm.failing = {"close_file"};
  EXPECT_FALSE(TestPort(rig.session, ProjectConfig{}));
  EXPECT_EQ(rig.messages.Texts(), std::vector<std::string>{"Port Close API failed - Upload as SDB"});
  comm.failing = {"start_thread 2"};  // behind the reader's
  EXPECT_FALSE(StartTransfer(rig.session, ProjectConfig{}, TransferJob::kAdb));
  EXPECT_EQ(rig.messages.Texts(), (std::vector<std::string>{"Thread creation problem - Upload as ADB",
                                                            "Unable to initialise ADB uploading process."}));
  comm.failing = {"close_file"};
  ASSERT_TRUE(StartTransfer(rig.session, ProjectConfig{}, TransferJob::kAdb));
  EXPECT_FALSE(CancelTransfer(rig.session));
  EXPECT_EQ(rig.messages.Texts(), std::vector<std::string>{"Port Close API failed"});
}

// The system's own port on a pseudo-terminal, where there are any.
TEST(EndToEnd, ThroughAPseudoTerminal) {
  Recorder folder;
  const Path link = folder.context.temporary_folder / "line";
  const auto terminal = OpenPseudoTerminal(link).value;
  if (!terminal) GTEST_SKIP() << "no pseudo-terminals on this system";
  Receiver receiver = MakeReceiver({}, {});
  std::atomic<bool> stop{false};
  LoaderRun run;
  run.stop = [&] { return stop.load(); };
  std::thread loader([&] { RunReceiver(receiver, *terminal, run); });
  ProjectConfig config = MakeImageConfig(0);
  config.port_name = Utf8FromPath(link);
  const Document document = MakeDocument(31);
  UploadAdb(SystemCommApi(), document, config, "pseudo-terminal");
  SessionRig rig(SystemCommApi());
  const auto database = DownloadAll(SystemCommApi(), config, rig);
  stop = true;
  loader.join();
  ASSERT_TRUE(database);
  EXPECT_EQ(*database, Direct(document, config));
}

}  // namespace
}  // namespace vexa
