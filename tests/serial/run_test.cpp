#include "serial/run.h"

#include <gtest/gtest.h>

#include <future>
#include <thread>

#include "image/transfer_files.h"
#include "import/csv.h"
#include "serial/backup.h"
#include "serial/batch.h"
#include "serial/run_log.h"
#include "serial/verdict.h"
#include "tests/image/image_maker.h"
#include "tests/serial/receiver_rig.h"
#include "tests/serial/shared_messages.h"
#include "tests/serial/upload_frames.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

struct Serving {
  Recorder recorder;
  SharedMessages messages;
  Document document = NewDocument();
  std::vector<TransferProgress> progress;

  Serving() {
    std::mt19937 random(5);
    document.sdbs[0].database = MakeRandomDatabase(random, {2, 3, 6, 20, 2, false, false});
  }
  ReceiverRun Make(ReceiverRig& receiver, uint8_t index) {
    ReceiverRun run;
    run.config = MakeImageConfig(index);
    run.face.context = recorder.context;
    run.face.context.messages = messages.messages();
    run.face.api = &receiver.comm.api;
    run.face.timeout = 8;
    run.face.progress = [this](const TransferProgress& now) { progress.push_back(now); };
    return run;
  }
  bool Serve(ReceiverRun& run, bool verify = true) {
    return ServeReceiver(run, {&document, 0, {2024, 5, 6, 7, 8, 9}, verify, {}, ""});
  }
  // Whether the receiver holds all of it.
  bool Holds(ReceiverRig& receiver, uint8_t index) {
    const ProjectConfig config = MakeImageConfig(index);
    const AdbImages images = BuildAdbImages(recorder.context, document, 0, config).value();
    const LoaderMemory memory = receiver.Memory();
    const size_t size = images.adb.size() - AdbHeaderSize(config);
    const Bytes first = LoadBytes(memory, 0, 0x100000, size);
    return std::equal(first.begin(), first.end(), images.adb.begin()) &&
           LoadBytes(memory, 1, 0, images.e2p.size()) == images.e2p;
  }
};

struct Run : Serving, testing::Test {};

TEST_F(Run, AllThatMovesIsCounted) {
  LoaderFaults slow;
  slow.delay = 10;  // so that the progress, told ten times a second, is told half way too
  ReceiverRig receiver(slow);
  ReceiverRun run = Make(receiver, 1);
  ASSERT_TRUE(Serve(run)) << testing::PrintToString(messages.Texts());
  EXPECT_TRUE(Holds(receiver, 1));
  EXPECT_EQ(run.result.verified, true);
  std::vector<TransferPhase> phases;
  for (const TransferProgress& now : progress) {
    if (phases.empty() || phases.back() != now.phase) phases.push_back(now.phase);
  }
  EXPECT_EQ(phases, (std::vector{TransferPhase::kWakeUp, TransferPhase::kUpload, TransferPhase::kVerify}));
  EXPECT_EQ(progress.back().done, progress.back().total);
  EXPECT_TRUE(std::any_of(progress.begin(), progress.end(), [](const TransferProgress& now) {
    return now.phase == TransferPhase::kVerify && now.done > 0 && now.done < now.total;
  }));
  const RegionEntry region = *AdbRegion(run.config);
  EXPECT_EQ(progress.back().total, region.end - region.start + kE2pRequested);
  EXPECT_GT(run.result.bytes, 2 * (region.end - region.start));
}

