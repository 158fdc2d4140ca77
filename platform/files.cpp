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

}  // namespace

std::FILE* OpenFile(const Path& path, bool writing);  // platform/windows, platform/posix

std::optional<Bytes> ReadWholeFile(const Path& path, uint64_t limit) {
  std::error_code error;
  if (fs::is_directory(path, error)) return std::nullopt;
  const std::unique_ptr<std::FILE, CloseFile> file(OpenFile(path, false));
  if (!file) return std::nullopt;
  // The size is only a first guess: a pipe has none and a file may still grow.
  const uint64_t size = fs::file_size(path, error);
  if (!error && size > limit) return std::nullopt;
  Bytes content(error ? 0 : static_cast<size_t>(size));
  size_t used = content.empty() ? 0 : std::fread(content.data(), 1, content.size(), file.get());
  while (used == content.size()) {
    uint8_t more[4096];
    const size_t count = std::fread(more, 1, sizeof more, file.get());
    if (count == 0) break;
    if (used + count > limit) return std::nullopt;
    content.insert(content.end(), more, more + count);
    used += count;
  }
  if (std::ferror(file.get())) return std::nullopt;
  content.resize(used);
  return content;
}

WriteResult WriteWholeFile(const Path& path, std::span<const uint8_t> content, const FileOperations& files) {
  return WriteWholeFileBy(
      path, [&](const PieceWriter& write) { return write(content); }, files);
}

WriteResult WriteWholeFileBy(const Path& path, const std::function<bool(const PieceWriter&)>& produce,
                             const FileOperations& files) {
  std::error_code error;
  if (path.empty() || fs::is_directory(path, error)) return WriteResult::kCannotCreate;
  // Through a link, so that the file it names is replaced and not the link.
  const Path target = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : path;
  const Path scratch = ScratchBeside(target);
  std::FILE* file = files.create(scratch);
  if (!file) return WriteResult::kCannotCreate;
  bool done = produce([&](std::span<const uint8_t> piece) { return files.write(file, piece); });
  done = files.finish(file) && done;
  if (done) {
    const auto before = fs::status(target, error);
    if (fs::is_regular_file(before)) fs::permissions(scratch, before.permissions(), error);
    done = files.replace(scratch, target);
  }
  if (done) return WriteResult::kDone;
  fs::remove(scratch, error);
  return WriteResult::kFailed;
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
