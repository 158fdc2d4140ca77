#include "serial/trace_story.h"

#include <algorithm>
#include <charconv>
#include <span>
#include <utility>

#include "core/messages.h"
#include "image/line_frame.h"

namespace vexa {

namespace {

constexpr size_t kLineBytes = 16;
constexpr uint32_t kLongestPayload = 8192;  // of a frame that either end sends
constexpr std::string_view kRepeatsBegin = "     (the same again, ", kRepeatsEnd = " times)",
                           kTextBegin = "     -- ";
constexpr std::string_view kWakeUpload =
                               "\x02"
                               "DFU \n",
                           kWakeDownload =
                               "\x02"
                               "DUMP\n";

// --- reading ---

// "    0.240 " in front of what stands on the line.
bool TakeTime(std::string_view& line, double& seconds) {
  const size_t begin = line.find_first_not_of(' ');
  if (begin == std::string_view::npos) return false;
  const auto [end, error] = std::from_chars(line.data() + begin, line.data() + line.size(), seconds);
  if (error != std::errc() || !(seconds >= 0 && seconds < 1e9)) return false;
  line.remove_prefix(static_cast<size_t>(end - line.data()));
  if (line.empty() || line.front() != ' ') return false;
  line.remove_prefix(1);
  return true;
}

// "02 44 46 " up to the column of the text.
bool TakeBytes(std::string_view line, std::vector<uint8_t>& bytes) {
  for (size_t i = 0; i < kLineBytes && line.size() >= 3 && line[0] != ' '; ++i) {
    uint8_t byte = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + 2, byte, 16);
    if (error != std::errc() || end != line.data() + 2 || line[2] != ' ') return false;
    bytes.push_back(byte);
    line.remove_prefix(3);
  }
  return !bytes.empty();
}

bool TakeRepeats(std::string_view line, uint64_t& repeats) {
  if (!line.starts_with(kRepeatsBegin) || !line.ends_with(kRepeatsEnd)) return false;
  line.remove_prefix(kRepeatsBegin.size());
  const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), repeats);
  return error == std::errc() && std::string_view(end, line.data() + line.size()) == kRepeatsEnd;
}

bool TakeEntry(std::string_view line, std::vector<TraceEntry>& entries, bool& goes_on) {
  const bool went_on = std::exchange(goes_on, false);
  TraceEntry entry;
  if (!TakeTime(line, entry.seconds)) return false;
  if (!entries.empty() && entry.seconds < entries.back().seconds) entry.seconds = entries.back().seconds;
  if (line.starts_with(kTextBegin)) {
    entry.text = line.substr(kTextBegin.size());
  } else if (line.starts_with("PC>  ") || line.starts_with("STB> ")) {
    entry.kind = line[0] == 'P' ? TraceEntry::kFromPc : TraceEntry::kFromReceiver;
    if (!TakeBytes(line.substr(5), entry.bytes)) return false;
    goes_on = entry.bytes.size() == kLineBytes;
    if (went_on && entries.back().kind == entry.kind) {
      auto& before = entries.back().bytes;
      before.insert(before.end(), entry.bytes.begin(), entry.bytes.end());
      return true;
    }
  } else {
    uint64_t repeats = 0;
    if (entries.empty() || entries.back().kind == TraceEntry::kText || !TakeRepeats(line, repeats))
      return false;
    entries.back().repeats += std::min<uint64_t>(repeats, UINT32_MAX);
    return true;
  }
  entries.push_back(std::move(entry));
  return true;
}

// --- explaining ---

struct Meaning {
  uint8_t byte;
  const char *name, *from_pc, *from_receiver;
};
constexpr Meaning kMeanings[] = {
    {kSyn, "SYN", "goes on waking the receiver", "SYN"},
    {kEtb, "ETB", "asks whether the receiver is ready", "has something to send"},
    {kEnq, "ENQ", "asks for the next packet", "asks for the next packet"},
    {kAck, "ACK", "is ready", "is ready"},
    {kXon, "XON", "XON", "is awake"},
    {kXoff, "XOFF", "XOFF", "asks for a pause"},
    {kNak, "NAK", "asks for the last packet again", "asks for the last packet again"},
    {kEot, "EOT", "has sent all", "has sent all"},
    {kCan, "CAN", "has received all", "has received all"},
};

const Meaning* MeaningOf(uint8_t byte) {
  const auto* found = std::find_if(std::begin(kMeanings), std::end(kMeanings),
                                   [byte](const Meaning& meaning) { return meaning.byte == byte; });
  return found == std::end(kMeanings) ? nullptr : found;
}

// Parts the bytes of one side into what they mean.
class SideReader {
 public:
  SideReader(bool from_pc, TraceSummary::Side& side, std::vector<TraceStep>& steps)
      : from_pc_(from_pc), side_(side), steps_(steps) {}