TEST_F(Run, OnlyDataThatCouldBeReadIsCalledSameOrDifferent) {
  ProjectConfig config = MakeImageConfig(1);
  config.port_name = "COM3";
  Context context = recorder.context;
  context.messages = messages.messages();
  const AdbImages images = BuildAdbImages(context, document, 0, config).value();
  const Path adb = context.temporary_folder / kAdbImageFile, e2p = context.temporary_folder / kE2pImageFile;
  const auto judge = [&](bool crc_failed) {
    return JudgeDownload(context, config, *document.sdbs[0].database, images, crc_failed);
  };
  PutFile(adb, images.adb);
  PutFile(e2p, images.e2p);
  EXPECT_EQ(judge(false), Verdict::kSame);
  EXPECT_TRUE(messages.Texts().empty());
  EXPECT_EQ(judge(true), Verdict::kNotCompared);
  EXPECT_EQ(messages.All().back().detail, "COM3");
  EXPECT_EQ(messages.Texts().back(), CrcFailedText());
  for (const Path& region : {adb, e2p}) {
    const Bytes content = ReadWholeFile(region).value();
    std::filesystem::remove(region);
    EXPECT_EQ(judge(false), Verdict::kDiffers) << "nothing came of it";
    EXPECT_EQ(messages.Texts().back(), VerdictText(Verdict::kDiffers));
    std::filesystem::create_directory(region);
    EXPECT_EQ(judge(false), Verdict::kNotCompared);
    EXPECT_EQ(messages.All().back().detail,
              ReadReason(region, std::make_error_code(std::errc::is_a_directory)));
    EXPECT_EQ(messages.Texts(), std::vector<std::string>{"The received data cannot be read."});
    std::filesystem::remove(region);
    PutFile(region, content);
  }
  EXPECT_EQ(judge(false), Verdict::kSame);
}

// The receiver is pulled off, or another takes its place, when a frame is on its way to it. Empty: only what
// a receiver was seen to hold was called verified.
std::string WhatIsWrong(uint8_t index, int frame, bool swapped) {
  Serving one;
  ReceiverRig receiver;
  std::atomic<int> sent{0};
  std::atomic<bool> gone{false};
  receiver.on_sent = [&](Bytes& bytes) {
    if (bytes.size() > 20 && ++sent == frame) (swapped ? receiver.swap_receiver : gone) = true;
    if (gone) bytes.clear();
  };
  receiver.on_answer = [&](Bytes& answer) {
    if (gone) answer.clear();
  };
  ReceiverRun run = one.Make(receiver, index);
  run.face.timeout = 1.2;
  const bool done = one.Serve(run);
  if (done && gone) return "it was gone";
  if (done && !one.Holds(receiver, index)) return "it holds something else";
  if (done != (run.result.verified == true)) return "done without a comparison, or the other way round";
  const auto texts = one.messages.Texts();
  if (!done && (texts.size() < 2 || texts.back() != ReceiverStateSentence(run))) return "it was not told";
  return "";
}

TEST_F(Run, AReceiverThatGoesHalfWayIsNeverCalledVerified) {
  ReceiverRig counting;
  std::atomic<int> frames{0};
  counting.on_sent = [&](Bytes& bytes) { frames += bytes.size() > 20; };
  ReceiverRun clean = Make(counting, 1);
  ASSERT_TRUE(Serve(clean, false));
  const int last = frames;  // the last two are the second file's
  const std::pair<uint8_t, int> rows[] = {{1, 1},        {1, 2},    {1, last / 2}, {1, last - 2},
                                          {1, last - 1}, {1, last}, {0, 3}};
  std::vector<std::future<std::string>> found;
  for (const auto& [index, frame] : rows) {
    for (const bool swapped : {false, true})
      found.push_back(std::async(std::launch::async, WhatIsWrong, index, frame, swapped));
  }
  for (size_t i = 0; i < found.size(); ++i)
    EXPECT_EQ(found[i].get(), "") << "row " << i / 2 << (i % 2 ? " swapped" : " pulled off");
}

