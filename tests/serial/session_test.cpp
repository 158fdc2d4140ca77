// What a transfer's session decides and says around its job.
#include "serial/session.h"

#include <gtest/gtest.h>

#include "tests/serial/end_transfer.h"
#include "tests/serial/receiver_rig.h"
#include "tests/serial/shared_messages.h"
#include "tests/serial/upload_frames.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

using Strings = std::vector<std::string>;

struct EndRig {
  Recorder recorder;
  SharedMessages messages;
  std::atomic<bool> pressed{false};
  TransferSession session;

  explicit EndRig(FakeComm& comm) {
    session.port.api = &comm.api;
    session.port.messages = WatchedPortMessages(session.port, session.port_gone, messages.messages());
    session.transfer.context = recorder.context;
    session.transfer.context.messages = messages.messages();
    session.transfer.view.press_cancel = [this] { pressed = true; };
    session.transfer.subject = "\"ASTRA\" as ADB data";
  }
  void Send(const Bytes& file, TransferJob job) {
    const Path path = recorder.context.temporary_folder / "short.urt";
    PutFile(path, file);
    session.transfer.files = {path};
    ProjectConfig config;
    config.port_name = "COM7";
    ASSERT_TRUE(StartTransfer(session, config, job));
  }
  bool Until(const std::function<bool()>& done) {
    for (int i = 0; i < 2000 && !done(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return done();
  }
};

const std::set<std::string> kUnplugged = {"clear_error", "modem_status", "read",      "write",
                                          "wait_event",  "wait",         "close_file"};

TEST(Session, APortThatGoesWhenItIsNotNeededEndsNothing) {
  const Bytes data(50, 0xAB);
  LoaderMemory memory;
  StoreBytes(memory, 0, 0, data);
  ReceiverRig receiver({}, memory);
  EndRig rig(receiver.comm);
  rig.session.transfer.region_files = {rig.recorder.context.temporary_folder / "region"};
  // The receiver restarts while the data is being opened.
  rig.session.transfer.decode = [&](bool crc_failed) {
    receiver.comm.Fail(kUnplugged);
    return rig.Until([&] { return rig.session.port_gone.load(); }) && !crc_failed;
  };
  rig.Send(RequestFile({data}), TransferJob::kDownload);
  ASSERT_TRUE(rig.Until([&] { return rig.session.port_gone.load(); }));
  EXPECT_FALSE(IsPortMissed(rig.session));
  ASSERT_TRUE(rig.Until([&] { return rig.pressed.load(); }));
  EXPECT_TRUE(EndTransfer(rig.session));
  EXPECT_EQ(rig.session.transfer.receive_outcome, 1);
  EXPECT_TRUE(rig.session.transfer.decoded);
  EXPECT_EQ(rig.messages.Texts(), Strings{});
  const std::string text = TransferOutcomeText(rig.session);
  EXPECT_TRUE(text.starts_with("Data download completed   3 packets   ")) << text;  // the request's, and two
}

TEST(Session, APortThatGoesTooEarlyIsMissed) {
  FakeComm comm;
  EndRig rig(comm);
  rig.Send(UploadFile(Bytes(50, 1)), TransferJob::kAdb);
  ASSERT_TRUE(comm.AwaitCount("write", 1));
  EXPECT_FALSE(IsPortMissed(rig.session));
  comm.Fail(kUnplugged);
  ASSERT_TRUE(rig.Until([&] { return IsPortMissed(rig.session); }));
  EXPECT_TRUE(EndTransfer(rig.session));  // nothing is left to close
  EXPECT_EQ(rig.session.outcome, 0);
  EXPECT_EQ(rig.messages.Texts(), Strings{});
  const std::string text = TransferOutcomeText(rig.session);
  EXPECT_TRUE(text.starts_with("Failed: COM7 is not available any more.   0 packets   ")) << text;
}

TEST(Session, TheStatusLinesSayWhatIsSentThatNobodyAnswersAndHowItEnded) {
  FakeComm comm;
  EndRig rig(comm);
  rig.Send(UploadFile(Bytes(50, 1)), TransferJob::kAdb);
  ASSERT_TRUE(comm.AwaitCount("write", 1));
  EXPECT_EQ(TransferStatusLine(rig.session), "Receiver not connected.   \"ASTRA\" as ADB data");
  rig.session.transfer.heard_at -= 72000;
  EXPECT_TRUE(TransferStatusLine(rig.session)
                  .starts_with("Receiver not connected.   \"ASTRA\" as ADB data   no answer for 1:12"));
  comm.Feed(Bytes{0x55});
  EXPECT_TRUE(rig.Until([&] { return TransferStatusLine(rig.session).ends_with("as ADB data"); }));
  // Nobody is waited for any more.
  rig.session.transfer.heard_at -= 72000;
  for (std::atomic<bool>* done : {&rig.session.transfer.line_done, &rig.session.job_ended}) {
    *done = true;
    EXPECT_TRUE(TransferStatusLine(rig.session).ends_with("as ADB data"));
    *done = false;
    EXPECT_FALSE(TransferStatusLine(rig.session).ends_with("as ADB data"));
  }
  rig.session.transfer.packets_moved = 1;
  rig.session.transfer.packets_repeated = 2;
  EXPECT_TRUE(EndTransfer(rig.session));
  rig.session.seconds = 1.26;
  EXPECT_EQ(TransferOutcomeText(rig.session),
            "Cancelled: Receiver not connected.   1 packet   2 packets repeated   1.3 s");
  rig.session.said = "Verifying";
  EXPECT_TRUE(TransferOutcomeText(rig.session).starts_with("Cancelled: Verifying   1 packet"));
  EXPECT_TRUE(TransferStatusLine(rig.session).starts_with("Verifying   \"ASTRA\""));
  TellFailure(rig.session.transfer, "File access error\nin two lines", "");
  EXPECT_EQ(TransferOutcomeText(rig.session),
            "Failed: File access error   1 packet   2 packets repeated   1.3 s");

  TransferSession download;
  download.kind = TransferJob::kDownload;
  download.outcome = download.transfer.receive_outcome = 1;
  EXPECT_TRUE(
      TransferOutcomeText(download).starts_with("Failed: The received data could not be opened.   0 p"));
  download.transfer.crc_failed = true;
  EXPECT_TRUE(TransferOutcomeText(download).starts_with("Failed: CRC Verification - failed   "));
}

TEST(Session, TheSubjectNamesWhatIsChosen) {
  Document document = NewDocument();
  document.sdbs.resize(3);
  document.sdbs[0].name = "ONE";
  document.sdbs[2].name = "Caf\xE9";
  document.ubis.resize(2);
  document.ubis[1].name = "Box";
  EXPECT_EQ(UploadSubject(document, {1, 0}, TransferJob::kAdb), "\"ONE\" as ADB data");
  EXPECT_EQ(UploadSubject(document, {5, 2}, TransferJob::kSdb),
            "\"ONE\", \"Caf\xC3\xA9\", \"Box\" as SDB data");
  document.names = FindCodePage("Windows-1251");
  EXPECT_EQ(UploadSubject(document, {4, 0}, TransferJob::kAdb), "\"Caf\u0439\" as ADB data");
}

TEST(Session, ThePortOfThisProgramsConsoleIsNotBlamedOnAnother) {
  FakeComm comm;
  EndRig rig(comm);
  rig.session.console_port = "COM7";
  ProjectConfig config;
  config.port_name = "COM7";
  EXPECT_FALSE(StartTransfer(rig.session, config, TransferJob::kAdb));
  EXPECT_FALSE(TestPort(rig.session, config));
  const std::string text = "The console is connected to COM7.\nDisconnect it and try again.";
  EXPECT_EQ(rig.messages.Texts(), (Strings{text, text}));
  EXPECT_EQ(comm.Count("create_file"), 0);
  config.port_name = "COM8";
  EXPECT_TRUE(TestPort(rig.session, config));
}

TEST(Session, WhatArrivesBeforeTheJobBeginsIsNoAnswer) {
  FakeComm comm;
  EndRig rig(comm);
  const auto start = comm.api.start_thread;
  comm.api.start_thread = [&](std::thread& thread, std::function<void()> run) {
    if (comm.Count("start_thread") == 1) {  // the job's, behind the reader's
      EXPECT_TRUE(comm.AwaitCount("read", 1));
      comm.Feed(Bytes{kEtb});
      EXPECT_TRUE(comm.AwaitCount("read", 2));
    }
    return start(thread, std::move(run));
  };
  rig.Send(RequestFile({Bytes(10)}), TransferJob::kDownload);
  EXPECT_FALSE(rig.session.transfer.download_started);
  EXPECT_TRUE(CancelTransfer(rig.session));
}

}  // namespace
}  // namespace vexa
