// The uploader console without its window: the log, the connection, the lines that are sent, the upload.
//
//   Disconnected --ConnectConsole--> Connected --DisconnectConsole--> Disconnected
//   Connected --the port is gone--> Disconnected, or Waiting (for the port to come back) when that is chosen
//
// Threads: the owner calls all functions from one thread, and UpdateConsole about 30 times a second; the
// port's reader, the sender of lines and the upload's job only append to the log and leave messages, which
// TellConsoleMessages hands on. All texts that arrive are single bytes (Windows-1252).
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "config/project_config.h"
#include "core/context.h"
#include "serial/console_text.h"
#include "serial/port.h"
#include "serial/relay.h"
#include "serial/reports.h"
#include "serial/transfer.h"

namespace vexa {

enum class ConsoleState { kDisconnected, kConnected, kWaiting };

inline constexpr uint64_t kUpdateInterval = 33;                     // ms between updates of the view
inline constexpr uint64_t kFirstRetry = 500, kLongestRetry = 2000;  // ms between tries of a lost port
inline constexpr uint64_t kCancelTime = 2000;                       // ms that a cancelled job has to end

// Where a report stands in the log file.
struct ColouredText {
  uint64_t place = 0, size = 0;
  ReportColour colour = ReportColour::kNeutral;
};
inline constexpr size_t kColouredTexts = 1000;  // that are remembered, the last ones

// The log file and what the view has not shown yet; shared by all threads, guarded by `lock`.
struct ConsoleLog {
  std::mutex lock;
  Path path;
  std::FILE* file = nullptr;
  uint64_t size = 0;    // bytes in the file
  bool failed = false;  // the last write; told once
  ConsoleOptions options;
  HexadecimalRows hexadecimal;
  LineStamps stamps;
  ViewLines lines;
  ViewQueue queue;
  std::deque<ColouredText> coloured;
  uint64_t part_end = 0;         // the owner's: the view shows a part of the log up to here; 0: the log's end
  std::deque<Message> messages;  // told by other threads than the owner's
};

// Lines on their way to the port, so that a line that takes nothing does not stop the owner.
struct ConsoleSender {
  std::mutex lock;
  std::condition_variable changed;
  std::deque<Bytes> lines;
  bool stop = false, ended = true;
  std::thread thread;
};

struct Console {
  Context context;  // its messages are told on the owner's thread
  ConsoleLog log;
  ConsoleSender sender;
  Port port;
  Transfer transfer;
  ReportTarget reports;
  std::thread job;
  std::atomic<bool> job_ended{false};
  std::atomic<int> job_outcome{0};  // 1: the last upload was sent whole
  std::atomic<bool> reset_progress{false}, focus_log{false};
  std::atomic<bool> received{false}, sent{false};  // the indicators "R" and "T"
  std::atomic<bool> lost{false};                   // the upload was ended by the port, not by the user
  std::atomic<uint32_t> packets_total{0}, packets_sent{0};
  std::atomic<uint64_t> bytes_moved{0};  // both ways

  // The owner's.
  std::thread::id owner;
  ConsoleState state = ConsoleState::kDisconnected;
  ProjectConfig connected_with;
  bool quiet = false;        // failures of a try are not told
  bool ever_opened = false;  // the log was created
  bool ending = false;       // a cancelled upload has not ended yet
  bool stuck = false;        // a thread hangs in the port's driver: this object must stay
  uint64_t cancelled_at = 0, next_try = 0, retry_wait = 0;
  std::set<std::string> told;  // the library's texts since the port was opened: each is shown once
  std::string upload_name;     // of the file, while its upload runs and after
  TransferMeter meter;

  Console() = default;
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;
  ~Console();
};

// Creates the log file, which goes with the object. False when that failed ("WriteFile problem" shown); the
// console works without it.
bool OpenConsole(Console& console, const Context& context);
// Ends the connection and removes the log file. Afterwards the object may go, unless it is `stuck`.
void CloseConsole(Console& console);
// In force for what arrives from now on; what is in the log stays as it is.
void SetConsoleOptions(Console& console, const ConsoleOptions& options);
ConsoleOptions OptionsOf(Console& console);

// Appends to the log file and to the view; any thread.
void AppendToConsole(Console& console, std::string_view text, ReportColour colour);
// The receive callback: blanks and appends the chunk, then zeroes it.
void ConsoleReceive(Console& console, std::span<uint8_t> bytes);
// A transfer's status code, in words; any thread.
void ReportToConsole(Console& console, int code);

// False after the port library's message, or one that the driver does not answer yet.
bool ConnectConsole(Console& console, const ProjectConfig& config);
// Ends a running upload and the wait for a lost port too. False when a thread or the port did not end
// (messages shown).
bool DisconnectConsole(Console& console);

// Sends the line when connected. False: nothing was sent; a refusal of hexadecimal input was shown.
bool SendConsoleLine(Console& console, std::string_view line);

// Whether an upload runs, or was cancelled and has not ended yet.
bool IsUploading(const Console& console);
// Whether one can be started: connected, and none runs.
bool CanUpload(const Console& console);
// What is uploaded for a chosen file: itself, or, of a BIN file, its conversion. Nothing after a message,
// or when the user does not want the image replaced (MayReplaceImage).
std::optional<Path> ConsoleUploadFile(const Context& context, const Path& chosen,
                                      const ProjectConfig& config);
// Sends the URT file on a thread of its own; `name` is what the user reads of it. The file must stay until
// the upload has ended. False: CanUpload says no, or no thread could be made (message shown).
bool StartConsoleUpload(Console& console, const Path& file, const std::string& name);
// Returns at once; the upload ends within kCancelTime and reports that it was terminated.
void CancelConsoleUpload(Console& console, uint64_t now);

// Whether anything is in the log.
bool HasConsoleLog(Console& console);
// Copies the log, as it is now, to `path`, which is replaced whole, and says so. False after "WriteFile
// problem": `path` is as it was.
bool SaveConsoleLog(Console& console, const Path& path);
// Empties the log and its view; "WriteFile problem" when the file cannot be made anew.
void ClearConsoleLog(Console& console);

// A text in the log with its surroundings, for a view that shows them instead of the log's end.
struct FoundText {
  std::deque<ConsolePiece> before, text, after;
};
// Searches the log file behind the part that the view shows, then from its beginning. The view takes nothing
// that arrives until it follows again: then it gets the log's end anew.
std::optional<FoundText> FindInWholeLog(Console& console, const std::string& text, bool match_case);
// What the view shows next is the log's end. With the log's lock held.
void ReturnToEndOfLog(Console& console);

// What has changed since the last call.
struct ConsoleUpdate {
  bool start_anew = false;    // empty the view first
  bool text_dropped = false;  // text is missing between what was shown and the first piece
  std::deque<ConsolePiece> pieces;
  bool focus_log = false;
  bool received = false, sent = false;  // indicators to show until the next call
  uint32_t packets_total = 0, packets_sent = 0;
  std::string rate;  // "11,310 bytes/s"
};
// `now` in ms of a clock that never goes back; `shown`: characters that the view holds.
ConsoleUpdate UpdateConsole(Console& console, uint64_t now, ViewUse use = ViewUse::kFollows,
                            size_t shown = 0);
// Tells what the other threads left, and that the port is gone; an upload that this ended gets a line in the
// log. While a message is shown the owner may call everything but this.
void TellConsoleMessages(Console& console, uint64_t now);

}  // namespace vexa
