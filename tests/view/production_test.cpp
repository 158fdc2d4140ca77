// Many receivers at several ports, as the window "Production" serves them.
#include "view/production.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <random>

#include "core/bin_file.h"
#include "image/adb.h"
#include "image/sha256.h"
#include "import/csv.h"
#include "tests/image/image_maker.h"
#include "tests/serial/receiver_rig.h"
#include "tests/support/random_database.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

struct ProductionTest : testing::Test {
  Recorder recorder;
  Path folder = recorder.context.temporary_folder;
  std::map<std::string, std::unique_ptr<ReceiverRig>> receivers;
  ProductionForm form;
  Bytes database;
  FakeComm none;  // a port that is not there
  Production production{recorder.context, [this](const std::string& port) {
                          const auto found = receivers.find(port);
                          return found == receivers.end() ? &none.api : &found->second->comm.api;
                        }};

  ProductionTest() {
    none.Fail({"create_file"});
    Document document = NewDocument();
    std::mt19937 random(5);
    document.sdbs[0].database = MakeRandomDatabase(random, {2, 3, 6, 20, 2, false, false});
    database = BuildBin(recorder.context, document, {}, {}).value();
    PutFile(folder / "list.bin", database);
    form.fields.database = Utf8FromPath(folder / "list.bin");
    form.fields.log = Utf8FromPath(folder / "log.csv");
    form.copy_folder = folder / "copies" / "new";
    form.config = MakeImageConfig(0);
  }
  ReceiverRig& Connect(const std::string& port, const LoaderFaults& faults = {}) {
    auto& rig = receivers[port];
    rig = std::make_unique<ReceiverRig>(faults);
    return *rig;
  }
  // Waits until the place's run has ended.
  PlaceView Ended(size_t place) {
    for (int i = 0; i < 3000 && production.Look(place).state == PlaceState::kAtWork; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return production.Look(place);
  }
  std::string Refused(size_t place, const std::string& serial) {
    const auto refusal = production.Begin(place, serial, form);
    return refusal ? refusal->text : "begun";
  }
  // Serial number, configuration, verified and result of each row of the log.
  std::vector<std::string> Log() {
    const Bytes bytes = ReadWholeFile(folder / "log.csv").value_or(Bytes{});
    std::vector<std::string> rows;
    for (const CsvRow& row : ParseCsv(std::string(bytes.begin(), bytes.end())))
      rows.push_back(row.cells[1] + " " + row.cells[4] + " " + row.cells[8] + " " + row.cells[9]);
    return rows;
  }
};

TEST_F(ProductionTest, EachNumberIsAReceiverAVerdictAndARow) {
  Connect("P");
  production.SetPorts({"P"});
  form.fields.keep_copy = true;
  EXPECT_EQ(PlaceText(production.Look(0)), "Waiting for a serial number");
  ASSERT_EQ(Refused(0, " A-1\t"), "begun");
  EXPECT_THAT(Refused(0, "A-2"), "P is still at work. Choose a port that is free.");
  PlaceView view = Ended(0);
  EXPECT_EQ(view.state, PlaceState::kFailed) << "a new receiver holds nothing that could be kept";
  EXPECT_THAT(PlaceText(view), testing::AllOf(StartsWith("FAILED: What the receiver holds is no database"),
                                              HasSubstr("Nothing was written")));
  form.fields.keep_copy = false;
  ASSERT_EQ(Refused(0, "A-2"), "begun");
  view = Ended(0);
  EXPECT_THAT(PlaceText(view), StartsWith("OK: written and compared in ")) << view.reason;
  EXPECT_THAT(VerdictLine(view), StartsWith("P   A-2   written and compared in "));
  form.fields.keep_copy = true;
  ASSERT_EQ(Refused(0, "A-3"), "begun");
  view = Ended(0);
  EXPECT_EQ(view.state, PlaceState::kOk) << view.reason;
  size_t copies = 0;
  for (const auto& file : std::filesystem::directory_iterator(form.copy_folder))
    copies += Utf8FromPath(file.path().filename()).find("-A-3") != std::string::npos;
  EXPECT_EQ(copies, 2u) << "the folder was made";
  EXPECT_THAT(production.TakeEnded(), ElementsAre(0));
  EXPECT_TRUE(production.TakeEnded().empty());
  EXPECT_EQ(ProductionCountText(production), "2 OK, 1 failed");
  EXPECT_THAT(Log(), ElementsAre("serial configuration verified result", "A-1 0/0/0  failed",
                                 "A-2 0/0/0 yes ok", "A-3 0/0/0 yes ok"));
  const Bytes log = ReadWholeFile(folder / "log.csv").value();
  EXPECT_THAT(std::string(log.begin(), log.end()),
              HasSubstr(form.fields.database + "," + Sha256Text(database)));
  EXPECT_TRUE(recorder.Texts().empty()) << "no boxes";
}

// Two ports side by side: one receiver is pulled off half way, the other one ends right, and both places
// take the next number.
TEST_F(ProductionTest, AReceiverPulledOffLeavesTheOtherPortAlone) {
  LoaderFaults slow;
  slow.delay = 5;
  ReceiverRig& pulled = Connect("P", slow);
  Connect("Q", slow);
  std::atomic<int> frames{0};
  pulled.on_sent = [&](Bytes& bytes) {
    if (bytes.size() > 20 && ++frames == 20) pulled.comm.hung_up = true;
    if (frames >= 20) bytes.clear();
  };
  production.SetPorts({"P", "Q", "P"});
  ASSERT_EQ(production.count(), 2u) << "each port once";
  const auto all = [](size_t) { return true; };
  ASSERT_EQ(Refused(0, "A-1"), "begun");
  EXPECT_EQ(production.NextFree(0, all), 1u);
  EXPECT_EQ(Refused(1, "A-1"), "A-1 is being written at P.");
  const std::string right = form.fields.database;
  form.fields.database = "what is typed meanwhile counts for the next";
  ASSERT_EQ(Refused(1, "B-1"), "begun");
  form.fields.database = right;
  EXPECT_TRUE(production.IsAtWork());
  EXPECT_EQ(production.NextFree(1, all), 1u) << "none is free";
  EXPECT_EQ(Ended(1).state, PlaceState::kOk) << production.Look(1).reason;
  if (production.Look(0).state == PlaceState::kAtWork) production.Stop(0);
  const PlaceView failed = Ended(0);
  EXPECT_NE(failed.state, PlaceState::kOk);
  EXPECT_THAT(failed.reason, HasSubstr("The receiver may hold a part of the data"));
  EXPECT_EQ(production.NextFree(1, [](size_t place) { return place == 0; }), 0u);
  Connect("P");
  ASSERT_EQ(Refused(0, "A-2"), "begun");
  ASSERT_EQ(Refused(1, "B-2"), "begun");
  EXPECT_EQ(Ended(0).state, PlaceState::kOk) << production.Look(0).reason;
  EXPECT_EQ(Ended(1).state, PlaceState::kOk) << production.Look(1).reason;
  auto log = Log();
  ASSERT_EQ(log.size(), 5u) << "one header, a row for each";
  std::sort(log.begin(), log.end());
  EXPECT_THAT(log[0], testing::AnyOf("A-1 0/0/0  failed", "A-1 0/0/0  cancelled"));
  EXPECT_THAT((std::vector(log.begin() + 1, log.end())),
              ElementsAre("A-2 0/0/0 yes ok", "B-1 0/0/0 yes ok", "B-2 0/0/0 yes ok",
                          "serial configuration verified result"));
}

// Another receiver in its place half way: what was read back is not what was sent.
TEST_F(ProductionTest, ASwappedReceiverIsNeverCalledRight) {
  for (const int frame : {3, 60}) {
    ReceiverRig& rig = Connect("P");
    std::atomic<int> frames{0};
    rig.on_sent = [&](Bytes& bytes) {
      if (bytes.size() > 20 && ++frames == frame) rig.swap_receiver = true;
    };
    production.SetPorts({"P"});
    ASSERT_EQ(Refused(0, "S"), "begun");
    for (int i = 0; i < 300 && production.Look(0).state == PlaceState::kAtWork && frames < frame; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    production.Stop(0);  // the new one waits for a wake-up
    EXPECT_NE(Ended(0).state, PlaceState::kOk) << frame;
  }
}

// A receiver may be connected long after its number was scanned; it is waited for until the user stops.
TEST_F(ProductionTest, TheWaitForAReceiverIsEndedByTheUser) {
  ReceiverRig& rig = Connect("P");
  rig.on_sent = [](Bytes& bytes) { bytes.clear(); };
  production.SetPorts({"P"});
  ASSERT_EQ(Refused(0, "A"), "begun");
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  EXPECT_EQ(PlaceText(production.Look(0)), "Waiting for the receiver");
  production.Stop(0);
  const PlaceView view = Ended(0);
  EXPECT_EQ(PlaceText(view),
            "STOPPED: Nothing was written, the receiver keeps what it had; switch it off and on before the "
            "next try.");
  EXPECT_THAT(Log().back(), "A 0/0/0  cancelled");
  EXPECT_EQ(ProductionCountText(production), "0 OK, 0 failed");
}

// Three receivers that do not answer: the verdict is that of what was done last, and the turn goes to the
// place that gets free first.
TEST_F(ProductionTest, TheTurnGoesToAFreePlaceAndTheVerdictStays) {
  for (const char* port : {"P", "Q", "R"}) Connect(port).on_sent = [](Bytes& bytes) { bytes.clear(); };
  production.SetPorts({"P", "Q", "R"});
  ProductionTurn turn;
  const auto counts = [](size_t place) { return place != 1; };
  const auto scan = [&](const char* serial) {
    EXPECT_EQ(Refused(turn.next, serial), "begun");
    turn.Begun(production, counts);
    return std::pair(turn.shown, turn.next);
  };
  const auto stop = [&](size_t place) {
    production.Stop(place);
    Ended(place);
    for (const size_t ended : production.TakeEnded()) turn.Ended(production, ended, counts);
    return std::pair(turn.shown, turn.next);
  };
  using At = std::pair<size_t, size_t>;
  EXPECT_EQ(scan("A"), At(0, 2));
  EXPECT_EQ(scan("B"), At(2, 2)) << "none is free";
  EXPECT_EQ(stop(0), At(0, 0)) << "that one is free";
  EXPECT_EQ(stop(2), At(2, 0)) << "as it was";
  EXPECT_EQ(scan("C"), At(0, 2));
  EXPECT_EQ(production.Look(turn.shown).state, PlaceState::kAtWork) << "not another one's verdict";
  turn.Choose(1);
  EXPECT_EQ(scan("D"), At(1, 2));
  EXPECT_EQ(stop(1), At(1, 2));
}

TEST_F(ProductionTest, ASetThatIsGoneIsNotReplacedByAnother) {
  std::vector<OptionSet> sets(1);
  sets[0].name = "Bench";
  sets[0].file = Utf8FromPath(folder / "none.ecf");
  EXPECT_TRUE(ConfigOfSet(recorder.context, sets, "", *form.config));
  EXPECT_FALSE(ConfigOfSet(recorder.context, sets, "Terrace", *form.config));
  EXPECT_TRUE(recorder.Texts().empty());
  form.config = ConfigOfSet(recorder.context, sets, "Bench", *form.config);
  EXPECT_FALSE(recorder.Texts().empty()) << "told why";
  production.SetPorts({"P"});
  EXPECT_EQ(Refused(0, "A"), "Choose a set, or \"As in Settings\".");
}

TEST_F(ProductionTest, ADatabaseThatIsNotReadWholeIsTold) {
  Document document;
  std::mt19937 random(5);
  while (document.sdbs.size() <= kMaximumSdbs) {
    Document one = NewDocument();
    one.sdbs[0].database = MakeRandomDatabase(random, {1, 1, 1, 1, 0, false, false});
    document.sdbs.push_back(std::move(one.sdbs[0]));
  }
  PutFile(folder / "list.bin", BuildBin(recorder.context, document, {}, {}).value());
  production.SetPorts({"gone"});
  EXPECT_EQ(Refused(0, "A"), "begun");
  EXPECT_THAT(recorder.Texts(),
              ElementsAre("Can not open more than 16 SDBs (Opened 16 of 17 SDBs in the bin)."));
  Ended(0);
}

TEST_F(ProductionTest, WhatCannotBeDoneIsRefusedBeforeThePortIsOpened) {
  production.SetPorts({"gone"});
  EXPECT_EQ(Refused(1, "A"), "Choose a port.");
  EXPECT_EQ(Refused(0, " "), "Type or scan the serial number of the receiver.");
  form.fields.database = "";
  EXPECT_EQ(Refused(0, "A"), "Choose the database that the receivers get.");
  form.fields.database = Utf8FromPath(folder / "none.bin");
  EXPECT_EQ(Refused(0, "A"), "The database cannot be read.");
  form.fields.database = Utf8FromPath(folder / "list.bin");
  form.unsaved = {folder / "other.bin", folder / "." / "list.bin"};
  EXPECT_THAT(Refused(0, "A"), StartsWith("The database is open and has changes that are not saved"));
  form.unsaved.pop_back();
  EXPECT_TRUE(recorder.Texts().empty());
  PutFile(folder / "bad.bin", BytesOf("Qx"));
  form.fields.database = Utf8FromPath(folder / "bad.bin");
  EXPECT_EQ(Refused(0, "A"), "Invalid or unknown file format.");
  form.fields.database = Utf8FromPath(folder / "list.bin");
  for (const char* sdb : {"", "0", "2", "x", "1x", "99999999999999999999"}) {
    form.fields.sdb = sdb;
    EXPECT_EQ(Refused(0, "A"), "The database has the SDBs 1 to 1.") << sdb;
  }
  form.fields.sdb = "1";
  form.fields.log = Utf8FromPath(folder / "no" / "log.csv");
  const auto log = production.Begin(0, "A", form);
  EXPECT_TRUE(log && log->text == "Could not write file \"" + form.fields.log + "\"." &&
              !log->detail.empty());
  form.fields.log = "";
  form.fields.keep_copy = true;
  form.copy_folder = folder / "list.bin" / "below a file";
  const auto copy = production.Begin(0, "A", form);
  ASSERT_TRUE(copy);
  EXPECT_THAT(copy->text, StartsWith("No copy can be kept in "));
  EXPECT_THAT(copy->detail, StartsWith(Utf8FromPath(form.copy_folder)));
  EXPECT_TRUE(recorder.Texts().empty()) << "no boxes";
  EXPECT_EQ(none.Count("create_file"), 0);
  form.fields.keep_copy = false;
  ASSERT_EQ(Refused(0, "A"), "begun");
  const PlaceView view = Ended(0);
  EXPECT_EQ(view.state, PlaceState::kFailed);
  EXPECT_THAT(PlaceText(view), testing::AllOf(StartsWith("FAILED: Port is not available"),
                                              HasSubstr("Nothing was written, the receiver keeps what it "
                                                        "had; try again when the port can be opened.")));
}

TEST(ProductionTexts, SayHowFarAndHowItEnded) {
  PlaceView view{"COM1", "A", PlaceState::kAtWork, {TransferPhase::kUpload, 45, 100, 9, 65, 2}, 0, "", 0, 0};
  EXPECT_EQ(VerdictLine(view), "COM1   A   Uploading 45 %, 1:05 left, 2 repeated");
  EXPECT_EQ(VerdictHeadline(PlaceState::kFailed), "FAILED");
  view.state = PlaceState::kFailed;
  EXPECT_THAT(PlaceText(view), HasSubstr("Memory allocation failure."));
}

TEST(Production, PortsAreOfferedWithThoseOfLastTimeTicked) {
  const std::vector<SerialPortInfo> there = {{"COM2", "Modem"}, {"COM17", ""}};
  const auto offers = OfferPorts(there, " COM2 COM9 toolong COM9 ");
  std::vector<std::string> texts, ticked;
  for (const PortOffer& offer : offers) {
    texts.push_back(offer.text);
    if (offer.ticked) ticked.push_back(offer.port);
  }
  EXPECT_THAT(ticked, ElementsAre("COM2", "COM9"));
  EXPECT_EQ(TickedPorts(offers), "COM2 COM9");
  EXPECT_THAT(texts, testing::IsSupersetOf({"COM1", "COM2  Modem", "COM17"}));
  EXPECT_EQ(texts.back(), "COM9") << "it is not there";
  EXPECT_EQ(offers[FirstTicked(offers)].port, "COM2");
  EXPECT_EQ(FirstTicked(OfferPorts(there, "")), 0u);
  ProjectConfig config;
  config.port_name = "COM4";
  const ProductionSettings kept{"kept.bin", "3", "log", "COM2 COM9", true};
  const auto proposed = [&](const ProductionSettings& of, const char* open) {
    const ProductionSettings fields = ProposedFields(of, open, config);
    return fields.database + " " + fields.sdb + " " + fields.log + " " + fields.ports;
  };
  EXPECT_EQ(proposed(kept, ""), "kept.bin 3 log COM2 COM9");
  EXPECT_EQ(proposed(kept, "open.bin"), "open.bin 1 log COM2 COM9");
  EXPECT_EQ(proposed({}, ""), " 1  COM4");
}

}  // namespace
}  // namespace vexa
