// What the console does with texts: what arrives becomes readable, what is typed becomes bytes.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "config/settings.h"
#include "platform/files.h"
#include "serial/reports.h"

namespace vexa {

// The settings keep the number.
enum class LineEnding { kCarriageReturn, kLineFeed, kBoth, kNone };
static_assert(static_cast<int>(LineEnding::kNone) + 1 == kLineEndings);

struct ConsoleOptions {
  LineEnding line_ending = LineEnding::kCarriageReturn;  // sent behind each line
  bool hexadecimal_view = false;                         // of what arrives
  bool hexadecimal_input = false;                        // lines are pairs of digits; no ending is sent
  bool time_stamps = false;                              // in front of each line of the log
  bool reconnect = false;                                // when a lost port comes back
};

inline constexpr size_t kCommandLimit = 260;      // characters of a command line
inline constexpr size_t kHistoryLimit = 200;      // lines
inline constexpr size_t kViewBytes = 128 << 10;   // of the log that the view holds, at least
inline constexpr size_t kUpdateBytes = 16 << 10;  // that one update adds to it
inline constexpr size_t kKeptBytes = 2 << 20;     // that it grows to while its user looks at older text
inline constexpr size_t kViewColumns = 2000;      // a longer line goes on in a new one in the view

// Bytes that would disturb a text become blanks: 00 04 05 06 07 11 13 15 17 91 99.
void BlankControlBytes(std::span<uint8_t> bytes);

// Rows of at most 16 bytes, hexadecimal and as characters; a row ends with the frame that it belongs to, and
// a frame begins a row:
//   02 00 00 10 41 42 ...                           ....AB
// Bytes show at once, the characters when the row is full or ended.
struct HexadecimalRows {
  Bytes row;
  Bytes head;               // STX and length, as far as they came; empty: not in them
  uint64_t frame_left = 0;  // bytes up to and with the ETX
};
// What the bytes add to the text; the rows go on where the call before left them.
std::string HexadecimalText(HexadecimalRows& rows, std::span<const uint8_t> bytes);
std::string EndHexadecimalRow(HexadecimalRows& rows);  // empty when no row is open

// Puts a time in front of each line.
struct LineStamps {
  bool at_line_start = true;
};
// The text with `stamp` before each line that begins in it; the text of the next call goes on behind it.
std::string StampedText(LineStamps& stamps, std::string_view text, const std::string& stamp);
std::string ClockStamp();  // "[12:34:56.789] ", local time

// CR, LF and CR LF, also when cut between, become CR LF; a line that never ends is broken.
struct ViewLines {
  bool after_cr = false;
  size_t column = 0;
};
// What the text, which goes on behind that of the call before, adds to the view.
std::string ViewText(ViewLines& lines, std::string_view text);

// Pieces of text on their way to the view. At most kViewBytes wait: of more the view shows the end.
struct ConsolePiece {
  std::string text;
  ReportColour colour = ReportColour::kNeutral;
};
struct ViewQueue {
  std::deque<ConsolePiece> pieces;
  size_t bytes = 0;
  bool text_dropped = false;  // what the view holds is older than what was dropped
  bool cleared = false;       // by the user, whatever he was doing
  bool start_anew = false;    // of a part that is taken: the view is emptied first
};
// Puts the text behind what waits. At most kViewBytes of it are kept.
void Enqueue(ViewQueue& queue, std::string_view text, ReportColour colour);

// What the view's user is doing.
enum class ViewUse {
  kFollows,  // sees the end
  kLooks,    // scrolled up, or has selected something: nothing may be taken away
  kSelects,  // with the mouse or the keys, just now: nothing may be added
};
// What a view's scroll bar and mouse say of it, in any one unit for the bar's figures.
struct ViewLook {
  bool selecting = false;  // the mouse or the shift key is held on it
  size_t selected = 0;     // characters
  size_t shown = 0;        // characters that it holds
  bool has_bar = false;    // the scroll bar is in sight: a hidden one keeps the figures of an earlier text
  int64_t position = 0, page = 0, maximum = 0;
};
// It follows when its end is in sight and nothing is selected; an empty view always follows.
ViewUse UseOfView(const ViewLook& look);

// The next part to add, about kUpdateBytes. Empty when the view cannot take any now.
ViewQueue TakePieces(ViewQueue& queue, ViewUse use, size_t shown);
// Characters to take from the front of a view that holds so many, so that it stays quick; 0: none.
size_t ViewExcess(size_t characters);

// Lines that were sent, for the up and down keys.
struct CommandHistory {
  std::deque<std::string> lines;
  size_t place = 0;   // lines.size(): the line being typed
  std::string draft;  // the line being typed, while another is shown
};
// Puts the line at the end, unless it is empty or the last one; the oldest of more than kHistoryLimit goes.
// The line being typed is a new one then.
void Remember(CommandHistory& history, const std::string& line);
// The line to show instead of `shown`; nothing at the end of the list.
std::optional<std::string> Older(CommandHistory& history, const std::string& shown);
// Likewise the other way; behind the newest line stands the draft.
std::optional<std::string> Newer(CommandHistory& history);

// The bytes that a line (UTF-8, its first kCommandLimit characters) is sent as; nothing when hexadecimal
// input is no sequence of pairs of digits.
std::optional<Bytes> CommandBytes(std::string_view line, const ConsoleOptions& options);

// A pasted text: the lines that are complete, and what stands behind the last line end.
struct PastedText {
  std::vector<std::string> lines;
  std::string rest;
};
// Lines end at CR, LF or CR LF, which they lose.
PastedText SplitPasted(std::string_view text);

}  // namespace vexa
