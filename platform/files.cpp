#include "platform/files.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <memory>
#include <system_error>
#include <vector>

#include "platform/file_system.h"
#include "platform/interrupt.h"
#include "platform/terminal.h"

namespace vexa {

namespace fs = std::filesystem;

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// Gone at the end, unless it was renamed.
struct Scratch {
  Path path;                          // empty: none could be made
  std::error_code error;              // why
  std::unique_ptr<LockedFile> owner;  // null where the file system knows no locks
  Scratch() = default;
  Scratch(Scratch&& other) noexcept : error(other.error), owner(std::move(other.owner)) {
    path.swap(other.path);
  }
  Scratch& operator=(Scratch&& other) noexcept {
    path.swap(other.path);
    error = other.error;
    owner.swap(other.owner);
    return *this;
  }
  ~Scratch() {
    std::error_code ignored;
    if (!path.empty()) fs::remove(path, ignored);
  }
};

constexpr std::string_view kScratchBegin = ".vexa-", kScratchEnd = ".tmp";
// A second name of what a target holds, until all files of a write have theirs. Its owner's scratch file has
// the same name up to the end.
constexpr std::string_view kFormerEnd = ".old";
// The only name of that, where the file system refuses second names. It is never taken for abandoned: of a
// program that was killed meanwhile it may be all that there is.
constexpr std::string_view kMovedEnd = ".kept";
// Of a file whose owner ran where nobody here can tell whether it still does.
constexpr auto kAbandonedAge = std::chrono::hours(24);

// Process and system in hexadecimal digits, the counter with 16 of them and the system with 8.
std::string ScratchName(unsigned long process, unsigned long long counter, unsigned system,
                        std::string_view end) {
  char name[80];
  std::snprintf(name, sizeof name, "%s%lx-%016llx-%08x%s", kScratchBegin.data(), process, counter, system,
                end.data());
  return name;
}

// A new, empty file beside `target`, a scratch file locked as long as its owner lives. Its name is short, so
// that it can stand beside one of the longest names, and was free: no file of the user's and none of another
// process is ever taken for it. It ends with the number of the system that runs the owner.
Scratch ScratchBeside(const Path& target) {
  static std::atomic<uint64_t> counter{
      static_cast<uint64_t>(std::chrono::system_clock::now().time_since_epoch().count())};
  Scratch scratch;
  for (int attempt = 0; attempt < 1000; ++attempt) {
    Path path = target.parent_path() / ScratchName(ProcessNumber(), counter++, RunningSystem(), kScratchEnd);
    const NewFile made = CreateNewFile(path, scratch.error);
    if (made == NewFile::kTaken) continue;
    if (made == NewFile::kFailed) break;
    scratch.path = std::move(path);
    scratch.owner = LockFile(scratch.path, false);
    const Cause cause = scratch.owner ? Cause::kOther : CauseOf(LastSystemError());
    if (cause != Cause::kInUse && cause != Cause::kMissing) break;
    // Another process took it for abandoned before it was locked.
    std::error_code ignored;
    fs::remove(scratch.path, ignored);
    scratch.path.clear();
  }
  return scratch;
}

// Whether the name is one that this program gives to what goes when its owner is gone; `here`: to an owner of
// this system, as it runs.
bool IsScratchName(const Path& path, bool& here) {
  const std::string name = Utf8FromPath(path);
  unsigned long process = 0;
  unsigned long long counter = 0;
  unsigned system = 0;
  if (!name.starts_with(kScratchBegin) ||
      std::sscanf(name.c_str() + kScratchBegin.size(), "%lx-%llx-%x", &process, &counter, &system) != 3)
    return false;
  here = system == RunningSystem();
  return name == ScratchName(process, counter, system, kScratchEnd) ||
         name == ScratchName(process, counter, system, kFormerEnd);
}

// The lock of the owner's scratch file tells whether one who ran on this system, `here`, is gone; of others,
// whose locks may not be seen here, its age does. It is held until the file is removed, so that no owner
// takes it in between. An owner's own file goes last: a second name without it is nobody's.
void RemoveIfAbandoned(const Path& path, bool here) {
  std::error_code error;
  if (fs::symlink_status(path, error).type() != fs::file_type::regular) return;
  const Path owned = Path(path).replace_extension(kScratchEnd);
  const bool has_owner = fs::symlink_status(owned, error).type() != fs::file_type::not_found;
  const auto owner = has_owner ? LockFile(owned, false) : nullptr;
  if (has_owner && !owner && CauseOf(LastSystemError()) == Cause::kInUse) return;
  const auto written = fs::last_write_time(owned, error);
  const bool old = !error && fs::file_time_type::clock::now() - written > kAbandonedAge;
  if (!has_owner || (owner && here) || old) fs::remove(path, error);
}

// Removes what stands beside `target` of owners that are gone. Failures are silent.
void RemoveAbandonedBeside(const Path& target) {
  const Path parent = target.parent_path();
  std::vector<Path> names;
  if (!ListFolder(parent.empty() ? Path(".") : parent, names)) return;
  for (const Path& name : names) {
    bool here = false;
    if (IsScratchName(name, here)) RemoveIfAbandoned(parent / name, here);
  }
}

// A file without any permission to write: its user wants it kept.
bool IsReadOnly(const fs::file_status& status) {
  constexpr auto kWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  return fs::is_regular_file(status) && (status.permissions() & kWrite) == fs::perms::none;
}

// Creates the file and fills it; it is closed in every case. A failure of `produce` itself has no error of
// the system.
WriteResult Fill(const Path& path, bool device, const std::function<bool(const PieceWriter&)>& produce,
                 const FileOperations& files) {
  const Made<std::FILE*> file = files.create(path);
  if (!file) return {WriteResult::kCannotCreate, file.error};
  bool done = false;
  Outcome written;
  const auto append = [&](std::span<const uint8_t> piece) {
    written = files.write(file.value, piece);
    return written.done;
  };
  const auto replace_start = [&](std::span<const uint8_t> piece) {
    ForgetFileErrors();
    // Some systems forget, as they seek, what they could not flush.
    if (std::fflush(file.value) == 0 && std::fseek(file.value, 0, SEEK_SET) == 0) return append(piece);
    written = LastFileError();
    return false;
  };
  try {
    PieceWriter writer{append, nullptr};
    if (!device) writer.replace_start = replace_start;
    done = produce(writer);
  } catch (...) {
    files.finish(file.value);
    throw;
  }
  const Outcome finished = files.finish(file.value);
  if (!written) return {WriteResult::kFailed, written.error};
  if (!finished) return {WriteResult::kFailed, finished.error};
  return done ? WriteResult::kDone : WriteResult::kFailed;
}

constexpr size_t kReadPiece = size_t{4} << 20;  // between two looks at whether the user interrupts

// As std::fread, in pieces; less than asked for when the program is interrupted.
size_t ReadPieces(std::span<uint8_t> place, std::FILE* file) {
  size_t used = 0;
  while (used < place.size() && !InterruptWatch::IsInterrupted()) {
    const size_t piece = std::min(kReadPiece, place.size() - used);
    const size_t count = std::fread(place.data() + used, 1, piece, file);
    used += count;
    if (count < piece) break;
  }
  return used;
}

// A file on its way to its name; without a scratch file it was written to as it stands.
struct Staged {
  Scratch scratch;
  Path target;
};

// What is refused before anything is tried: a path that is none, a folder, a file that its user wants kept,
// links in a circle.
std::error_code RefusalOf(const Path& path, const fs::file_status& before) {
  std::error_code error;
  if (fs::is_symlink(FollowLinks(path), error))
    return std::make_error_code(std::errc::too_many_symbolic_link_levels);
  if (path.empty()) return std::make_error_code(std::errc::no_such_file_or_directory);
  if (fs::is_directory(before)) return std::make_error_code(std::errc::is_a_directory);
  if (IsReadOnly(before)) return std::make_error_code(std::errc::permission_denied);
  return {};
}

WriteResult Stage(const Path& path, const std::function<bool(const PieceWriter&)>& produce,
                  const FileOperations& files, Staged& staged) {
  std::error_code error;
  const auto before = fs::status(path, error);
  if (const auto refusal = RefusalOf(path, before)) return {WriteResult::kCannotCreate, refusal};
  // A device or a pipe takes the content as it comes; nothing may take its place.
  if ((fs::exists(before) && !fs::is_regular_file(before)) || IsOpenAlready(path))
    return Fill(path, true, produce, files);
  staged.target = FollowLinks(path);  // the file that a link names is replaced, and not the link
  RemoveAbandonedBeside(staged.target);
  staged.scratch = ScratchBeside(staged.target);
  if (staged.scratch.path.empty()) return {WriteResult::kCannotCreate, staged.scratch.error};
  const WriteResult filled = Fill(staged.scratch.path, false, produce, files);
  if (filled == WriteResult::kDone && fs::is_regular_file(before))
    fs::permissions(staged.scratch.path, before.permissions(), error);
  return filled;
}

Outcome TakeName(Staged& staged, const FileOperations& files) {
  const Outcome replaced = files.replace(staged.scratch.path, staged.target);
  if (replaced) staged.scratch.owner.reset();  // some systems put no other file in the place of an open one
  return replaced;
}

// What a name held before it got another file.
struct Former {
  Scratch owner;
  Scratch old;  // gone before its owner's file
  bool kept = false, was_there = false;
};

// Leaves nothing under the target's name, where no second one can be had.
Outcome MoveAside(const Path& target, Former& former) {
  std::error_code error;
  Path moved = Path(former.owner.path).replace_extension(kMovedEnd);
  const NewFile made = CreateNewFile(moved, error);
  if (made == NewFile::kTaken) return std::make_error_code(std::errc::file_exists);
  if (made == NewFile::kFailed) return error;
  former.old.path = std::move(moved);
  return SystemFiles().replace(target, former.old.path);
}

Outcome PutAside(const Path& target, Former& former) {
  std::error_code error;
  former.was_there = fs::exists(target, error);
  if (former.was_there) {
    former.owner = ScratchBeside(target);
    if (former.owner.path.empty()) return former.owner.error;
    Path second = Path(former.owner.path).replace_extension(kFormerEnd);
    Outcome aside = LinkFile(target, second);
    if (aside)
      former.old.path = std::move(second);
    else if (CauseOf(aside.error) != Cause::kMissing)
      aside = MoveAside(target, former);
    // Whoever else writes there has moved it aside, or taken it back.
    former.was_there = aside.done;
    if (!aside && CauseOf(aside.error) != Cause::kMissing) return aside;
  }
  former.kept = true;
  return true;
}

// It is the only one that holds what it holds: it stays, under a name that nobody takes for abandoned.
void KeepForGood(Scratch& old) {
  const Path kept = Path(old.path).replace_extension(kMovedEnd);
  if (kept != old.path) SystemFiles().replace(old.path, kept);
  old.path.clear();
}

void PutBack(const Path& target, Former& former) {
  std::error_code error;
  if (!former.kept) return;
  if (!former.was_there)
    fs::remove(target, error);
  else if (!SystemFiles().replace(former.old.path, target))
    KeepForGood(former.old);
}

// Null when it cannot be opened, and `why`.
std::unique_ptr<std::FILE, CloseFile> OpenToRead(const Path& path, std::error_code& why) {
  if (fs::is_directory(path, why)) {
    why = std::make_error_code(std::errc::is_a_directory);
    return nullptr;
  }
  ForgetFileErrors();
  std::unique_ptr<std::FILE, CloseFile> file(OpenFile(path, false));
  why = file ? std::error_code() : LastFileError();
  return file;
}

// Everything from here to the end; not done when reading breaks off or more than `limit` bytes come. `size`
// is a first guess only: a pipe has none and a file may still grow.
Outcome ReadToEnd(std::FILE* file, uint64_t size, uint64_t limit, Bytes& content) {
  ForgetFileErrors();
  content.resize(static_cast<size_t>(size));
  size_t used = ReadPieces(content, file);
  while (used == content.size()) {
    uint8_t more[4096];
    const size_t count = ReadPieces(more, file);
    if (count == 0) break;
    if (used + count > limit) return std::make_error_code(std::errc::file_too_large);
    content.insert(content.end(), more, more + count);
    used += count;
  }
  content.resize(used);
  if (std::ferror(file)) return LastFileError();
  return !InterruptWatch::IsInterrupted();
}

}  // namespace

