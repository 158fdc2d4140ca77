// The jobs against a peer that answers inside the write itself, so that every byte and its order is certain.
#include "serial/transfer.h"

#include <gtest/gtest.h>

#include <future>
#include <numeric>
#include <system_error>
#include <utility>

#include "core/bytes.h"
#include "image/crc32_mpeg2.h"
#include "image/line_frame.h"
#include "image/transfer_files.h"
#include "tests/serial/shared_messages.h"
#include "tests/support/recorder.h"

namespace vexa {
namespace {

Bytes Frame(const Bytes& payload, int sum_error = 0) {
  ByteWriter writer;
  writer.U8(kStx);
  writer.U24Big(static_cast<uint32_t>(payload.size()));
  writer.Append(payload);
  writer.U32Big(std::accumulate(payload.begin(), payload.end(), static_cast<uint32_t>(sum_error)));
  writer.U8(kEtx);
  return writer.bytes();
}

Bytes Urt(const std::vector<Bytes>& packets, const char* magic = "MZ") {
  ByteWriter writer;
  writer.Text(magic, 2);
  writer.U32Big(static_cast<uint32_t>(packets.size()));
  for (const Bytes& packet : packets) writer.Append(packet);
  return writer.bytes();
}

Bytes Join(Bytes one, const Bytes& two) {
  one.insert(one.end(), two.begin(), two.end());
  return one;
}

struct TransferRig {
  Recorder recorder;
  SharedMessages messages;
  Transfer transfer;
  std::vector<Bytes> sent;
  std::vector<std::string> statuses, results;
  std::vector<int> codes;
  int cancels = 0, purges = 0;
  std::function<void(const Bytes&)> peer;

