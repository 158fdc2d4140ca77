#include "serial/console_text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "core/messages.h"
#include "image/line_frame.h"
#include "platform/clock.h"
#include "platform/text.h"
#include "serial/transfer.h"

namespace vexa {

namespace {

constexpr size_t kRowBytes = 16;
constexpr size_t kPieceBytes = 4096;  // pieces of a colour are joined up to this

constexpr std::array<bool, 256> BlankedBytes() {
  std::array<bool, 256> blanked{};
  for (const int byte : {0x00, 0x04, 0x05, 0x06, 0x07, 0x11, 0x13, 0x15, 0x17, 0x91, 0x99})
    blanked[static_cast<size_t>(byte)] = true;
  return blanked;
}

// True when the byte is the last one of its frame.
bool FollowFrame(HexadecimalRows& rows, uint8_t byte) {
  if (rows.frame_left > 0) return --rows.frame_left == 0;
  if (rows.head.empty() && byte != kStx) return false;
  rows.head.push_back(byte);
  const FrameView frame = LookAtFrame(rows.head);
  if (!frame.length) return false;
  // No frame is as long as that: the byte only looked like the start of one.
  if (*frame.length <= kMaximumFrame) rows.frame_left = frame.size() - kFrameHead;
  rows.head.clear();
  return false;
}

void AddByte(std::string& text, uint8_t byte) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  text += kDigits[byte >> 4];
  text += kDigits[byte & 15];
  text += ' ';
}

int DigitValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  return -1;
}

// Digits in pairs, blanks between pairs only.
std::optional<Bytes> BytesOfDigits(std::string_view line) {
  Bytes bytes;
  for (size_t i = 0; i < line.size();) {
    if (line[i] == ' ' || line[i] == '\t') {
      ++i;
      continue;
    }
    const int high = DigitValue(line[i]), low = i + 1 < line.size() ? DigitValue(line[i + 1]) : -1;
    if (high < 0 || low < 0) return std::nullopt;
    bytes.push_back(static_cast<uint8_t>(high << 4 | low));
    i += 2;
  }
  return bytes;
}

const char* EndingText(LineEnding ending) {
  switch (ending) {
    case LineEnding::kCarriageReturn:
      return "\r";
    case LineEnding::kLineFeed:
      return "\n";
    case LineEnding::kBoth:
      return "\r\n";
    case LineEnding::kNone:
      break;
  }
  return "";
}

}  // namespace

void BlankControlBytes(std::span<uint8_t> bytes) {
  static constexpr auto kBlanked = BlankedBytes();
  for (uint8_t& byte : bytes) {
    if (kBlanked[byte]) byte = ' ';
  }
}

std::string EndHexadecimalRow(HexadecimalRows& rows) {
  if (rows.row.empty()) return "";
  std::string text((kRowBytes - rows.row.size()) * 3 + 1, ' ');
  for (const uint8_t byte : rows.row) text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
  rows.row.clear();
  return text + "\r\n";
}

std::string HexadecimalText(HexadecimalRows& rows, std::span<const uint8_t> bytes) {
  std::string text;
  text.reserve(bytes.size() * 5);
  for (const uint8_t byte : bytes) {
    if (rows.head.empty() && rows.frame_left == 0 && byte == kStx) text += EndHexadecimalRow(rows);
    const bool ended = FollowFrame(rows, byte);
    AddByte(text, byte);
    rows.row.push_back(byte);
    if (ended || rows.row.size() == kRowBytes) text += EndHexadecimalRow(rows);
  }
  return text;
}

std::string StampedText(LineStamps& stamps, std::string_view text, const std::string& stamp) {
  std::string stamped;
  stamped.reserve(text.size() + stamp.size());
  for (const char character : text) {
    const bool end = character == '\r' || character == '\n';
    if (stamps.at_line_start && !end) stamped += stamp;
    stamps.at_line_start = end;
    stamped += character;
  }
  return stamped;
}

std::string ClockStamp() {
  using std::chrono::milliseconds;
  const auto now = [] {
    const auto since = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<milliseconds>(since).count();
  };
  // The two clocks must be read within one second.
  for (;;) {
    const auto before = now();
    const LocalTime time = LocalTimeNow();
    if (now() / 1000 != before / 1000) continue;
    return Format("[%02d:%02d:%02d.%03d] ", time.hour, time.minute, time.second,
                  static_cast<int>(before % 1000));
  }
}

