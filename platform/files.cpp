#include "platform/files.h"

#include <atomic>
#include <cstdio>
#include <memory>
#include <system_error>

namespace vexa {

namespace fs = std::filesystem;

namespace {

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// A name beside `target` that no other write of this process uses.
Path ScratchBeside(const Path& target) {
  static std::atomic<unsigned> counter{0};
  Path scratch = target;
  scratch += ".~" + std::to_string(counter++) + "~";
  return scratch;
}

// Gone at the end, unless it was renamed.
struct Scratch {
  const Path path;
  ~Scratch() {
    std::error_code ignored;
    fs::remove(path, ignored);
  }
};

// A file without any permission to write: its user wants it kept.
bool IsReadOnly(const fs::file_status& status) {
  constexpr auto kWrite = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
  return fs::is_regular_file(status) && (status.permissions() & kWrite) == fs::perms::none;
}

// Creates the file and fills it; it is closed in every case.
WriteResult Fill(const Path& path, const std::function<bool(const PieceWriter&)>& produce,
                 const FileOperations& files) {
  std::FILE* file = files.create(path);
  if (!file) return WriteResult::kCannotCreate;
  bool done = false;
  try {
    done = produce([&](std::span<const uint8_t> piece) { return files.write(file, piece); });
  } catch (...) {
    files.finish(file);
    throw;
  }
  return files.finish(file) && done ? WriteResult::kDone : WriteResult::kFailed;
}

}  // namespace

std::FILE* OpenFile(const Path& path, bool writing);  // platform/windows, platform/posix

namespace {

// Everything from here to the end; false when reading breaks off or more than `limit` bytes come. `size` is a
// first guess only: a pipe has none and a file may still grow.
bool ReadToEnd(std::FILE* file, uint64_t size, uint64_t limit, Bytes& content) {
  content.resize(static_cast<size_t>(size));
  size_t used = content.empty() ? 0 : std::fread(content.data(), 1, content.size(), file);
  while (used == content.size()) {
    uint8_t more[4096];
    const size_t count = std::fread(more, 1, sizeof more, file);
    if (count == 0) break;
    if (used + count > limit) return false;
    content.insert(content.end(), more, more + count);
    used += count;
  }
  content.resize(used);
  return !std::ferror(file);
}

}  // namespace

ReadResult ReadWholeFile(const Path& path, Bytes& content, uint64_t limit) {
  content.clear();
  std::error_code error;
  if (fs::is_directory(path, error)) return ReadResult::kCannotOpen;
  const std::unique_ptr<std::FILE, CloseFile> file(OpenFile(path, false));
  if (!file) return ReadResult::kCannotOpen;
  const uint64_t size = fs::file_size(path, error);
  if (error || size <= limit) {
    if (ReadToEnd(file.get(), error ? 0 : size, limit, content)) return ReadResult::kDone;
    content.clear();
  }
  return ReadResult::kFailed;
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

WriteResult WriteWholeFileBy(const Path& path, const std::function<bool(const PieceWriter&)>& produce,
                             const FileOperations& files) {
  std::error_code error;
  const auto before = fs::status(path, error);
  if (path.empty() || fs::is_directory(before) || IsReadOnly(before)) return WriteResult::kCannotCreate;
  // A device or a pipe takes the content as it comes; nothing may take its place.
  if (fs::exists(before) && !fs::is_regular_file(before)) return Fill(path, produce, files);
  // Through a link, so that the file it names is replaced and not the link.
  const Path target = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : path;
  const Scratch scratch{ScratchBeside(target)};
  const WriteResult filled = Fill(scratch.path, produce, files);
  if (filled != WriteResult::kDone) return filled;
  if (fs::is_regular_file(before)) fs::permissions(scratch.path, before.permissions(), error);
  return files.replace(scratch.path, target) ? WriteResult::kDone : WriteResult::kFailed;
}

std::optional<Path> CreateTemporaryFolder(const std::string& name) {
  std::error_code error;
  const Path folder = fs::temp_directory_path(error) / PathFromUtf8(name);
  if (error) return std::nullopt;
  // A folder left by a crashed program of the same number is taken over, empty.
  fs::remove_all(folder, error);
  if (!fs::create_directory(folder, error) || error) return std::nullopt;
  return folder;
}

void RemoveFolder(const Path& folder) {
  std::error_code error;
  if (!folder.empty()) fs::remove_all(folder, error);
}

std::string Utf8FromPath(const Path& path) {
  const auto text = path.u8string();
  return {text.begin(), text.end()};
}

Path PathFromUtf8(std::string_view text) {
  return Path(std::u8string(text.begin(), text.end()));
}

}  // namespace vexa