Path FollowLinks(Path path) {
  constexpr int kMostLinks = 40;  // one after the other; more are a circle
  std::error_code error;
  for (int links = 0; links < kMostLinks && fs::is_symlink(path, error); ++links)
    path = path.parent_path() / fs::read_symlink(path, error);
  return path;
}

ReadResult ReadWholeFile(const Path& path, Bytes& content, uint64_t limit) {
  content.clear();
  std::error_code error;
  const auto file = OpenToRead(path, error);
  if (!file) return {ReadResult::kCannotOpen, error};
  const uint64_t size = fs::file_size(path, error);
  if (!error && size > limit) return {ReadResult::kFailed, std::make_error_code(std::errc::file_too_large)};
  const Outcome read = ReadToEnd(file.get(), error ? 0 : size, limit, content);
  if (read) return ReadResult::kDone;
  content.clear();
  return {ReadResult::kFailed, read.error};
}

ReadResult ReadFileStart(const Path& path, size_t count, std::string& start) {
  start.clear();
  std::error_code error;
  const auto file = OpenToRead(path, error);
  if (!file) return {ReadResult::kCannotOpen, error};
  start.resize(count);
  ForgetFileErrors();
  start.resize(std::fread(start.data(), 1, count, file.get()));
  if (!std::ferror(file.get())) return ReadResult::kDone;
  const std::error_code why = LastFileError();
  start.clear();
  return {ReadResult::kFailed, why};
}

