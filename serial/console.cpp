#include "serial/console.h"

#include <algorithm>
#include <chrono>
#include <fstream>

#include "image/transfer_files.h"
#include "platform/clock.h"
#include "serial/prepare.h"

namespace vexa {

namespace {

constexpr const char* kWriteProblem = "WriteFile problem";
constexpr const char* kNoThread = "Create thread failed - ConnectDisConnectWithPort";

// With the lock held. Each text waits once: a job that floods a lost port fails thousands of times a second.
void LeaveMessage(ConsoleLog& log, const Message& message) {
  const auto same = [&](const Message& waiting) { return waiting.text == message.text; };
  if (std::none_of(log.messages.begin(), log.messages.end(), same)) log.messages.push_back(message);
}

// Told at once on the owner's thread, left for the next update on the others.
void TellConsole(Console& console, const Message& message) {
  if (std::this_thread::get_id() == console.owner) {
    if (!console.quiet && console.context.messages.tell) console.context.messages.tell(message);
    return;
  }
  const std::lock_guard hold(console.log.lock);
  LeaveMessage(console.log, message);
}

Messages ConsoleMessages(Console& console) {
  Messages messages;
  messages.tell = [&console](const Message& message) { TellConsole(console, message); };
  messages.ask = [](const std::string&, const std::string&, bool) { return false; };
  return messages;
}

// With the lock held.
void WriteLog(Console& console, std::string_view text) {
  ConsoleLog& log = console.log;
  const std::span bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  const Outcome written = log.file ? console.context.files->write(log.file, bytes) : Outcome(false);
  if (written) {
    log.size += text.size();
  } else if (!log.failed) {
    LeaveMessage(log, {Icon::kStop, kWriteProblem, kApplicationTitle, WriteReason(log.path, written.error)});
  }
  log.failed = !written;
}

// With the lock held.
void AppendText(Console& console, std::string_view text, ReportColour colour) {
  if (text.empty()) return;
  ConsoleLog& log = console.log;
  std::string stamped;
  if (log.options.time_stamps) {
    stamped = StampedText(log.stamps, text, ClockStamp());
    text = stamped;
  } else {
    log.stamps.at_line_start = text.back() == '\r' || text.back() == '\n';
  }
  if (colour != ReportColour::kNeutral) {
    log.coloured.push_back({log.size, text.size(), colour});
    if (log.coloured.size() > kColouredTexts) log.coloured.pop_front();
  }
  WriteLog(console, text);
  Enqueue(log.queue, ViewText(log.lines, text), colour);
}

// With the lock held. Every write reaches the file at once: the log is there to be read after a crash.
Outcome CreateLog(Console& console) {
  ConsoleLog& log = console.log;
  if (log.file) std::fclose(log.file);
  const auto file = console.context.files->create(log.path);
  log.file = file.value;
  log.size = 0;
  if (!file) return file.error;
  std::setvbuf(log.file, nullptr, _IONBF, 0);
  return true;
}

void TellUnwrittenLog(const Console& console, const Path& path, const std::error_code& why) {
  TellWhy(console.context.messages, Icon::kStop, WriteReason(path, why), "%s", kWriteProblem);
}

void RunSender(Console& console) {
  ConsoleSender& sender = console.sender;
  std::unique_lock hold(sender.lock);
  for (;;) {
    sender.changed.wait(hold, [&] { return sender.stop || !sender.lines.empty(); });
    if (sender.stop) break;
    const Bytes line = std::move(sender.lines.front());
    sender.lines.pop_front();
    hold.unlock();
    WritePort(console.port, line);
    hold.lock();
  }
  sender.ended = true;
  sender.changed.notify_all();
}

Outcome StartSender(Console& console) {
  ConsoleSender& sender = console.sender;
  sender.lines.clear();
  sender.stop = sender.ended = false;
  return console.port.api->start_thread(sender.thread, [&console] { RunSender(console); });
}

// A write that does not end is given up after a while. False when it does not answer even then.
bool StopSender(Console& console) {
  ConsoleSender& sender = console.sender;
  if (!sender.thread.joinable()) return true;
  const auto ends_in = [&sender](std::chrono::milliseconds time) {
    std::unique_lock hold(sender.lock);
    return sender.changed.wait_for(hold, time, [&sender] { return sender.ended; });
  };
  {
    const std::lock_guard hold(sender.lock);
    sender.stop = true;
    sender.lines.clear();
    sender.changed.notify_all();
  }
  if (!ends_in(std::chrono::milliseconds(500))) AbandonWrites(console.port);
  if (!AwaitEnd(console.port, ends_in)) return false;
  sender.thread.join();
  return true;
}

void ClearProgress(Console& console) {
  console.packets_total = console.packets_sent = 0;
  console.reset_progress = false;
}

// False when the job does not answer.
bool EndJob(Console& console) {
  if (!console.job.joinable()) return true;
  Transfer& transfer = console.transfer;
  const auto ends_in = [&](std::chrono::milliseconds time) {
    std::unique_lock hold(transfer.lock);
    return transfer.changed.wait_for(hold, time, [&] { return console.job_ended.load(); });
  };
  transfer.cancel = true;
  Wake(transfer);
  if (!ends_in(std::chrono::milliseconds(kCancelTime))) AbandonWrites(console.port);
  if (!AwaitEnd(console.port, ends_in)) return false;
  console.job.join();
  ResetTransfer(transfer);
  console.ending = false;
  return true;
}

bool HasSenderEnded(Console& console) {
  const std::lock_guard hold(console.sender.lock);
  return console.sender.ended || !console.sender.thread.joinable();
}

// Whether no thread of an earlier connection hangs in the driver any more.
bool IsLetGo(Console& console) {
  if (!console.stuck) return true;
  if ((console.job.joinable() && !console.job_ended) || !HasSenderEnded(console)) return false;
  EndJob(console);
  StopSender(console);
  console.port.device = nullptr;  // closed with the last that holds it
  console.stuck = false;
  return true;
}

void PreparePort(Console& console) {
  console.port.messages = ConsoleMessages(console);
  console.port.tap = [&console](bool sent, std::span<const uint8_t> bytes) {
    console.bytes_moved += bytes.size();
    if (sent) console.sent = true;
  };
  console.transfer.context = console.context;
  console.transfer.context.messages = ConsoleMessages(console);
}

void TellPortFailure(Console& console, const Outcome& failed, const char* text) {
  TellWhy(ConsoleMessages(console), Icon::kStop, Reason(Attempt::kUsePort, console.port.name, failed.error),
          "%s", text);
}

// Closes the port with all that hangs on it.
bool EndConnection(Console& console) {
  const bool job_ended = EndJob(console), sender_ended = StopSender(console),
             reader_ended = StopThread(console.port);
  console.stuck = !job_ended || !sender_ended || !reader_ended;
  const Outcome closed = console.stuck ? Outcome(false) : ClosePort(console.port);
  if (console.stuck) {
    TellNoAnswer(ConsoleMessages(console), console.port.name);
  } else {
    if (!closed) TellPortFailure(console, closed, "Port Close API failed");
    console.port.device = nullptr;
  }
  console.state = ConsoleState::kDisconnected;
  ClearProgress(console);
  return closed.done;
}

bool TryConnect(Console& console) {
  if (!IsLetGo(console)) {
    TellNoAnswer(ConsoleMessages(console), console.port.name);
    return false;
  }
  PreparePort(console);
  BuildPortDcb(console.port, console.connected_with);
  if (!OpenPort(console.port, console.connected_with.port_name)) return false;
  const auto receive = [&console](std::span<uint8_t> bytes) { ConsoleReceive(console, bytes); };
  if (!StartReaderThread(console.port, receive)) {
    ClosePort(console.port);
    return false;
  }
  console.state = ConsoleState::kConnected;
  const Outcome started = StartSender(console);
  if (started) return true;
  TellPortFailure(console, started, kNoThread);
  EndConnection(console);
  return false;
}

void LoseConnection(Console& console, uint64_t now) {
  const bool again = OptionsOf(console).reconnect, uploading = IsUploading(console);
  const std::string why = GoneReason(console.port);
  console.quiet = true;
  console.lost = true;
  AbandonWrites(console.port);
  EndConnection(console);
  console.quiet = false;
  {
    const std::lock_guard hold(console.log.lock);
    console.log.messages.clear();  // of the same cause
  }
  console.lost = false;
  const char* name = console.connected_with.port_name.c_str();
  if (uploading && console.job_outcome != 1) {
    const std::string text =
        Format("\n<========== Upload ended ==========>\n   Problem : %s is not available any more\n", name);
    AppendToConsole(console, text, ReportColour::kError);
  }
  if (again) {
    console.state = ConsoleState::kWaiting;
    console.retry_wait = kFirstRetry;
    console.next_try = now + kFirstRetry;
    TellWhy(console.context.messages, Icon::kWarning, why,
            "%s is not available any more.\nThe console connects again when it is back.", name);
  } else {
    TellWhy(console.context.messages, Icon::kWarning, why,
            "%s is not available any more.\nThe console is disconnected.", name);
  }
}

void TryAgain(Console& console, uint64_t now) {
  if (console.state != ConsoleState::kWaiting || now < console.next_try) return;
  if (!OptionsOf(console).reconnect) {
    console.state = ConsoleState::kDisconnected;
    return;
  }
  console.quiet = true;
  const bool connected = TryConnect(console);
  console.quiet = false;
  if (connected) {
    console.told.clear();
    return;
  }
  console.retry_wait = std::min(console.retry_wait * 2, kLongestRetry);
  console.next_try = now + console.retry_wait;
}

void WatchJob(Console& console, uint64_t now) {
  if (console.job.joinable() && console.job_ended) EndJob(console);
  if (console.job.joinable() && console.ending && now >= console.cancelled_at + kCancelTime) {
    AbandonWrites(console.port);  // from now on the port takes only what it takes at once
    console.ending = false;
  }
  if (console.reset_progress.exchange(false)) ClearProgress(console);
}

bool EndsWithBin(const Path& path) {
  std::string extension = Utf8FromPath(path.extension());
  for (char& character : extension) {
    if (character >= 'A' && character <= 'Z') character = static_cast<char>(character - 'A' + 'a');
  }
  return extension == ".bin";
}

void ConnectViews(Console& console) {
  TransferView& view = console.transfer.view;
  view.console_total = [&console](uint32_t total) { console.packets_total = total; };
  view.console_count = [&console](uint32_t count) { console.packets_sent = count; };
  view.reset_console = [&console] { console.reset_progress = true; };
  console.transfer.report = [&console](int code) {
    // An upload that the port ended was not terminated by the user.
    if (!console.lost) ReportToConsole(console, code);
  };
  console.transfer.line.write = [&console](std::span<const uint8_t> bytes) {
    return WritePort(console.port, bytes);
  };
  console.transfer.line.purge = [&console] { PurgeReceived(console.port); };
}

}  // namespace

Console::~Console() {
  CloseConsole(*this);
}

bool OpenConsole(Console& console, const Context& context) {
  console.context = context;
  console.owner = std::this_thread::get_id();
  console.reports.download = console.reports.frame_upload = false;
  console.reports.focus = [&console] { console.focus_log = true; };
  console.reports.append = [&console](const std::string& text, ReportColour colour) {
    AppendToConsole(console, text, colour);
  };
  std::unique_lock hold(console.log.lock);
  console.log.path = context.temporary_folder / kConsoleLogFile;
  console.ever_opened = true;
  const Outcome created = CreateLog(console);
  if (created) return true;
  console.log.failed = true;
  hold.unlock();
  TellUnwrittenLog(console, console.log.path, created.error);
  return false;
}

void CloseConsole(Console& console) {
  if (!console.ever_opened) return;
  console.quiet = true;
  DisconnectConsole(console);
  const std::lock_guard hold(console.log.lock);
  if (console.log.file) std::fclose(console.log.file);
  console.log.file = nullptr;
  std::error_code ignored;
  std::filesystem::remove(console.log.path, ignored);
  console.ever_opened = false;
}

void SetConsoleOptions(Console& console, const ConsoleOptions& options) {
  const std::lock_guard hold(console.log.lock);
  if (!options.hexadecimal_view)
    AppendText(console, EndHexadecimalRow(console.log.hexadecimal), ReportColour::kNeutral);
  if (options.hexadecimal_view != console.log.options.hexadecimal_view) console.log.hexadecimal = {};
  console.log.options = options;
}

ConsoleOptions OptionsOf(Console& console) {
  const std::lock_guard hold(console.log.lock);
  return console.log.options;
}

void AppendToConsole(Console& console, std::string_view text, ReportColour colour) {
  const std::lock_guard hold(console.log.lock);
  AppendText(console, EndHexadecimalRow(console.log.hexadecimal), ReportColour::kNeutral);
  AppendText(console, text, colour);
}

void ConsoleReceive(Console& console, std::span<uint8_t> bytes) {
  console.sent = false;
  console.received = true;
  if (console.transfer.console_active && !console.transfer.cancel) TransferReceive(console.transfer, bytes);
  {
    const std::lock_guard hold(console.log.lock);
    if (console.log.options.hexadecimal_view) {
      // A first row does not go on in a line of text.
      const bool fresh = console.log.hexadecimal.row.empty() && !console.log.stamps.at_line_start;
      const std::string rows = HexadecimalText(console.log.hexadecimal, bytes);
      AppendText(console, fresh ? "\r\n" + rows : rows, ReportColour::kNeutral);
    } else {
      BlankControlBytes(bytes);
      AppendText(console, {reinterpret_cast<const char*>(bytes.data()), bytes.size()},
                 ReportColour::kNeutral);
    }
  }
  std::fill(bytes.begin(), bytes.end(), uint8_t{0});
}

void ReportToConsole(Console& console, int code) {
  ReportLoaderStatus(console.reports, code);
}

bool ConnectConsole(Console& console, const ProjectConfig& config) {
  if (console.state == ConsoleState::kConnected) return true;
  console.connected_with = config;
  console.told.clear();
  if (TryConnect(console)) return true;
  console.state = ConsoleState::kDisconnected;
  return false;
}

bool DisconnectConsole(Console& console) {
  if (console.state == ConsoleState::kConnected) return EndConnection(console);
  console.state = ConsoleState::kDisconnected;
  return true;
}

bool SendConsoleLine(Console& console, std::string_view line) {
  if (console.state != ConsoleState::kConnected) return false;
  const auto bytes = CommandBytes(line, OptionsOf(console));
  if (!bytes) {
    Tell(console.context.messages, Icon::kWarning,
         "Hexadecimal input takes pairs of the digits 0 to 9 and A to F.");
    return false;
  }
  const std::lock_guard hold(console.sender.lock);
  console.sender.lines.push_back(*bytes);
  console.sender.changed.notify_all();
  return true;
}

bool IsUploading(const Console& console) {
  return console.job.joinable();
}

bool CanUpload(const Console& console) {
  return console.state == ConsoleState::kConnected && !IsUploading(console);
}

std::optional<Path> ConsoleUploadFile(const Context& context, const Path& chosen,
                                      const ProjectConfig& config) {
  if (config.image_entry_count == 0 || !EndsWithBin(chosen)) return chosen;
  if (!MayReplaceImage(context, config)) return std::nullopt;
  const auto files = PrepareBinUpload(context, chosen, config, LocalTimeNow());
  if (!files || files->empty()) return std::nullopt;
  return files->front();
}

bool StartConsoleUpload(Console& console, const Path& file, const std::string& name) {
  if (!CanUpload(console)) return false;
  Transfer& transfer = console.transfer;
  ResetTransfer(transfer);
  transfer.port_name = console.connected_with.port_name;
  ClearProgress(console);
  ConnectViews(console);
  transfer.bytes_per_second = BytesPerSecond(console.port.dcb);
  transfer.files = {file};
  transfer.console_active = true;
  console.job_ended = false;
  console.job_outcome = 0;
  console.ending = false;
  console.upload_name = name;
  console.meter = {};
  const Outcome started = console.port.api->start_thread(console.job, [&console] {
    console.job_outcome = UploadUrtPacketThread(console.transfer);
    console.job_ended = true;
    Wake(console.transfer);
  });
  if (started) return true;
  ResetTransfer(transfer);
  TellPortFailure(console, started, kNoThread);
  return false;
}

void CancelConsoleUpload(Console& console, uint64_t now) {
  if (!IsUploading(console) || console.transfer.cancel) return;
  console.ending = true;
  console.cancelled_at = now;
  console.transfer.cancel = true;
  Wake(console.transfer);
}

bool HasConsoleLog(Console& console) {
  const std::lock_guard hold(console.log.lock);
  return console.log.size > 0;
}

bool SaveConsoleLog(Console& console, const Path& path) {
  uint64_t left = 0;
  {
    const std::lock_guard hold(console.log.lock);
    left = console.log.size;
  }
  // What arrives meanwhile is behind the end of the copy.
  std::ifstream log(console.log.path, std::ios::binary);
  const auto copy = [&](const PieceWriter& write) {
    Bytes piece(64 << 10);
    while (left > 0) {
      const auto wanted = static_cast<size_t>(std::min<uint64_t>(left, piece.size()));
      if (!log.read(reinterpret_cast<char*>(piece.data()), static_cast<std::streamsize>(wanted)))
        return false;
      if (!write(std::span(piece).first(wanted))) return false;
      left -= wanted;
    }
    return true;
  };
  const WriteResult written =
      log ? WriteWholeFileBy(path, copy, *console.context.files) : WriteResult(WriteResult::kFailed);
  if (written != WriteResult::kDone) {
    const bool unread = !written.error;  // what is to be saved could not be read
    const Path& refused = unread ? console.log.path : path;
    TellUnwrittenLog(console, refused, unread ? WhyUnreadable(refused) : written.error);
    return false;
  }
  Tell(console.context.messages, Icon::kInformation, "%s log file is saved successfully.",
       Utf8FromPath(path).c_str());
  return true;
}

void ClearConsoleLog(Console& console) {
  std::unique_lock hold(console.log.lock);
  const Outcome created = CreateLog(console);
  console.log.failed = !created;
  console.log.hexadecimal = {};
  console.log.stamps = {};
  console.log.lines = {};
  console.log.queue = {};
  console.log.coloured = {};
  console.log.part_end = 0;
  console.log.queue.cleared = true;
  hold.unlock();
  if (!created) TellUnwrittenLog(console, console.log.path, created.error);
}

ConsoleUpdate UpdateConsole(Console& console, uint64_t now, ViewUse use, size_t shown) {
  WatchJob(console, now);
  TryAgain(console, now);
  ConsoleUpdate update;
  {
    const std::lock_guard hold(console.log.lock);
    if (console.log.part_end > 0 && use == ViewUse::kFollows) ReturnToEndOfLog(console);
    ViewQueue taken = TakePieces(console.log.queue, use, shown);
    update.pieces.swap(taken.pieces);
    update.start_anew = taken.start_anew;
    update.text_dropped = taken.text_dropped;
  }
  update.focus_log = console.focus_log.exchange(false);
  update.received = console.received.exchange(false);
  update.sent = console.sent.exchange(false);
  update.packets_total = console.packets_total;
  update.packets_sent = console.packets_sent;
  if (console.state == ConsoleState::kConnected) {
    const bool upload = IsUploading(console);
    console.meter.Sample(static_cast<double>(now) / 1000, console.bytes_moved,
                         upload ? update.packets_sent : 0, upload ? update.packets_total : 0);
    update.rate = console.meter.Text(upload ? console.transfer.packets_repeated.load() : 0);
  }
  return update;
}

// The library may repeat a failure twice a second: each text is shown once a connection.
void TellConsoleMessages(Console& console, uint64_t now) {
  std::deque<Message> messages;
  {
    const std::lock_guard hold(console.log.lock);
    messages.swap(console.log.messages);
  }
  if (messages.empty()) return;
  if (console.state == ConsoleState::kConnected && IsPortGone(console.port))
    return LoseConnection(console, now);
  for (const Message& message : messages) {
    const bool library = message.title != kApplicationTitle;
    if (library && !console.told.insert(message.text).second) continue;
    TellConsole(console, message);
  }
}

}  // namespace vexa
