#include "view/recovery.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <span>
#include <string_view>
#include <tuple>
#include <utility>

#include "platform/code_page.h"

namespace vexa {

namespace {

constexpr std::string_view kFirstLine = "Vexa Editor recovery 2";
constexpr const char* kFamily = "work-";
constexpr const char* kExtension = ".recovery";
constexpr size_t kNamedInQuestion = 10;

// Nobody is told about a file that is kept or looked at aside.
Context Silent() {
  Context context;
  context.messages.tell = [](const Message&) {};
  context.messages.ask = [](const std::string&, const std::string&, bool) { return false; };
  return context;
}

std::string TimeText(const LocalTime& time) {
  return Format("%04d-%02d-%02d %02d:%02d:%02d", time.year, time.month, time.day, time.hour, time.minute,
                time.second);
}

// A line break would end the line; none of these texts has one that matters.
std::string OneLine(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

// Cuts the first line off `file`.
std::optional<std::string> TakeLine(std::span<const uint8_t>& file) {
  const auto end = std::find(file.begin(), file.end(), uint8_t{'\n'});
  if (end == file.end()) return std::nullopt;
  std::string line(file.begin(), end);
  file = file.subspan(line.size() + 1);
  return line;
}

// Cuts a number, and the space behind it, off `text`.
template <class Number>
bool TakeNumber(std::string_view& text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc()) return false;
  text.remove_prefix(static_cast<size_t>(end - text.data()));
  if (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  return true;
}

bool ReadState(std::string_view text, std::optional<FileState>& state) {
  if (text.empty()) return true;
  FileState read;
  std::filesystem::file_time_type::rep ticks = 0;
  if (!TakeNumber(text, read.size) || !TakeNumber(text, ticks) || !text.empty()) return false;
  read.written = std::filesystem::file_time_type(std::filesystem::file_time_type::duration(ticks));
  state = read;
  return true;
}

bool ReadVersion(std::string_view text, BinVersion& version) {
  if (!TakeNumber(text, version.major) || !TakeNumber(text, version.minor) || text.size() > 3) return false;
  version.initials = text;
  return true;
}

std::string SettingsText(const Document& document) {
  std::string text;
  for (const uint8_t byte : document.settings_block) text += Format("%02x", unsigned{byte});
  return text;
}

bool ReadSettings(std::string_view text, Document& document) {
  if (text.size() != 2 * document.settings_block.size()) return false;
  for (uint8_t& byte : document.settings_block) {
    const char* end = text.data() + 2;
    if (std::from_chars(text.data(), end, byte, 16).ptr != end) return false;
    text.remove_prefix(2);
  }
  return true;
}

bool ReadNames(const std::string& page, Document& document) {
  document.names = page.empty() ? nullptr : FindCodePage(page);
  return page.empty() || document.names != nullptr;
}

std::string TableSizes(const Document& document) {
  std::string text;
  for (const OpenSdb& sdb : document.sdbs)
    text += Format("%u %zu ", sdb.database->lnb_count, sdb.database->satellites.size());
  return text;
}

// Takes away what the tables of the SDBs were filled with. False when it is not that.
bool CutTables(std::string_view sizes, Document& document) {
  for (const OpenSdb& sdb : document.sdbs) {
    StaticDatabase& database = *sdb.database;
    uint32_t lnbs = 0;
    size_t satellites = 0;
    if (!TakeNumber(sizes, lnbs) || !TakeNumber(sizes, satellites)) return false;
    if (lnbs > database.lnb_count || satellites > database.satellites.size()) return false;
    database.lnb_count = lnbs;
    while (database.satellites.size() > satellites) {
      if (!database.satellites.back()->carriers.empty()) return false;
      database.satellites.pop_back();
    }
  }
  return sizes.empty();
}

void RemoveFile(const Path& path) {
  std::error_code error;
  std::filesystem::remove(path, error);
}

bool IsKeptBefore(const RecoveredWork& left, const RecoveredWork& right) {
  const auto key = [](const LocalTime& t) {
    return std::make_tuple(t.year, t.month, t.day, t.hour, t.minute, t.second);
  };
  return key(left.work.kept) < key(right.work.kept);
}

}  // namespace

std::optional<Bytes> WriteRecovery(const UnsavedWork& work, const Document& document) {
  const std::optional<Bytes> database = BuildBin(Silent(), document, work.version);
  if (!database) return std::nullopt;
  std::string head = std::string(kFirstLine) + "\n";
  head += OneLine(Utf8FromPath(work.path)) + "\n" + OneLine(work.name) + "\n" + TimeText(work.kept) + "\n";
  if (work.state)
    head += std::to_string(work.state->size) + " " +
            std::to_string(work.state->written.time_since_epoch().count());
  head += Format("\n%u %u ", work.version.major, work.version.minor) + work.version.initials + "\n";
  head += OneLine(Utf8FromPath(work.list)) + "\n" + (document.names ? document.names->name : "") + "\n" +
          SettingsText(document) + "\n" + TableSizes(document) + "\n";
  head += std::to_string(database->size()) + "\n";
  Bytes file(head.begin(), head.end());
  file.insert(file.end(), database->begin(), database->end());
  return file;
}

std::optional<RecoveredWork> ReadRecovery(std::span<const uint8_t> file) {
  if (TakeLine(file) != std::string(kFirstLine)) return std::nullopt;
  const auto path = TakeLine(file), name = TakeLine(file), time = TakeLine(file), state = TakeLine(file),
             version = TakeLine(file), list = TakeLine(file), page = TakeLine(file),
             settings = TakeLine(file), tables = TakeLine(file), size = TakeLine(file);
  if (!size || *size != std::to_string(file.size())) return std::nullopt;
  RecoveredWork recovered;
  recovered.work.path = PathFromUtf8(*path);
  recovered.work.name = *name;
  recovered.work.list = PathFromUtf8(*list);
  const std::optional<LocalTime> kept = ParseLocalTime(*time);
  if (!kept || !ReadState(*state, recovered.work.state) || !ReadVersion(*version, recovered.work.version))
    return std::nullopt;
  recovered.work.kept = *kept;
  Document& document = recovered.document;
  OpenBinBytes(Silent(), file, document);  // when it fails, the document is not read whole
  if (!document.read_whole || !CutTables(*tables, document) || !ReadNames(*page, document) ||
      !ReadSettings(*settings, document))
    return std::nullopt;
  return recovered;
}

std::unique_ptr<Recovery> Recovery::Start(const Path& root, std::string& why) {
  std::error_code error;
  std::filesystem::create_directories(root, error);
  if (error) {
    why = Reason(Attempt::kMakeFolder, Utf8FromPath(root), error);
    return nullptr;
  }
  auto folder = TemporaryFolder::MakeIn(root, std::string(kFamily) + "1", why);
  if (!folder) return nullptr;
  folder->LeaveBehind();
  return std::unique_ptr<Recovery>(new Recovery(std::move(folder)));
}

Path Recovery::FileOf(uint64_t window) const {
  return folder_->path() / (std::to_string(window) + kExtension);
}

Outcome Recovery::Keep(uint64_t window, uint64_t turn, const UnsavedWork& work, const Document& document) {
  const auto kept = turns_.find(window);
  if (kept != turns_.end() && kept->second == turn) return true;
  const std::optional<Bytes> file = WriteRecovery(work, document);
  if (!file) return false;
  const WriteResult written = WriteWholeFile(FileOf(window), *file);
  if (written != WriteResult::kDone) return {written.error};
  turns_[window] = turn;
  return true;
}

bool Recovery::MustTell(bool kept, bool may_tell) {
  if (kept) told_ = false;
  return !kept && may_tell && !std::exchange(told_, true);
}

void Recovery::Forget(uint64_t window) {
  if (turns_.erase(window) == 0) return;
  RemoveFile(FileOf(window));
}

AbandonedWork::AbandonedWork(const Path& root) : folders_(TemporaryFolder::TakeAbandoned(root, kFamily)) {
  for (const auto& folder : folders_) folder->LeaveBehind();
  for (const auto& folder : folders_) {
    std::vector<Path> names;
    ListFolder(folder->path(), names);
    for (const Path& name : names) {
      if (name.extension() != kExtension) continue;
      const std::optional<Bytes> file = ReadWholeFile(folder->path() / name);
      std::optional<RecoveredWork> work = file ? ReadRecovery(*file) : std::nullopt;
      if (!work) continue;
      work->file = folder->path() / name;
      works_.push_back(std::move(*work));
    }
  }
  std::stable_sort(works_.begin(), works_.end(), IsKeptBefore);
}

// A folder in which nothing is left but the owner's file goes.
AbandonedWork::~AbandonedWork() {
  for (const auto& folder : folders_) {
    std::vector<Path> names;
    folder->LeaveBehind(!ListFolder(folder->path(), names) || names.size() > 1);
  }
}

std::string AbandonedWork::Question() const {
  std::string text = "Vexa Editor ended before this work was saved:\n";
  for (size_t i = 0; i < works_.size() && i < kNamedInQuestion; ++i) {
    const UnsavedWork& work = works_[i].work;
    text += "\n" + (work.path.empty() ? work.name : Utf8FromPath(work.path)) + ", " + TimeText(work.kept);
  }
  if (works_.size() > kNamedInQuestion) text += Format("\nand %zu more", works_.size() - kNamedInQuestion);
  return text +
         "\n\nDo you want to open it?\n\n"
         "Yes opens it, still unsaved. No throws it away. Cancel asks again at the next start.";
}

void AbandonedWork::HandOver(const std::function<bool(RecoveredWork& work)>& take) {
  for (RecoveredWork& work : works_) {
    if (take(work)) RemoveFile(work.file);
  }
}

void AbandonedWork::Remove() {
  for (const RecoveredWork& work : works_) RemoveFile(work.file);
}

}  // namespace vexa