std::optional<Bytes> ReadWholeFile(const Path& path, uint64_t limit) {
  Bytes content;
  if (ReadWholeFile(path, content, limit) != ReadResult::kDone) return std::nullopt;
  return content;
}

WriteResult WriteWholeFile(const Path& path, std::span<const uint8_t> content, const FileOperations& files) {
  return WriteWholeFileBy(
      path, [&](const PieceWriter& write) { return write(content); }, files);
}

PieceWriter AppendingTo(Bytes& bytes) {
  return {[&](std::span<const uint8_t> piece) {
            bytes.insert(bytes.end(), piece.begin(), piece.end());
            return true;
          },
          [&, start = bytes.size()](std::span<const uint8_t> piece) {
            std::ranges::copy(piece, bytes.begin() + static_cast<ptrdiff_t>(start));
            return true;
          }};
}

WriteResult WriteWholeFileBy(const Path& path, const std::function<bool(const PieceWriter&)>& produce,
                             const FileOperations& files) {
  Staged staged;
  const WriteResult made = Stage(path, produce, files, staged);
  if (made != WriteResult::kDone || staged.scratch.path.empty()) return made;
  const Outcome replaced = TakeName(staged, files);
  if (!replaced) return {WriteResult::kFailed, replaced.error};
  return WriteResult::kDone;
}

