// An upload over a line of 115200 baud 8N1 beside the time that its bytes alone need there, and beside
// YMODEM-1k (lrzsz) with the same file on the same line. The line is two pseudo-terminals with a relay
// between them that carries ten bits a byte; whoever sends stands at one end, whoever receives at the other,
// in processes of their own. The relay needs a processor for itself. Usage: line_bench [BAUD]; `vexa` stands
// beside the bench.

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "bench/measure.h"
#include "image/line_frame.h"
#include "platform/files.h"
#include "platform/pseudo_terminal.h"

namespace vexa {
namespace {

using Clock = std::chrono::steady_clock;

double Seconds() {
  static const auto start = Clock::now();
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void SleepUntil(double seconds) {
  const double left = seconds - Seconds();
  if (left > 0) std::this_thread::sleep_for(std::chrono::duration<double>(left));
}

// Finds the frames in what the sender writes, from the first one behind a SYN on.
struct FrameWatch {
  bool woken = false;
  uint32_t head = 0, length = 0, left = 0;
  double first = 0, last = 0;  // s: the line begins with the first frame, is through with the last
  uint64_t bytes = 0;
  double asked = 0;             // s: when the sender was last given something
  std::vector<double> answers;  // s from there to the frame

  void Take(std::span<const uint8_t> chunk, double start, double end) {
    for (const uint8_t byte : chunk) {
      if (left == 0 && head == 0) {
        woken = woken || byte == kSyn;
        if (!woken || byte != kStx) continue;
        if (bytes == 0) first = start;
        answers.push_back(start - asked);
        length = 0;
        head = 1;
      } else if (left == 0) {
        length = length << 8 | byte;
        if (++head == 4) left = length + 5;
      } else if (--left == 0) {
        head = 0;
      }
      ++bytes;
      last = end;
    }
  }
};

// One direction of the line. What is there when the line gets free follows without a gap.
struct Direction {
  PseudoTerminal &from, &to;
  bool back = false;
  std::array<uint8_t, 16> carried{};
  size_t count = 0, sent = 0;
  double start = 0, free = 0;  // s: when the carried bytes began, when they are through

  void Take(double earliest, uint32_t baud) {
    count = from.Read(carried, 0);
    if (count == 0) return;
    start = std::max(free, earliest);
    free = start + static_cast<double>(count) * 10 / baud;
  }
  void Step(uint32_t baud, FrameWatch& watch) {
    const double now = Seconds();
    if (count == 0) return Take(now, baud);
    if (now < free) return;
    const auto chunk = std::span<const uint8_t>(carried).first(count);
    sent += to.Write(chunk.subspan(sent));
    if (sent < count) return;  // the far end does not read at the moment
    sent = 0;
    if (back)
      watch.asked = free;
    else
      watch.Take(chunk, start, free);
    Take(free, baud);
  }
};

// A wire has no scheduler that wakes it: one thread looks after both directions and never sleeps.
struct Line {
  std::unique_ptr<PseudoTerminal> sender, receiver;
  FrameWatch watch;
  std::atomic<bool> stop{false};
  std::thread relay;

  Line(std::unique_ptr<PseudoTerminal> far_end, uint32_t baud)
      : sender(OpenPseudoTerminal({}).value), receiver(std::move(far_end)) {
    Require(sender && receiver, "a pseudo-terminal");
    relay = std::thread([this, baud] {
      Direction there{.from = *sender, .to = *receiver}, back{.from = *receiver, .to = *sender, .back = true};
      while (!stop) {
        there.Step(baud, watch);
        back.Step(baud, watch);
      }
    });
  }
  ~Line() {
    stop = true;
    relay.join();
  }
};

// A terminal that another program made, taken as the relay's end.
struct OpenedTerminal : PseudoTerminal {
  int file = -1;
  explicit OpenedTerminal(const Path& link) {
    file = open(link.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    Require(file >= 0, "opening the receiver's line");
  }
  ~OpenedTerminal() override { close(file); }
  size_t Read(std::span<uint8_t> buffer, int milliseconds) override {
    pollfd watched{file, POLLIN, 0};
    if (poll(&watched, 1, milliseconds) <= 0) return 0;
    return static_cast<size_t>(std::max<ssize_t>(0, read(file, buffer.data(), buffer.size())));
  }
  size_t Write(std::span<const uint8_t> bytes) override {
    return static_cast<size_t>(std::max<ssize_t>(0, write(file, bytes.data(), bytes.size())));
  }
};

// Standard input and output at `terminal` where one is given, messages nowhere.
pid_t Start(const std::vector<std::string>& arguments, const std::string& terminal, const Path& folder) {
  const pid_t child = fork();
  Require(child >= 0, "fork");
  if (child > 0) return child;
  const int null = open("/dev/null", O_RDWR), line = terminal.empty() ? null : open(terminal.c_str(), O_RDWR);
  dup2(line, 0), dup2(line, 1), dup2(null, 2);
  if (chdir(folder.c_str()) != 0) _exit(127);
  std::vector<char*> pointers;
  for (const std::string& argument : arguments) pointers.push_back(const_cast<char*>(argument.c_str()));
  pointers.push_back(nullptr);
  execvp(pointers[0], pointers.data());
  _exit(127);
}

struct Usage {
  double seconds = 0, processor = 0;
};

double ProcessorSeconds(const rusage& used) {
  const auto of = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
  };
  return of(used.ru_utime) + of(used.ru_stime);
}

Usage RunProgram(const std::vector<std::string>& arguments, const std::string& terminal, const Path& folder) {
  const double start = Seconds();
  const pid_t child = Start(arguments, terminal, folder);
  int status = 0;
  rusage used{};
  Require(wait4(child, &status, 0, &used) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0,
          arguments[0] + " " + arguments[1]);
  return {Seconds() - start, ProcessorSeconds(used)};
}

// Time and processor time of the whole upload.
Usage PrintUpload(const std::string& vexa, const std::string& database, uint32_t baud, const Path& folder) {
  const Path link = folder / "loader";
  const pid_t loader = Start({vexa, "loader", "--link", link.string()}, "", folder);
  for (int i = 0; i < 500 && !std::filesystem::exists(link); ++i) SleepUntil(Seconds() + 0.01);
  Usage all;
  {
    Line line(std::make_unique<OpenedTerminal>(link), baud);
    const Usage building = RunProgram({vexa, "adb", "build", database, "-o", folder.string()}, "", folder);
    all = RunProgram({vexa, "upload", "adb", database, "--port", line.sender->path}, "", folder);
    FrameWatch& watch = line.watch;
    const double alone = static_cast<double>(watch.bytes) * 10 / baud, taken = watch.last - watch.first;
    const std::string bytes = Format("its %llu bytes alone", static_cast<unsigned long long>(watch.bytes));
    PrintRow({Format("packets of an ADB upload at %u baud", baud), {taken, "s"}, bytes, {alone, "s"}});
    std::nth_element(watch.answers.begin(),
                     watch.answers.begin() + static_cast<std::ptrdiff_t>(watch.answers.size() / 2),
                     watch.answers.end());
    PrintRow({Format("from a packet's end to the next, average of %zu", watch.answers.size()),
              {(taken - alone) / static_cast<double>(watch.answers.size()) * 1000}});
    PrintRow({"of it from the request on, median", {watch.answers[watch.answers.size() / 2] * 1000}});
    PrintRow({"the whole upload, with wake-up", {all.seconds, "s"}, bytes, {alone, "s"}});
    PrintRow({"processor time for its image", {building.processor, "s"}});
  }
  kill(loader, SIGINT);
  waitpid(loader, nullptr, 0);
  return all;
}

void PrintYmodem(uint32_t baud, const Path& folder, const Usage& upload) {
  const Path file = folder / "~001adb.urt", received = folder / "received";
  std::filesystem::create_directory(received);
  Line line(OpenPseudoTerminal({}).value, baud);
  const double start = Seconds();
  const pid_t receiver = Start({"rz", "--ymodem", "--quiet"}, line.receiver->path, received);
  const pid_t sender = Start({"sz", "--ymodem", "--1k", "--quiet", file.string()}, line.sender->path, folder);
  // What ends the session may be lost when one of them has gone: the other then waits for it in vain. The
  // first to go gives the time.
  Usage all;
  for (bool sends = true, takes = true; sends || takes; SleepUntil(Seconds() + 0.001)) {
    rusage used{};
    const bool sent = sends && wait4(sender, nullptr, WNOHANG, &used) == sender;
    const bool taken = takes && waitpid(receiver, nullptr, WNOHANG) == receiver;
    if (sent) all.processor = ProcessorSeconds(used);
    if (sends && takes && (sent || taken)) all.seconds = Seconds() - start;
    sends = sends && !sent;
    takes = takes && !taken;
    if (sends != takes && Seconds() - start > all.seconds + 3) kill(sends ? sender : receiver, SIGKILL);
  }
  Require(ReadWholeFile(received / file.filename()) == ReadWholeFile(file), "the file of YMODEM");
  const double alone = static_cast<double>(std::filesystem::file_size(file)) * 10 / baud;
  const std::string rival = "the same file by YMODEM-1k (lrzsz)";
  PrintRow({rival, {all.seconds, "s"}, "its bytes alone", {alone, "s"}});
  PrintRow({"the whole upload, with wake-up", {upload.seconds, "s"}, rival, {all.seconds, "s"}});
  PrintRow({"its processor time, with the image", {upload.processor, "s"}, rival, {all.processor, "s"}});
}

int Run(int count, char** arguments) {
  const auto baud = static_cast<uint32_t>(count > 1 ? std::atoi(arguments[1]) : 115200);
  const Path vexa = std::filesystem::canonical("/proc/self/exe").parent_path() / "vexa";
  const auto folder = MakeTestFolder("vexa-line-bench-" + std::to_string(getpid()));
  Require(folder.has_value() && std::filesystem::exists(vexa), "finding vexa beside the bench");
  std::mt19937 random(1);
  Document document = NewDocument();
  document.sdbs[0].database = MakeRandomDatabase(random, RandomShape{});
  const Path database = *folder / "list.bin";
  Require(SaveBin(Context{}, document, database).has_value(), "making the database");
  PrintYmodem(baud, *folder, PrintUpload(vexa.string(), database.string(), baud, *folder));
  RemoveFolder(*folder);
  return 0;
}

}  // namespace
}  // namespace vexa

int main(int count, char** arguments) {
  return vexa::Run(count, arguments);
}