  TransferRig() {
    transfer.context = recorder.context;
    transfer.context.messages = messages.messages();
    transfer.view.status = [this](const std::string& text) { statuses.push_back(text); };
    transfer.view.result = [this](const std::string& text) { results.push_back(text); };
    transfer.view.press_cancel = [this] { ++cancels; };
    transfer.report = [this](int code) { codes.push_back(code); };
    transfer.line.purge = [this] { ++purges; };
    transfer.line.write = [this](std::span<const uint8_t> bytes) {
      sent.emplace_back(bytes.begin(), bytes.end());
      if (peer) peer(Bytes(sent.back()));
      return bytes.size();
    };
  }
  Path Put(const char* name, const Bytes& content) {
    const Path path = recorder.context.temporary_folder / name;
    PutFile(path, content);
    transfer.files.push_back(path);
    return path;
  }
  void Receive(const Bytes& bytes) { TransferReceive(transfer, bytes); }
  // Answers a poll with ACK, then ENQ, and each frame with ENQ.
  void AnswerUpload(const Bytes& bytes) {
    if (bytes.size() == 6) Receive({kXon});
    if (bytes.size() == 1 && bytes[0] == kEtb) {
      Receive({kAck});
      Receive({kEnq});
    }
    if (bytes.size() > 6) Receive({kEnq});
  }
  size_t Times(const Bytes& bytes) const {
    return static_cast<size_t>(std::count(sent.begin(), sent.end(), bytes));
  }
};

TEST(TransferReceive, LooksAtWhatWasSeenBeforeTheChunk) {
  struct Row {
    const char* name;
    std::vector<Bytes> chunks;
    bool xon, ack, enq, nak;
  };
  const Row rows[] = {{"ENQ behind the first ACK is lost", {{kAck, kEnq}}, false, true, false, false},
                      {"ENQ in the next chunk counts", {{kAck}, {kEnq}}, false, true, true, false},
                      {"NAK and ENQ need an ACK", {{kNak, kEnq}}, false, false, false, false},
                      {"NAK after ENQ is not looked at", {{kAck}, {kEnq}, {kNak}}, false, true, true, false},
                      {"both in one chunk", {{kAck}, {kNak, kEnq}}, false, true, true, true},
                      {"XON at any time", {{0x00, kXon, kAck}}, true, true, false, false}};
  for (const Row& row : rows) {
    TransferRig rig;
    for (const Bytes& chunk : row.chunks) rig.Receive(chunk);
    EXPECT_EQ(rig.transfer.xon, row.xon) << row.name;
    EXPECT_EQ(rig.transfer.ack, row.ack) << row.name;
    EXPECT_EQ(rig.transfer.enq, row.enq) << row.name;
    EXPECT_EQ(rig.transfer.nak, row.nak) << row.name;
  }
}

TEST(Upload, TwoFilesByteByByte) {
  TransferRig rig;
  const Bytes one = Frame(Bytes(300, 1)), two = Frame({2, 3, 2, 3, 4, 5, 6}), three = Frame(Bytes(10, 9), 5);
  rig.Put("a.urt", Urt({one, two}));
  rig.Put("b.urt", Urt({three}));  // a wrong sum goes out as it stands
  int wake_ups = 0;
  rig.peer = [&](const Bytes& bytes) {
    if (bytes.size() == 6 && ++wake_ups < 3) return;
    rig.AnswerUpload(bytes);
  };
  EXPECT_EQ(UploadAdbThread(rig.transfer), 1);
  const Bytes wake(kUploadWakeUp.begin(), kUploadWakeUp.end()), syn{kSyn}, etb{kEtb};
  EXPECT_EQ(rig.sent, (std::vector<Bytes>{wake, wake, wake, syn, syn, syn, etb, one, two, etb, three}));
  EXPECT_EQ(rig.statuses,
            (std::vector<std::string>{"Receiver not connected.", "Wait...", "ADB upload inprogress.",
                                      "ADB upload completed.", "User Box Info upload inprogress.",
                                      "User Box Info upload completed."}));
  EXPECT_EQ(rig.cancels, 1);
  for (const Path& file : rig.transfer.files) EXPECT_FALSE(std::filesystem::exists(file));
}

// A cancelled download leaves a frame on the line whose data looks like answers.
TEST(Upload, BytesFromBeforeTheFirstSignOfLifeDoNotCount) {
  using Clock = std::chrono::steady_clock;
  struct Row {
    const char* name;
    int (*job)(Transfer&);
    Bytes wake;  // empty: none
  };
  const Row rows[] = {
      {"upload", UploadAdbThread, Bytes(kUploadWakeUp.begin(), kUploadWakeUp.end())},
      {"download", UploadDownloadScriptThread, Bytes(kDownloadWakeUp.begin(), kDownloadWakeUp.end())},
      {"console", UploadUrtPacketThread, {}}};
  for (const Row& row : rows) {
    TransferRig rig;
    const Bytes one = Frame({1, 1, 1, 1});
    rig.Put("a.urt", Urt({one}));
    std::atomic<bool> begun{false}, woken{false};
    Clock::time_point first, last_late;
    rig.peer = [&](const Bytes& bytes) {
      if (!woken.exchange(true)) first = Clock::now();
      rig.AnswerUpload(bytes);
    };
    rig.transfer.deaf = !row.wake.empty();
    std::thread late([&] {
      for (int i = 0; i < 8 && !woken; ++i) {
        last_late = Clock::now();
        const Bytes data(40, i % 2 ? kEnq : kAck);
        row.job == UploadDownloadScriptThread ? DownloadReceive(rig.transfer, data)
                                              : rig.Receive(Join({kXon}, data));
        begun = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(25));
      }
    });
    rig.transfer.start_thread = [](std::thread&, const std::function<void()>&) { return false; };
    while (!begun) std::this_thread::yield();
    row.job(rig.transfer);
    late.join();
    EXPECT_GE(first - last_late, std::chrono::milliseconds(50)) << row.name;
    const Bytes syn{kSyn};
    std::vector<Bytes> expected{{kEtb}, one};
    if (!row.wake.empty()) expected.insert(expected.begin(), {row.wake, syn, syn, syn});
    EXPECT_EQ(rig.sent, expected) << row.name;
  }
}

// The receiver of an interrupted download repeats its frame after seconds of silence: into the polls.
TEST(Upload, AConsoleUploadTellsAnswersFromALateFrame) {
  const Bytes late = Frame({0xF2, 0, 'T', 'V', kAck, kEnq, kNak, kEnq}), one = Frame({1, 1, 1, 1});
  Bytes damaged = late;
  damaged[8] ^= 0x40;
  std::vector<Bytes> apart;
  for (const uint8_t byte : late) apart.push_back({byte});
  const Bytes greeting = Join(BytesOf("Loader 1\r\n"), {kAck});
  const Bytes etb{kEtb}, can{kCan};
  struct Row {
    const char* name;
    std::vector<Bytes> early, late;  // chunks for the first ETB, with a pause longer than a frame's between
    std::vector<Bytes> sent;
  };
  const Row rows[] = {{"in one chunk", {late}, {}, {etb, can, etb, one}},
                      {"byte by byte", apart, {}, {etb, can, etb, one}},
                      {"the end of one in front", {{kAck}, {kEnq}, {0x80, 3}}, {late}, {etb, can, etb, one}},
                      {"behind an ACK", {{kAck}}, apart, {etb, can, etb, one}},
                      {"damaged", {damaged, {kAck}, {kEnq}}, {}, {etb, etb, one}},
                      {"an ACK in text", {greeting}, {{kEnq}}, {etb, one}}};
  for (const Row& row : rows) {
    TransferRig rig;
    rig.Put("a.urt", Urt({one}));
    rig.transfer.bytes_per_second = 40;  // 100 ms without data around an answer
    bool answered = false;
    rig.peer = [&](const Bytes& bytes) {
      if (bytes != etb || std::exchange(answered, true)) return rig.AnswerUpload(bytes);
      for (const auto* chunks : {&row.early, &row.late}) {
        for (const Bytes& chunk : *chunks) rig.Receive(chunk);
        if (!chunks->empty()) std::this_thread::sleep_for(std::chrono::milliseconds(130));
      }
    };
    auto job = std::async(std::launch::async, UploadUrtPacketThread, std::ref(rig.transfer));
    if (job.wait_for(std::chrono::seconds(10)) != std::future_status::ready) {
      rig.transfer.cancel = true;
      Wake(rig.transfer);
    }
    EXPECT_EQ(job.get(), 1) << row.name;
    EXPECT_EQ(rig.sent, row.sent) << row.name;
  }
}

TEST(Upload, PacketsAskedForBeforeAnyPollArePolledFor) {
  for (const auto job : {UploadAdbThread, UploadUrtPacketThread}) {
    TransferRig rig;
    const Bytes one = Frame({1, 1, 1, 1}), two = Frame({2});
    rig.Put("a.urt", Urt({one, two}));
    if (job == UploadUrtPacketThread) {
      rig.Receive({kAck});
      rig.Receive({kEnq});
    }
    rig.peer = [&](const Bytes& bytes) {
      if (bytes.size() > 1 || bytes[0] != kSyn) return rig.AnswerUpload(bytes);
      rig.Receive({kAck});
      rig.Receive({kNak});
      rig.Receive({kEnq});
    };
    EXPECT_EQ(job(rig.transfer), 1);
    const std::vector<Bytes> expected{{kEtb}, one, two};
    EXPECT_EQ(std::vector<Bytes>(rig.sent.end() - 3, rig.sent.end()), expected);
  }
}

// A line that never is quiet is not waited for without end.
TEST(Upload, ALineThatIsNeverQuietIsWokenAllTheSame) {
  TransferRig rig;
  using Clock = std::chrono::steady_clock;
  std::atomic<bool> stop{false};
  Clock::duration longest{};  // gap in the noise: a busy machine may make one
  std::thread noise([&] {
    for (auto last = Clock::now();; std::this_thread::sleep_for(std::chrono::milliseconds(5))) {
      longest = std::max(longest, Clock::now() - last);
      if (stop) return;
      last = Clock::now();
      rig.Receive({0x55});
    }
  });
  rig.peer = [&](const Bytes&) { rig.transfer.cancel = true; };
  const auto start = Clock::now();
  EXPECT_EQ(UploadAdbThread(rig.transfer), 0);
  const auto waited = Clock::now() - start;
  stop = true;
  noise.join();
  EXPECT_EQ(rig.sent.size(), 1u);
  if (longest < std::chrono::milliseconds(50)) {
    EXPECT_GE(waited, std::chrono::milliseconds(4800));
  }
  EXPECT_LT(waited, std::chrono::milliseconds(5900));
}

TEST(Upload, APortThatTakesNothingIsNotFlooded) {
  TransferRig rig;
  int polls = 0;
  rig.transfer.line.write = [&](std::span<const uint8_t>) { return ++polls, size_t{0}; };
  std::thread job([&] { UploadUrtPacketThread(rig.transfer); });
  std::this_thread::sleep_for(std::chrono::milliseconds(400));
  rig.transfer.cancel = true;
  Wake(rig.transfer);
  job.join();
  EXPECT_GE(polls, 2);
  EXPECT_LE(polls, 10);
}

TEST(Upload, ThePortMayGoOnlyWhenTheLastPacketOfTheLastFileIsHandedOver) {
  const Bytes one = Frame({1, 1, 1, 1}), two = Frame({2}), three = Frame({3, 3, 3});
  struct Row {
    const char* name;
    int (*job)(Transfer&);
    bool taken, done;  // the last packet by the port; afterwards
  };
  const Row rows[] = {{"two files", UploadAdbThread, true, true},
                      {"the last packet was cut", UploadAdbThread, false, false},
                      {"one of two files", UploadSdbThread, true, true},
                      {"console", UploadUrtPacketThread, true, true},
                      {"a script", UploadDownloadScriptThread, true, false}};
  for (const Row& row : rows) {
    TransferRig rig;
    rig.Put("a.urt", Urt({one, two}));
    if (row.job != UploadDownloadScriptThread) rig.Put("b.urt", Urt({two, three}));
    rig.transfer.start_thread = [](std::thread&, const std::function<void()>&) { return false; };
    rig.transfer.line.write = [&](std::span<const uint8_t> bytes) {
      EXPECT_FALSE(rig.transfer.line_done) << row.name;
      const Bytes sent(bytes.begin(), bytes.end());
      rig.AnswerUpload(sent);
      return sent == three && !row.taken ? 2 : bytes.size();
    };
    row.job(rig.transfer);
    EXPECT_EQ(rig.transfer.line_done, row.done) << row.name;
  }
}

TEST(Upload, OneNakRepeatsEveryPacketUntilItsEnq) {
  TransferRig rig;
  const Bytes one = Frame({1, 1, 1, 1}), two = Frame({2, 2, 2, 2}), three = Frame({3, 3, 3, 3});
  rig.Put("a.urt", Urt({one, two, three}));
  rig.peer = [&](const Bytes& bytes) {
    if (bytes.size() <= 6) return rig.AnswerUpload(bytes);
    if (rig.Times(bytes) == 1 && bytes == one) rig.Receive({kNak});
    if (rig.Times(bytes) == 4) rig.Receive({kEnq});
  };
  EXPECT_EQ(UploadAdbThread(rig.transfer), 1);
  EXPECT_EQ(rig.Times(one), 4u);
  EXPECT_EQ(rig.Times(two), 4u);    // NAK stays seen
  EXPECT_EQ(rig.Times(three), 1u);  // the last is never confirmed
}

// A line that is faster than its settings say owes nothing for what an ENQ has told to have arrived.
TEST(Upload, ARepeatWaitsForNoMoreThanItsOwnPacket) {
  TransferRig rig;
  std::vector<Bytes> packets;
  for (uint8_t i = 0; i < 40; ++i) packets.push_back(Frame(Bytes(491, i)));
  rig.Put("a.urt", Urt(packets));
  rig.transfer.bytes_per_second = 5000;  // 0.1 s a packet
  const Bytes& refused = packets[30];
  using Clock = std::chrono::steady_clock;
  Clock::time_point first;
  Clock::duration wait{};
  rig.peer = [&](const Bytes& bytes) {
    if (bytes == refused && rig.Times(bytes) == 1) {
      first = Clock::now();
      return rig.Receive({kNak});
    }
    if (bytes == refused) wait = Clock::now() - first;
    rig.AnswerUpload(bytes);
  };
  EXPECT_EQ(UploadAdbThread(rig.transfer), 1);
  EXPECT_EQ(rig.Times(refused), 2u);
  EXPECT_GE(wait, std::chrono::milliseconds(90));
  EXPECT_LT(wait, std::chrono::milliseconds(1500));  // 31 packets: 3 s
}

TEST(Upload, DamagedFilesAreReportedByTheConsole) {
  const Bytes good = Frame({1, 2, 3}), no_stx = BytesOf("xyz-no-frame");
  Bytes no_etx = good, cut = good;
  no_etx.back() = 0;
  cut.resize(6);
  struct Row {
    const char* name;
    Bytes file;
    std::vector<int> codes;
    std::vector<Bytes> packets;  // sent before the third poll ends it
  };
  const Row rows[] = {{"good", Urt({good}), {1}, {good}},
                      {"first letter right", Urt({good}, "Mx"), {1}, {good}},
                      {"second letter right", Urt({good}, "xZ"), {1}, {good}},
                      {"no magic", Urt({good}, "xx"), {-6, -6, 23}, {}},
                      {"empty", {}, {-6, -6, 23}, {}},
                      {"no packets", Urt({}), {-1, -1, 23}, {}},
                      {"no STX", Urt({no_stx}), {-1, -1, 23}, {}},
                      {"fewer packets than counted", Urt({good, {}}), {-1, -1, 23}, {good, good}},
                      {"no ETX, the last", Urt({no_etx}), {-3, 1}, {no_etx}},
                      {"cut", Urt({cut}), {-3, 1}, {cut}}};
  for (const Row& row : rows) {
    TransferRig rig;
    rig.Put("a.urt", row.file);
    int polls = 0;
    rig.peer = [&](const Bytes& bytes) {
      if (bytes == Bytes{kEtb} && ++polls == 3) {
        rig.transfer.cancel = true;
        return;
      }
      if (bytes == Bytes{kEtb}) return rig.AnswerUpload(bytes);
      rig.Receive({kEnq});
    };
    EXPECT_EQ(UploadUrtPacketThread(rig.transfer), row.codes.back() == 1) << row.name;
    EXPECT_EQ(rig.codes, row.codes) << row.name;
    std::vector<Bytes> packets;
    for (const Bytes& bytes : rig.sent) {
      if (bytes.size() > 1) packets.push_back(bytes);
    }
    EXPECT_EQ(packets, row.packets) << row.name;
    EXPECT_FALSE(rig.transfer.console_active) << row.name;
  }
}

TEST(Upload, AFileThatCannotBeOpenedEndsTheJob) {
  struct Row {
    int (*job)(Transfer&);
    const char* text;
    int cancels;
  };
  const Row rows[] = {{UploadAdbThread, "File access error - UploadAdbThread", 1},
                      {UploadSdbThread, "File access error - UploadSdbThread", 1},
                      {UploadDownloadScriptThread, "File access error - UploadDownloadScriptThread", 1},
                      {UploadUrtPacketThread, "File access error - UploadURTPacketThread", 0}};
  for (const Row& row : rows) {
    TransferRig rig;
    rig.transfer.files = {rig.recorder.context.temporary_folder / "none"};
    rig.peer = [&](const Bytes& bytes) { rig.AnswerUpload(bytes); };
    EXPECT_EQ(row.job(rig.transfer), 0);
    EXPECT_EQ(rig.messages.Texts(), std::vector<std::string>{row.text});
    EXPECT_EQ(rig.cancels, row.cancels) << row.text;
    EXPECT_FALSE(rig.transfer.ack || rig.transfer.enq) << row.text;
  }
}

TEST(Upload, TheScriptWarnsOfSilenceAtTheExactSecond) {
  for (const int step : {15, 16}) {
    TransferRig rig;
    int asked = 0;
    rig.transfer.seconds_of_hour = [&] { return asked++ == 0 ? 100 : 100 + step; };
    rig.Put("a.urt", Urt({Frame({1})}));
    int polls = 0;
    rig.peer = [&](const Bytes& bytes) {
      if (bytes.size() == 6) rig.Receive({kXon});
      if (bytes == Bytes{kEtb} && ++polls == 3) rig.transfer.cancel = true;
    };
    rig.transfer.port_name = "COM7";
    EXPECT_EQ(UploadDownloadScriptThread(rig.transfer), 0);
    for (const Message& message : rig.messages.All()) EXPECT_EQ(message.detail, "COM7");
    const auto texts = rig.messages.Texts();
    ASSERT_EQ(texts.size(), step == 15 ? 1u : 0u);
    if (texts.empty()) continue;
    EXPECT_EQ(texts[0],
              "Problem:\tNo response from target\nCaution:\t1. Target loader may not be running properly\n"
              "\t2. Serial cable connection may be faulty\n\t3. Port settings may be not correct");
  }
  TransferRig rig;
  int asked = 0;  // since the first packet
  bool sending = false;
  rig.transfer.seconds_of_hour = [&] {
    if (sending && ++asked == 3) rig.transfer.cancel = true;
    return sending ? 115 : 100;
  };
  rig.Put("a.urt", Urt({Frame(Bytes(9, 1)), Frame({2})}));
  rig.peer = [&](const Bytes& bytes) {
    if (bytes.size() <= 6) return rig.AnswerUpload(bytes);
    sending = true;
  };
  rig.transfer.port_name = "COM7";
  EXPECT_EQ(UploadDownloadScriptThread(rig.transfer), 0);
  for (const Message& message : rig.messages.All()) EXPECT_EQ(message.detail, "COM7");
  EXPECT_EQ(
      rig.messages.Texts(),
      std::vector<std::string>{
          "Problem:\tNo response from target\nCaution:\t1. Target loader may not be running properly\n"
          "\t2. Serial cable connection may be faulty\nSolution:\t1. Cancel the download process in tool\n"
          "\t2. Reboot the target\n\t3.Retry once again"});
}

// A receiver of one region that answers each request from a list of frames.
struct RegionRig : TransferRig {
  std::vector<std::vector<Bytes>> regions;  // what answers each ENQ or NAK, in order
  size_t region = 0, next = 0, piece = 0;   // piece: bytes in a chunk, 0: whole