// What a file says to move, also where it is cut in the middle of a frame.
TEST_F(Run, TheBytesToMoveAreThoseOfTheFramesThatAreThere) {
  const Bytes upload = UploadFile(Bytes(150, 1)), request = RequestFile({Bytes(30), Bytes(7)});
  uint64_t payloads = 0;
  for (const Bytes& frame : FramesOf(upload)) payloads += LookAtFrame(frame).payload.size();
  const auto cut = [](Bytes file, size_t size) { return file.resize(size), file; };
  const size_t second = 6 + FramesOf(request)[0].size();
  const std::tuple<Bytes, TransferJob, uint64_t> rows[] = {
      {upload, TransferJob::kAdb, 2 * payloads},
      {upload, TransferJob::kSdb, payloads},
      {request, TransferJob::kDownload, 37},
      {cut(request, second + 17), TransferJob::kDownload, 37},
      {cut(request, second + 16), TransferJob::kDownload, 30},
      {cut(request, second), TransferJob::kDownload, 30},
      {cut(request, 5), TransferJob::kDownload, 0},
      {{}, TransferJob::kDownload, 0}};
  for (const auto& [file, job, bytes] : rows) {
    Transfer transfer;
    transfer.files.assign(2, recorder.context.temporary_folder / "file");
    PutFile(transfer.files[0], file);
    EXPECT_EQ(BytesToMove(transfer, job), bytes) << file.size();
  }
}

TEST_F(Run, TheStateOfTheReceiverIsOneSentence) {
  ReceiverRun run;
  EXPECT_EQ(ReceiverStateSentence(run),
            "Nothing was written, the receiver keeps what it had; switch it off and on before the next try.");
  run.unopened = true;
  EXPECT_EQ(ReceiverState(run),
            "nothing was written, the receiver keeps what it had; try again when the port can be opened");
  run.uploaded = 7;
  EXPECT_EQ(
      ReceiverState(run),
      "the receiver may hold a part of the data (packets sent: 7); switch it off and on and send it again");
  run.sent = true;
  EXPECT_EQ(ReceiverState(run),
            "the receiver got all data, but was not compared; switch it off and on and verify it");
  EXPECT_TRUE(IsLeftUnsure(run));
  run.differs = true;
  EXPECT_EQ(ReceiverState(run), "the receiver holds other data than it should; send it again");
  EXPECT_FALSE(IsLeftUnsure(run)) << "told as the verdict";
  EXPECT_FALSE(IsLeftUnsure({}));
}

// The port is taken between two transfers of one run.
TEST_F(Run, APortThatDoesNotOpenAgainIsToldWithTheStateThatTheReceiverIsIn) {
  ReceiverRig receiver;
  ReceiverRun run = Make(receiver, 0);
  run.face.status = [&](const std::string& text) {
    if (text == kVerifying) receiver.comm.Fail({"create_file"});
  };
  EXPECT_FALSE(Serve(run));
  EXPECT_EQ(messages.Texts().back(),
            "The receiver got all data, but was not compared; switch it off and on and verify it.");
}

TEST_F(Run, CopiesHaveNamesThatEveryFileSystemTakesAndNoneIsReplaced) {
  const LocalTime time{2024, 5, 6, 7, 8, 9};
  EXPECT_EQ(BackupName(time, ""), "20240506-070809");
  EXPECT_EQ(BackupName(time, "A/1 .b_c-\xC3\xA4"), "20240506-070809-A_1_.b_c-__");
  ReceiverRig receiver;
  ReceiverRun upload = Make(receiver, 0);
  ASSERT_TRUE(Serve(upload, false));
  const Path folder = recorder.context.temporary_folder / "copies";
  std::filesystem::create_directory(folder);
  PutFile(folder / "name-1.raw", BytesOf("another's"));
  for (const char* name : {"name-2", "name-3"}) {
    ReceiverRun run = Make(receiver, 0);
    EXPECT_TRUE(RunBackup(run, folder, "name"));
    EXPECT_TRUE(std::filesystem::exists(folder / (std::string(name) + ".bin"))) << name;
    EXPECT_TRUE(std::filesystem::exists(folder / (std::string(name) + "-1.raw"))) << name;
  }
  EXPECT_EQ(ReadWholeFile(folder / "name-1.raw"), BytesOf("another's"));
  // All files or none: the last steps put the two in their places.
  const auto keep = [&](int failing) {
    ReceiverRun run = Make(receiver, 0);
    run.face.context.files = &recorder.files;
    recorder.FailStep(failing);
    return RunBackup(run, folder, "other");
  };
  ASSERT_TRUE(keep(0));
  const int steps = recorder.steps;
  for (const int back : {0, 1, 2, 7}) {
    for (const char* file : {"other.bin", "other-1.raw"}) std::filesystem::remove(folder / file);
    EXPECT_FALSE(keep(steps - back)) << back;
    for (const char* file : {"other.bin", "other-1.raw"})
      EXPECT_FALSE(std::filesystem::exists(folder / file)) << back;
  }
}