WriteResult WriteWholeFiles(std::span<const FileContent> contents, size_t& refused,
                            const FileOperations& files) {
  std::vector<Staged> staged(contents.size());
  for (refused = 0; refused < contents.size(); ++refused) {
    const auto produce = [&](const PieceWriter& write) { return write(contents[refused].content); };
    const WriteResult made = Stage(contents[refused].path, produce, files, staged[refused]);
    if (made != WriteResult::kDone) return made;
  }
  std::vector<Former> former(contents.size());
  const auto put_all_back = [&] {
    for (size_t i = 0; i <= refused; ++i) PutBack(staged[i].target, former[i]);
  };
  try {
    for (refused = 0; refused < contents.size(); ++refused) {
      Staged& one = staged[refused];
      if (one.scratch.path.empty()) continue;
      Outcome placed = PutAside(one.target, former[refused]);
      if (placed) placed = TakeName(one, files);
      if (placed) continue;
      put_all_back();
      return {WriteResult::kFailed, placed.error};
    }
  } catch (const std::bad_alloc&) {
    put_all_back();
    throw;
  }
  return WriteResult::kDone;
}

namespace {

void RemoveContent(const Path& folder, const Path& kept) {
  std::vector<Path> names;
  if (!ListFolder(folder, names)) return;
  for (const Path& name : names) {
    if (name == kept) continue;
    const Path path = folder / name;
    std::error_code error;
    if (fs::symlink_status(path, error).type() == fs::file_type::directory) RemoveContent(path, {});
    fs::remove(path, error);
  }
}

}  // namespace

void EmptyFolder(const Path& folder, const Path& kept) {
  // Walking through it takes memory; what ran out once is often there again.
  for (int attempt = 0; attempt < 2 && !folder.empty(); ++attempt) {
    try {
      return RemoveContent(folder, kept);
    } catch (const std::exception&) {
    }
  }
}