  void Deliver(const Bytes& bytes) {
    for (size_t i = 0; i < bytes.size();) {
      const size_t count = piece == 0 ? bytes.size() : std::min(piece, bytes.size() - i);
      DownloadReceive(transfer, std::span(bytes).subspan(i, count));
      i += count;
    }
  }
  int Run() {
    transfer.script_done = true;
    transfer.regions = static_cast<uint32_t>(regions.size());
    transfer.region_files = {recorder.context.temporary_folder / "r1",
                             recorder.context.temporary_folder / "r2"};
    peer = [this](const Bytes& bytes) {
      if (bytes == Bytes{kAck}) {
        ++region;
        next = 0;
      }
      if (bytes != Bytes{kEnq} && bytes != Bytes{kNak}) return;
      const auto& frames = regions[region - 1];
      if (next < frames.size()) Deliver(frames[next++]);
    };
    Deliver({kEtb});
    return DownloadReceiveThread(transfer);
  }
};

Bytes Header(const Bytes& data, std::vector<uint8_t> packets, uint32_t crc_error = 0,
             uint32_t extra_entries = 0) {
  ByteWriter writer;
  writer.U8(0xF1);
  writer.Fill(23, 0);
  writer.U32Big(static_cast<uint32_t>(data.size()));
  writer.Fill(16, 0);
  writer.U24Big(static_cast<uint32_t>(packets.size()) + extra_entries);
  for (const uint8_t count : packets) {
    writer.Fill(4, 0);
    writer.U8(count);
    writer.Fill(9, 0);
  }
  writer.U32Big(Crc32Mpeg2(data) ^ crc_error);
  return writer.bytes();
}

Bytes Data(const Bytes& data) {
  Bytes payload(12, 0);
  payload[0] = 0xF2;
  payload.insert(payload.end(), data.begin(), data.end());
  return payload;
}

TEST(Download, TwoRegionsInPiecesOfAnySize) {
  const Bytes a = {kStx, kEtx, kEtb, kAck, kEtx, kNak, 7}, b(500, kEtx), c = {1, 2};
  for (const size_t piece : {0u, 1u, 3u}) {
    RegionRig rig;
    rig.piece = piece;
    PutFile(rig.recorder.context.temporary_folder / "r1", Bytes{0x77});  // data goes behind what is there
    rig.regions = {{Frame(Header(Join(a, b), {1, 1})), Frame(Data(a)), Frame(Data(b))},
                   {Frame(Header(c, {1})), Frame(Data(c))}};
    bool failed = true;
    Bytes first, second;
    rig.transfer.decode = [&](bool crc_failed) {
      failed = crc_failed;
      first = *ReadWholeFile(rig.transfer.region_files[0]);
      second = *ReadWholeFile(rig.transfer.region_files[1]);
      return true;
    };
    EXPECT_EQ(rig.Run(), 1) << piece;
    const Bytes ack{kAck}, enq{kEnq}, can{kCan};
    EXPECT_EQ(rig.sent, (std::vector<Bytes>{ack, enq, enq, enq, enq, ack, enq, enq, enq, can})) << piece;
    EXPECT_FALSE(failed);
    EXPECT_EQ(first, Join({0x77}, Join(a, b))) << piece;
    EXPECT_EQ(second, c) << piece;
    EXPECT_TRUE(rig.transfer.line_done);
    EXPECT_EQ(rig.results,
              (std::vector<std::string>{"CRC Verification - Success", "CRC Verification - Success"}));
    EXPECT_FALSE(std::filesystem::exists(rig.transfer.region_files[0]));
  }
}

TEST(Download, EveryBadPacketIsAskedForAgainOnce) {
  const Bytes data = {9, 8, 7};
  const Bytes header = Frame(Header(data, {1})), good = Frame(Data(data));
  Bytes no_etx = good, long_one = good;
  no_etx.back() = 0x55;
  long_one[1] = 0x20;  // more than 8192 bytes
  struct Row {
    const char* name;
    std::vector<Bytes> frames;
  };
  const Row rows[] = {{"wrong sum", {header, Frame(Data(data), 1), good}},
                      {"wrong sum of the header", {Frame(Header(data, {1}), 1), header, good}},
                      {"table beyond the header", {Frame(Header(data, {1}, 0, 200)), header, good}},
                      {"no ETX, the rest of the chunk dropped", {header, Join(no_etx, good), good}},
                      {"too long", {header, long_one, good}}};
  for (const Row& row : rows) {
    RegionRig rig;
    rig.regions = {row.frames};
    EXPECT_EQ(rig.Run(), 1) << row.name;
    EXPECT_EQ(rig.Times({kNak}), 1u) << row.name;
    EXPECT_EQ(rig.Times({kEnq}), 3u) << row.name;
    EXPECT_EQ(rig.purges, 1 + 3 + 2)
        << row.name;  // at the start, before each ENQ, at the bad one, before NAK
    EXPECT_EQ(rig.results, std::vector<std::string>{"CRC Verification - Success"}) << row.name;
  }
}

TEST(Download, AFailedCrcStaysFailed) {
  const Bytes data = {9, 8, 7};
  RegionRig rig;
  rig.regions = {{Frame(Header(data, {1}, 1)), Frame(Data(data))},
                 {Frame(Header(data, {1})), Frame(Data(data))}};
  bool failed = false;
  rig.transfer.decode = [&](bool crc_failed) { return !(failed = crc_failed); };
  EXPECT_EQ(rig.Run(), 1);
  EXPECT_TRUE(failed);
  EXPECT_EQ(rig.results.back(), "CRC Verification - failed \n Retry once again");
  EXPECT_EQ(ReadWholeFile(rig.transfer.region_files[0]), data);  // kept for whoever wants it all the same
}

TEST(Download, DataThatCannotBeKeptIsNoFailedCrc) {
  const Bytes data(70000, 9);  // more than a file's buffer
  for (int step = 1; step <= 40; ++step) {
    RegionRig rig;
    rig.transfer.context.files = &rig.recorder.files;
    rig.regions = {{Frame(Header(data, {10}))}};
    for (size_t at = 0; at < data.size(); at += 7000)
      rig.regions[0].push_back(Frame(Data(Bytes(data.begin(), data.begin() + 7000))));
    int writes = 0;
    bool failed = false;
    const char* refused = kRegionFile;
    const auto write = rig.recorder.files.write;
    const auto finish = rig.recorder.files.finish;
    const auto full = std::make_error_code(std::errc::no_space_on_device);
    rig.recorder.files.write = [&](std::FILE* file, std::span<const uint8_t> bytes) -> Outcome {
      if (++writes != step) return write(file, bytes);
      failed = true;
      refused = bytes.size() == 7000 + 16 || bytes.size() < 100 ? kPacketFile : kRegionFile;
      return full;
    };
    rig.recorder.files.finish = [&](std::FILE* file) {
      const Outcome finished = finish(file);
      if (++writes != step) return finished;
      failed = true;
      return Outcome(full);
    };
    rig.transfer.decode = [](bool) { return true; };
    const int outcome = rig.Run();
    if (!failed) {
      EXPECT_EQ(outcome, 1) << step;
      continue;
    }
    EXPECT_EQ(outcome, 0) << step;
    EXPECT_FALSE(rig.transfer.crc_failed || rig.transfer.line_done || rig.transfer.decoded) << step;
    const auto shown = rig.messages.All();
    const auto texts = rig.messages.Texts();
    ASSERT_EQ(texts.size(), 1u) << step;
    EXPECT_TRUE(texts[0].starts_with("The received data could not be written to \"")) << texts[0];
    EXPECT_EQ(shown[0].detail, Recorder::FullDisk(rig.recorder.context.temporary_folder / refused));
    EXPECT_EQ(rig.cancels, 1) << step;
    EXPECT_EQ(FailureOf(rig.transfer), texts[0]);
  }
}

TEST(Download, FilesAndThreadsThatCannotBeMade) {
  const Bytes data = {1};
  RegionRig rig;
  rig.transfer.context.files = &rig.recorder.files;
  rig.recorder.FailStep(1);
  rig.regions = {{Frame(Header(data, {1})), Frame(Data(data))}};
  EXPECT_EQ(rig.Run(), 0);
  EXPECT_EQ(
      rig.messages.Texts(),
      std::vector<std::string>{"Terminated Receiving.\nCancel and close the Application and Retry !!!"});
  EXPECT_EQ(rig.cancels, 1);

  TransferRig packet;
  packet.transfer.context.files = &packet.recorder.files;
  packet.recorder.FailStep(1);
  packet.transfer.script_done = packet.transfer.download_started = true;
  DownloadReceive(packet.transfer, Bytes{kStx, 0, 0});
  EXPECT_EQ(packet.messages.Texts(), std::vector<std::string>{"File Access Error"});
  EXPECT_FALSE(packet.transfer.in_packet);
  DownloadReceive(packet.transfer, Bytes{kStx, 0, 0});
  EXPECT_TRUE(packet.transfer.in_packet);

  TransferRig script;
  script.Put("a.urt", Urt({Frame({1})}));
  script.transfer.start_thread = [](std::thread&, const std::function<void()>&) {
    return Outcome(std::make_error_code(std::errc::resource_unavailable_try_again));
  };
  script.peer = [&](const Bytes& bytes) { script.AnswerUpload(bytes); };
  EXPECT_EQ(UploadDownloadScriptThread(script.transfer), 0);
  EXPECT_EQ(script.messages.Texts(),
            std::vector<std::string>{"CreateThread failed - UploadDownloadScriptThread"});
}

}  // namespace
}  // namespace vexa