  void Take(const TraceEntry& entry) {
    side_.bytes += entry.bytes.size() * (entry.repeats + 1);
    if (pending_.empty()) begun_ = entry.seconds;
    pending_.insert(pending_.end(), entry.bytes.begin(), entry.bytes.end());
    seconds_ = entry.seconds;
    while (done_ < pending_.size() && TakeOne()) begun_ = entry.seconds;
    pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(done_));
    done_ = 0;
    if (entry.repeats == 0 || steps_.empty()) return;
    TraceStep& last = steps_.back();
    last.times += entry.repeats;
    if (last.kind == TraceStep::kPacket || last.kind == TraceStep::kRepeated) side_.repeated += entry.repeats;
  }

  // What never became a packet.
  void End() {
    if (!pending_.empty())
      Add(TraceStep::kDamaged, pending_.size(),
          Format("%zu bytes of a packet that never ended", pending_.size()));
    pending_.clear();
    done_ = 0;
  }

 private:
  std::span<const uint8_t> Rest() const { return std::span(pending_).subspan(done_); }
  bool StartsWith(std::string_view text) const {
    const auto rest = Rest();
    return rest.size() >= text.size() && std::equal(text.begin(), text.end(), rest.begin());
  }

  void Add(TraceStep::Kind kind, size_t size, const std::string& text) {
    const auto bytes = Rest().first(size);
    done_ += size;
    if (!steps_.empty()) {
      TraceStep& last = steps_.back();
      const bool same = last.from_pc == from_pc_ && last.kind == kind && last.text == text;
      if (same && kind == TraceStep::kControl) {
        ++last.times;
        last.last = seconds_;
        return;
      }
    }
    TraceStep step;
    step.kind = kind;
    step.from_pc = from_pc_;
    step.seconds = begun_;
    step.last = seconds_;
    step.text = text;
    step.bytes.assign(bytes.begin(), bytes.end());
    steps_.push_back(std::move(step));
  }

  void AddUnknown() {
    TraceStep* last = steps_.empty() ? nullptr : &steps_.back();
    if (last && last->kind == TraceStep::kUnknown && last->from_pc == from_pc_) {
      last->bytes.push_back(pending_[done_++]);
      last->last = seconds_;
      last->text = Format("%zu bytes that are no packet", last->bytes.size());
    } else {
      Add(TraceStep::kUnknown, 1, "1 byte that is no packet");
    }
  }

  bool WakesUp(std::string_view message, const char* text) {
    if (!StartsWith(message)) return false;
    Add(TraceStep::kControl, message.size(), text);
    packets_ = 0;
    last_packet_.clear();
    return true;
  }

  // False when more bytes are needed.
  bool TakeOne() {
    if (from_pc_ && (WakesUp(kWakeUpload, "wakes the receiver for an upload") ||
                     WakesUp(kWakeDownload, "wakes the receiver for a download")))
      return true;
    if (const Meaning* meaning = MeaningOf(pending_[done_])) {
      Add(TraceStep::kControl, 1,
          Format("%s: %s", meaning->name, from_pc_ ? meaning->from_pc : meaning->from_receiver));
      return true;
    }
    if (pending_[done_] != kStx) {
      AddUnknown();
      return true;
    }
    const FrameView frame = LookAtFrame(Rest());
    if (!frame.length) return false;
    if (*frame.length > kLongestPayload) {
      AddUnknown();
      return true;
    }
    if (!frame.whole) return false;
    TakeFrame(frame);
    return true;
  }

  void TakeFrame(const FrameView& frame) {
    const auto bytes = Rest().first(frame.size());
    if (frame.end != kEtx || frame.stated != frame.sum) {
      ++side_.damaged;
      Add(TraceStep::kDamaged, frame.size(),
          Format("a damaged packet of %u bytes: %s", *frame.length,
                 frame.end != kEtx ? "its end byte is wrong" : "its sum is wrong"));
      return;
    }
    const bool again = std::equal(bytes.begin(), bytes.end(), last_packet_.begin(), last_packet_.end());
    if (again) {
      ++side_.repeated;
      Add(TraceStep::kRepeated, frame.size(),
          Format("packet %llu again", static_cast<unsigned long long>(packets_)));
    } else {
      last_packet_.assign(bytes.begin(), bytes.end());
      ++side_.packets;
      Add(TraceStep::kPacket, frame.size(),
          Format("packet %llu, %u bytes", static_cast<unsigned long long>(++packets_), *frame.length));
    }
    steps_.back().number = packets_;
  }

  bool from_pc_;
  TraceSummary::Side& side_;
  std::vector<TraceStep>& steps_;
  std::vector<uint8_t> pending_, last_packet_;
  size_t done_ = 0;  // bytes of `pending_` that are told
  double begun_ = 0, seconds_ = 0;
  uint64_t packets_ = 0;
};

