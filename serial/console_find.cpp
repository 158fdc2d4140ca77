// Finds texts in the whole log, and fetches parts of it that the view does not hold any more.
#include <algorithm>
#include <array>
#include <fstream>

#include "platform/text.h"
#include "serial/console.h"

namespace vexa {

namespace {

constexpr size_t kBlock = 1 << 20;            // bytes searched at a time
constexpr uint64_t kSurroundings = 32 << 10;  // bytes shown on either side of what was found

char Folded(char character) {
  const auto byte = static_cast<uint8_t>(character);
  const bool capital = (byte >= 'A' && byte <= 'Z') || (byte >= 0xC0 && byte <= 0xDE && byte != 0xD7);
  return capital ? static_cast<char>(byte + 0x20) : character;
}

std::string ReadPart(std::istream& file, uint64_t from, uint64_t to) {
  std::string part(static_cast<size_t>(to - from), '\0');
  file.clear();
  file.seekg(static_cast<std::streamoff>(from));
  file.read(part.data(), static_cast<std::streamsize>(part.size()));
  part.resize(static_cast<size_t>(std::max<std::streamsize>(0, file.gcount())));
  return part;
}

// The first place of the text in [from, to) of the file.
std::optional<uint64_t> FindInFile(std::istream& file, std::string text, bool match_case, uint64_t from,
                                   uint64_t to) {
  const auto fold = [match_case](std::string& bytes) {
    if (!match_case) std::transform(bytes.begin(), bytes.end(), bytes.begin(), Folded);
  };
  fold(text);
  while (from + text.size() <= to) {
    std::string block = ReadPart(file, from, std::min<uint64_t>(to, from + kBlock + text.size()));
    fold(block);
    const size_t found = block.find(text);
    if (found != std::string::npos) return from + found;
    if (block.size() < text.size()) break;  // the file is shorter than it was
    from += block.size() - text.size() + 1;
  }
  return std::nullopt;
}

// With the log's lock held.
std::deque<ConsolePiece> PiecesOf(const ConsoleLog& log, std::istream& file, uint64_t from, uint64_t to,
                                  ViewLines& lines) {
  const std::string text = ReadPart(file, from, to);
  std::deque<ConsolePiece> pieces;
  const auto add = [&](uint64_t first, uint64_t last, ReportColour colour) {
    const auto bytes =
        std::string_view(text).substr(static_cast<size_t>(first - from), static_cast<size_t>(last - first));
    if (!bytes.empty()) pieces.push_back({ViewText(lines, bytes), colour});
  };
  uint64_t place = from;
  for (const ColouredText& coloured : log.coloured) {
    const uint64_t first = std::max(place, coloured.place);
    const uint64_t last = std::min(from + text.size(), coloured.place + coloured.size);
    if (first >= last) continue;
    add(place, first, ReportColour::kNeutral);
    add(first, last, coloured.colour);
    place = last;
  }
  add(place, from + text.size(), ReportColour::kNeutral);
  return pieces;
}

}  // namespace

std::optional<FoundText> FindInWholeLog(Console& console, const std::string& text, bool match_case) {
  ConsoleLog& log = console.log;
  std::ifstream file(log.path, std::ios::binary);
  const std::string wanted = LatinFromUtf8(text);
  uint64_t size = 0;
  {
    const std::lock_guard hold(log.lock);
    size = log.size;
  }
  if (!file || wanted.empty()) return std::nullopt;
  // Behind the part that is shown, with what its end cuts in two; then from the beginning.
  const uint64_t start = log.part_end - std::min<uint64_t>(log.part_end, wanted.size() - 1);
  auto place = FindInFile(file, wanted, match_case, start, size);
  if (!place && start > 0) place = FindInFile(file, wanted, match_case, 0, size);
  if (!place) return std::nullopt;

  const std::lock_guard hold(log.lock);
  const uint64_t end = *place + wanted.size(), first = *place - std::min(*place, kSurroundings);
  log.part_end = std::min(size, end + kSurroundings);
  log.queue.text_dropped = true;  // the view does not go on with what arrives
  ViewLines lines;
  FoundText found;
  found.before = PiecesOf(log, file, first, *place, lines);
  found.text = PiecesOf(log, file, *place, end, lines);
  found.after = PiecesOf(log, file, end, log.part_end, lines);
  return found;
}

void ReturnToEndOfLog(Console& console) {
  ConsoleLog& log = console.log;
  std::ifstream file(log.path, std::ios::binary);
  const uint64_t from = log.size - std::min<uint64_t>(log.size, kViewBytes / 2);
  ViewLines lines;
  log.part_end = 0;
  if (!file) return;
  log.queue = {};
  for (const ConsolePiece& piece : PiecesOf(log, file, from, log.size, lines))
    Enqueue(log.queue, piece.text, piece.colour);
  log.queue.cleared = true;
  log.queue.text_dropped = from > 0;
}

}  // namespace vexa