std::string ViewText(ViewLines& lines, std::string_view text) {
  std::string shown;
  shown.reserve(text.size() + 16);
  for (const char character : text) {
    const bool second_half = character == '\n' && lines.after_cr;
    lines.after_cr = character == '\r';
    if (second_half) continue;
    if (character == '\r' || character == '\n') {
      shown += "\r\n";
      lines.column = 0;
      continue;
    }
    if (lines.column == kViewColumns) {
      shown += "\r\n";
      lines.column = 0;
    }
    shown += character;
    ++lines.column;
  }
  return shown;
}

void Enqueue(ViewQueue& queue, std::string_view text, ReportColour colour) {
  queue.bytes += text.size();
  while (!text.empty()) {
    if (queue.pieces.empty() || queue.pieces.back().colour != colour ||
        queue.pieces.back().text.size() >= kPieceBytes)
      queue.pieces.push_back({"", colour});
    std::string& piece = queue.pieces.back().text;
    size_t count = std::min(text.size(), kPieceBytes - piece.size());
    if (count < text.size() && text[count - 1] == '\r') ++count;  // a line end stays whole
    piece += text.substr(0, count);
    text.remove_prefix(count);
  }
  while (queue.bytes > kViewBytes) {
    queue.bytes -= queue.pieces.front().text.size();
    queue.pieces.pop_front();
    queue.text_dropped = true;
  }
}

ViewUse UseOfView(const ViewLook& look) {
  if (look.selecting) return ViewUse::kSelects;
  if (look.shown == 0) return ViewUse::kFollows;
  if (look.selected > 0) return ViewUse::kLooks;
  if (!look.has_bar || look.page <= 0) return ViewUse::kFollows;
  // A quarter of a page of tolerance: the last line may be cut.
  return look.position + look.page + look.page / 4 >= look.maximum ? ViewUse::kFollows : ViewUse::kLooks;
}

ViewQueue TakePieces(ViewQueue& queue, ViewUse use, size_t shown) {
  ViewQueue taken;
  const bool cleared = std::exchange(queue.cleared, false);
  if (!cleared && use == ViewUse::kSelects) return taken;
  if (!cleared && use == ViewUse::kLooks && (queue.text_dropped || shown > kKeptBytes)) return taken;
  taken.text_dropped = std::exchange(queue.text_dropped, false);
  taken.start_anew = taken.text_dropped || cleared;
  while (!queue.pieces.empty() && taken.bytes < kUpdateBytes) {
    const size_t size = queue.pieces.front().text.size();
    taken.bytes += size;
    queue.bytes -= size;
    taken.pieces.push_back(std::move(queue.pieces.front()));
    queue.pieces.pop_front();
  }
  return taken;
}

size_t ViewExcess(size_t characters) {
  return characters > 2 * kViewBytes ? characters - kViewBytes : 0;
}

void Remember(CommandHistory& history, const std::string& line) {
  if (!line.empty() && (history.lines.empty() || history.lines.back() != line)) {
    history.lines.push_back(line);
    if (history.lines.size() > kHistoryLimit) history.lines.pop_front();
  }
  history.place = history.lines.size();
  history.draft.clear();
}

std::optional<std::string> Older(CommandHistory& history, const std::string& shown) {
  if (history.place == 0) return std::nullopt;
  if (history.place == history.lines.size()) history.draft = shown;
  return history.lines[--history.place];
}

std::optional<std::string> Newer(CommandHistory& history) {
  if (history.place >= history.lines.size()) return std::nullopt;
  return ++history.place == history.lines.size() ? history.draft : history.lines[history.place];
}

std::optional<Bytes> CommandBytes(std::string_view line, const ConsoleOptions& options) {
  std::string text = LatinFromUtf8(line);
  text.resize(std::min(text.size(), kCommandLimit));
  if (options.hexadecimal_input) return BytesOfDigits(text);
  text += EndingText(options.line_ending);
  return Bytes(text.begin(), text.end());
}

PastedText SplitPasted(std::string_view text) {
  PastedText pasted;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r' && text[i] != '\n') {
      pasted.rest += text[i];
      continue;
    }
    if (text.substr(i, 2) == "\r\n") ++i;
    pasted.lines.push_back(std::move(pasted.rest));
    pasted.rest.clear();
  }
  return pasted;
}

}  // namespace vexa