void NoteSilence(TraceStory& story, double from, double to) {
  if (to - from < kTraceSilence) return;
  TraceStep step;
  step.kind = TraceStep::kSilence;
  step.seconds = from;
  step.last = to;
  step.text = Format("nothing for %.1f s", to - from);
  story.steps.push_back(std::move(step));
  ++story.summary.silences;
  if (to - from <= story.summary.longest_silence) return;
  story.summary.longest_silence = to - from;
  story.summary.longest_at = from;
}

// --- as text ---

std::string SideText(const char* side, const TraceSummary::Side& figures) {
  return Format(
      "%s: %llu bytes, %llu packets, %llu repeated, %llu damaged\n", side,
      static_cast<unsigned long long>(figures.bytes), static_cast<unsigned long long>(figures.packets),
      static_cast<unsigned long long>(figures.repeated), static_cast<unsigned long long>(figures.damaged));
}

bool IsAsked(const std::vector<TraceStep>& steps, size_t at, bool from_pc) {
  return at + 1 < steps.size() && steps[at].kind == TraceStep::kControl && steps[at].times == 1 &&
         steps[at].from_pc != from_pc && steps[at].bytes.size() == 1 && steps[at].bytes[0] == kEnq &&
         steps[at + 1].kind == TraceStep::kPacket && steps[at + 1].from_pc == from_pc &&
         steps[at + 1].times == 1;
}

const char* Actor(const TraceStep& step) {
  if (step.kind == TraceStep::kSilence || step.kind == TraceStep::kText) return "";
  return step.from_pc ? "PC" : "receiver";
}

std::string StepLine(const TraceStep& step) {
  std::string line = Format("%9.3f  %-9s %s", step.seconds, Actor(step), step.text.c_str());
  if (step.times > 1) line += Format(" (%llu times)", static_cast<unsigned long long>(step.times));
  return line + "\n";
}

// The steps from `at` on as one line when at least three packets were each asked for once; `at` is behind
// them then.
std::string RunLine(const std::vector<TraceStep>& steps, size_t& at) {
  if (at + 1 >= steps.size()) return "";
  const bool from_pc = steps[at + 1].from_pc;
  size_t end = at, payload = 0;
  for (; IsAsked(steps, end, from_pc); end += 2) payload += steps[end + 1].bytes.size() - kFrameOverhead;
  if (end < at + 6) return "";
  const TraceStep &first = steps[at + 1], &last = steps[end - 1];
  std::string line =
      Format("%9.3f  %-9s packets %llu to %llu, each asked for once: %zu bytes in %.3f s\n",
             steps[at].seconds, Actor(first), static_cast<unsigned long long>(first.number),
             static_cast<unsigned long long>(last.number), payload, last.last - steps[at].seconds);
  at = end;
  return line;
}

}  // namespace

std::optional<std::vector<TraceEntry>> ReadTrace(std::string_view file, size_t& line) {
  std::vector<TraceEntry> entries;
  bool goes_on = false;
  for (line = 1; !file.empty(); ++line) {
    const size_t end = std::min(file.find('\n'), file.size());
    std::string_view text = file.substr(0, end);
    if (text.ends_with('\r')) text.remove_suffix(1);
    if (!TakeEntry(text, entries, goes_on)) return std::nullopt;
    file.remove_prefix(std::min(end + 1, file.size()));
  }
  return entries;
}

TraceStory ExplainTrace(const std::vector<TraceEntry>& entries) {
  TraceStory story;
  SideReader pc(true, story.summary.pc, story.steps), receiver(false, story.summary.receiver, story.steps);
  for (const TraceEntry& entry : entries) {
    NoteSilence(story, story.summary.seconds, entry.seconds);
    story.summary.seconds = entry.seconds;
    if (entry.kind == TraceEntry::kText) {
      TraceStep step;
      step.seconds = step.last = entry.seconds;
      step.text = entry.text;
      story.steps.push_back(std::move(step));
    } else {
      (entry.kind == TraceEntry::kFromPc ? pc : receiver).Take(entry);
    }
  }
  pc.End();
  receiver.End();
  return story;
}

std::string TraceStoryText(const TraceStory& story) {
  const TraceSummary& summary = story.summary;
  std::string text = Format("%.3f s\n", summary.seconds);
  text += SideText("PC to receiver", summary.pc) + SideText("receiver to PC", summary.receiver);
  text += Format("silences of %.0f s and more: %llu", kTraceSilence,
                 static_cast<unsigned long long>(summary.silences));
  if (summary.silences > 0)
    text += Format(", the longest %.1f s, at %.3f s", summary.longest_silence, summary.longest_at);
  text += "\n\n";
  for (size_t i = 0; i < story.steps.size();) {
    const std::string run = RunLine(story.steps, i);
    text += run.empty() ? StepLine(story.steps[i++]) : run;
  }
  return text;
}

}  // namespace vexa