void RemoveFolder(const Path& folder) {
  if (folder.empty()) return;
  std::error_code error;
  if (fs::symlink_status(folder, error).type() == fs::file_type::directory) EmptyFolder(folder, {});
  fs::remove(folder, error);
}

namespace {

// A file that cannot be read counts as one that ends with a whole line.
bool EndsWithinLine(const Path& path) {
  const std::unique_ptr<std::FILE, CloseFile> file(OpenFile(path, false));
  if (!file || std::fseek(file.get(), -1, SEEK_END) != 0) return false;
  const int last = std::fgetc(file.get());
  return last != EOF && last != '\n';
}

}  // namespace

Outcome AppendLines(const Path& path, std::span<const uint8_t> more, std::span<const uint8_t> first) {
  ForgetFileErrors();
  std::FILE* const file = OpenFileToAppend(path);
  if (!file) return LastFileError();
  std::error_code no_size, ignored;
  const auto size = std::filesystem::file_size(path, no_size);
  constexpr uint8_t kLineEnd[] = {'\r', '\n'};
  std::span<const uint8_t> before;
  if (size == 0) before = first;
  if (!no_size && !more.empty() && EndsWithinLine(path)) before = kLineEnd;
  Outcome written = SystemFiles().write(file, before);
  if (written) written = SystemFiles().write(file, more);
  const Outcome flushed = std::fflush(file) == 0 ? Outcome() : LastFileError();
  if (written) written = flushed;
  // Nobody else has added to it yet.
  if (!written && !no_size) std::filesystem::resize_file(path, size, ignored);
  const Outcome finished = SystemFiles().finish(file);
  if (!written || finished) return written;
  if (!no_size && std::filesystem::file_size(path, ignored) == size + before.size() + more.size())
    std::filesystem::resize_file(path, size, ignored);
  return finished;
}

std::error_code WhyUnreadable(const Path& path) {
  std::error_code error;
  const auto status = fs::status(path, error);
  if (fs::is_directory(status)) return std::make_error_code(std::errc::is_a_directory);
  // A pipe or a device is left alone: opening one may wait, or take something from it.
  if (fs::exists(status) && !fs::is_regular_file(status)) return {};
  ForgetFileErrors();
  const std::unique_ptr<std::FILE, CloseFile> file(OpenFile(path, false));
  if (!file) return LastFileError();
  if (std::fgetc(file.get()) == EOF && std::ferror(file.get())) return LastFileError();
  return {};
}

std::error_code WhyNotWritable(const Path& path) {
  std::error_code error;
  const auto before = fs::status(path, error);
  if (const auto refusal = RefusalOf(path, before)) return refusal;
  if (fs::exists(before) && !fs::is_regular_file(before)) return {};
  const Scratch scratch = ScratchBeside(FollowLinks(path));
  return scratch.path.empty() ? scratch.error : std::error_code();
}

std::string ReadReason(const Path& path, const std::error_code& error) {
  return Reason(Attempt::kRead, Utf8FromPath(path), error);
}

std::string WriteReason(const Path& path, const std::error_code& error) {
  return Reason(Attempt::kWrite, Utf8FromPath(path), error);
}

std::string Utf8FromPath(const Path& path) {
  const auto text = path.u8string();
  return {text.begin(), text.end()};
}

Path PathFromUtf8(std::string_view text) {
  return Path(std::u8string(text.begin(), text.end()));
}

Path PlainPath(const Path& path) {
  std::vector<Path::string_type> parts;
  const bool rooted = path.has_root_directory();
  for (const Path& part : path.relative_path()) {
    const auto& name = part.native();
    const bool up = name.size() == 2 && name[0] == '.' && name[1] == '.';
    if (name.empty() || (name.size() == 1 && name[0] == '.')) continue;
    if (up && !parts.empty() && parts.back() != name)
      parts.pop_back();
    else if (!up || !rooted)
      parts.push_back(name);
  }
  Path::string_type plain = path.root_path().native();
  for (size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) plain += Path::preferred_separator;
    plain += parts[i];
  }
  return Path(plain.empty() ? Path::string_type(1, '.') : plain);
}

}  // namespace vexa