TEST_F(Run, TheLogGrowsByARowAndBeginsWithAHeader) {
  const Path log = recorder.context.temporary_folder / "log.csv";
  EXPECT_TRUE(TryRunLog(log));
  EXPECT_FALSE(std::filesystem::exists(log));
  RunLogRow row{{2024, 5, 6, 7, 8, 9}, "a,\"b\"", "db.bin", "00ff", "0/0/1", {}, RunEnd::kCancelled};
  row.result.packets = 12;
  row.result.repeated = 3;
  row.result.seconds = 4.56;
  EXPECT_TRUE(AppendToRunLog(log, row));
  row.result.verified = false;
  row.end = RunEnd::kFailed;
  EXPECT_TRUE(AppendToRunLog(log, row));
  EXPECT_EQ(ReadWholeFile(log),
            BytesOf("time,serial,database,sha256,configuration,packets,repeated,seconds,verified,result\r\n"
                    "2024-05-06 07:08:09,\"a,\"\"b\"\"\",db.bin,00ff,0/0/1,12,3,4.6,,cancelled\r\n"
                    "2024-05-06 07:08:09,\"a,\"\"b\"\"\",db.bin,00ff,0/0/1,12,3,4.6,no,failed\r\n"));
  EXPECT_FALSE(TryRunLog(recorder.context.temporary_folder / "no" / "log"));
  for (const std::string end : {"", "\n", "\r\n"}) {  // as another program may have left it
    PutFile(log, BytesOf("time,serial" + end));
    EXPECT_TRUE(TryRunLog(log) && AppendToRunLog(log, row));
    const Bytes bytes = ReadWholeFile(log).value_or(Bytes{});
    EXPECT_TRUE(std::string(bytes.begin(), bytes.end())
                    .starts_with("time,serial" + (end.empty() ? "\r\n" : end) + "2024-05-06"));
  }
}

TEST_F(Run, ADatabaseIsNoLog) {
  ReceiverBatch batch;
  batch.log = recorder.context.temporary_folder / "log.bin";
  PutFile(batch.log, *BuildBin({}, SmallDocument()));
  EXPECT_FALSE(MayWriteLog(recorder.context, batch));
  PutFile(batch.log, BytesOf("time,serial\r\n"));
  EXPECT_TRUE(MayWriteLog(recorder.context, batch));
}

TEST_F(Run, ALogThatManyBeginAtOnceHasOneHeaderAndEveryRow) {
  const Path log = recorder.context.temporary_folder / "log.csv";
  for (int round = 0; round < 20; ++round) {
    std::filesystem::remove(log);
    std::vector<std::thread> programs;
    for (int i = 0; i < 4; ++i) {
      programs.emplace_back([&] { EXPECT_TRUE(TryRunLog(log) && AppendToRunLog(log, {})); });
    }
    for (std::thread& program : programs) program.join();
    const Bytes bytes = ReadWholeFile(log).value_or(Bytes{});
    const std::vector<CsvRow> rows = ParseCsv(std::string(bytes.begin(), bytes.end()));
    ASSERT_EQ(rows.size(), 5u);
    for (size_t i = 0; i < rows.size(); ++i) ASSERT_EQ(rows[i].cells[0] == "time", i == 0);
  }
}

}  // namespace
}  // namespace vexa
