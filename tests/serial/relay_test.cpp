// Job threads speaking through the face's thread, the figures of a transfer, and what is asked before one.
#include "serial/relay.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "serial/prepare.h"
#include "tests/image/image_maker.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

// Runs the relay as a face's message loop does, until `done`.
bool RunUntil(Relay& relay, const std::function<bool()>& done) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!done() && std::chrono::steady_clock::now() < end) {
    relay.Run();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return done();
}

TEST(Relay, DoesTheWorkInOrderOnTheFacesThread) {
  std::atomic<int> notified{0};
  Relay relay([&] { ++notified; });
  const auto face = std::this_thread::get_id();
  std::vector<int> order;
  std::atomic<bool> ended{false};
  std::thread job([&] {
    for (int i = 0; i < 100; ++i) relay.Post([&order, i] { order.push_back(i); });
    EXPECT_TRUE(relay.Call([&] { order.push_back(std::this_thread::get_id() == face ? 100 : -1); }));
    ended = true;
  });
  EXPECT_TRUE(RunUntil(relay, [&] { return ended.load(); }));
  job.join();
  ASSERT_EQ(order.size(), 101u);
  for (int i = 0; i <= 100; ++i) EXPECT_EQ(order[static_cast<size_t>(i)], i);
  EXPECT_EQ(notified, 101);
}

// While a box stands its own loop goes on working; the asking thread still gets the user's answer.
TEST(Relay, WaitsForItsOwnWorkWhenThatRunsOthers) {
  Relay relay([] {});
  std::atomic<bool> asking{false}, ended{false};
  std::atomic<int> status{0};
  Messages box;
  box.ask = [&](const std::string&, const std::string&, bool) {
    asking = true;
    RunUntil(relay, [&] { return status == 1; });
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(ended) << "went on before the answer";
    return true;
  };
  const Messages relayed = RelayedMessages(relay, box);
  std::thread reader([&] {
    while (!asking) std::this_thread::yield();
    relay.Post([&] { status = 1; });
  });
  std::thread job([&] {
    EXPECT_TRUE(relayed.ask("?", "", false));
    ended = true;
  });
  EXPECT_TRUE(RunUntil(relay, [&] { return ended.load(); }));
  job.join();
  reader.join();
}

TEST(Relay, LetsWaitersGoWhenItCloses) {
  Relay relay([] {});
  Recorder recorder;
  const Messages relayed = RelayedMessages(relay, recorder.context.messages);
  std::atomic<int> answers{0};
  std::thread job([&] {
    answers += relayed.ask("Open it?", "", true) ? 100 : 1;
    relayed.tell({Icon::kStop, "lost", "", ""});
    answers += 1;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  relay.Close();
  job.join();
  EXPECT_EQ(answers, 2);
  relay.Run();
  EXPECT_TRUE(recorder.shown.empty()) << "nothing of it may come later";
  relayed.tell({Icon::kStop, "of the face itself", "", ""});
  EXPECT_EQ(recorder.Texts(), std::vector<std::string>{"of the face itself"});
}

TEST(TransferMeter, FiguresFollowTheLastSeconds) {
  TransferMeter meter;
  EXPECT_EQ(meter.Text(0), "");
  meter.Sample(10, 5000, 0, 100);
  meter.Sample(10.5, 99999, 2, 100);
  EXPECT_EQ(meter.Text(1), "1 packet repeated") << "too early for a rate";
  for (int i = 1; i <= 20; ++i) {
    meter.Sample(10.0 + i, 5000 + 11520ull * static_cast<unsigned>(i), static_cast<unsigned>(i) * 4, 100);
  }
  EXPECT_DOUBLE_EQ(meter.BytesPerSecond(), 11520);
  EXPECT_DOUBLE_EQ(meter.SecondsLeft(), 5);
  EXPECT_EQ(meter.Text(1234), "11,520 bytes/s   0:05 left   1,234 packets repeated");
  for (int i = 1; i <= 20; ++i) meter.Sample(30.0 + i, 235400, 80, 100);
  EXPECT_DOUBLE_EQ(meter.BytesPerSecond(), 0) << "the line is silent";
  EXPECT_DOUBLE_EQ(meter.SecondsLeft(), -1);
  meter.Sample(51, 235400, 0, 7);
  meter.Sample(53, 235402, 1, 7);
  EXPECT_DOUBLE_EQ(meter.SecondsLeft(), 12) << "a second file counts for itself";
}

struct Precondition {
  const char* what;
  std::function<void(ProjectConfig&, Document&)> spoil;
  std::vector<std::string> adb, sdb, boxes, download;
};

TEST(Preconditions, NameWhatIsMissing) {
  const std::string upload = "Please select upload configuration.";
  const std::string settings =
      "Configuration settings not found to process.\nUpdate configuration file and continue";
  const std::string sdb = "Add atleast one SDB to upload.", box = "Add atleast one User box info to upload.";
  const Precondition cases[] = {
      {"all there", [](ProjectConfig&, Document&) {}, {}, {}, {box}, {}},
      {"a user box record",
       [](ProjectConfig&, Document& document) { document.ubis.resize(1); },
       {},
       {},
       {},
       {}},
      {"no configuration",
       [](ProjectConfig& config, Document&) { config.configuration_found = false; },
       {upload},
       {upload},
       {upload},
       {"Please select download configuration."}},
      {"no partitions",
       [](ProjectConfig& config, Document&) { config.partitions_loaded = false; },
       {settings},
       {},
       {box},
       {settings}},
      {"no images",
       [](ProjectConfig& config, Document&) { config.regions.clear(), config.loader = {}; },
       {settings},
       {settings},
       {settings},
       {settings}},
      {"no SDB", [](ProjectConfig&, Document& document) { document.sdbs.clear(); }, {sdb}, {sdb}, {box}, {}},
  };
  for (const Precondition& test : cases) {
    SCOPED_TRACE(test.what);
    Recorder recorder;
    const auto tell = recorder.context.messages.tell;
    recorder.context.messages.tell = [&tell](const Message& message) {
      EXPECT_NE(message.detail, "") << message.text;
      tell(message);
    };
    ProjectConfig config = MakeImageConfig(0);
    config.configuration_found = config.partitions_loaded = true;
    Document document = NewDocument();
    test.spoil(config, document);
    EXPECT_EQ(MayUploadAdb(recorder.context, config, document), test.adb.empty());
    EXPECT_EQ(recorder.Texts(), test.adb);
    EXPECT_EQ(MayUploadSdb(recorder.context, config, document, false), test.sdb.empty());
    EXPECT_EQ(recorder.Texts(), test.sdb);
    EXPECT_EQ(MayUploadSdb(recorder.context, config, document, true), test.boxes.empty());
    EXPECT_EQ(recorder.Texts(), test.boxes);
    EXPECT_EQ(MayDownload(recorder.context, config), test.download.empty());
    EXPECT_EQ(recorder.Texts(), test.download);
  }
}

}  // namespace
}  // namespace vexa
