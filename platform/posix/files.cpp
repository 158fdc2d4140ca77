#include "platform/files.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <new>

#include "platform/file_system.h"

namespace vexa {

namespace {

// What could not be opened for want of memory is no file that is not there.
template <class Opened>
Opened* ThrowWithoutMemory(Opened* opened) {
  if (!opened && errno == ENOMEM) throw std::bad_alloc();
  return opened;
}

// The number of the open file of the disk that the path names; -1: it is no such path.
int DescriptorOf(const Path& path) {
  const std::string& text = path.native();
  int number = text == "/dev/stdout" ? STDOUT_FILENO : text == "/dev/stderr" ? STDERR_FILENO : -1;
  for (const std::string_view folder : {"/dev/fd/", "/proc/self/fd/"}) {
    if (!text.starts_with(folder)) continue;
    const auto [end, error] = std::from_chars(text.data() + folder.size(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) number = -1;
  }
  struct stat facts {};
  return number >= 0 && fstat(number, &facts) == 0 && S_ISREG(facts.st_mode) ? number : -1;
}

}  // namespace

bool IsOpenAlready(const Path& path) {
  return DescriptorOf(path) >= 0;
}

std::FILE* OpenFile(const Path& path, bool writing) {
  if (const int open = writing ? DescriptorOf(path) : -1; open >= 0) {
    const int own = dup(open);
    std::FILE* file = own < 0 ? nullptr : fdopen(own, "wb");
    if (own >= 0 && !file) close(own);
    return ThrowWithoutMemory(file);
  }
  return ThrowWithoutMemory(std::fopen(path.c_str(), writing ? "wb" : "rb"));
}

std::FILE* OpenFileToAppend(const Path& path) {
  std::FILE* file = ThrowWithoutMemory(std::fopen(path.c_str(), "ab"));
  // Where the file system has no locks, it goes on without.
  while (file && flock(fileno(file), LOCK_EX) != 0 && errno == EINTR) {
  }
  return file;
}

Path ComparedName(const Path& path) {
  return path;
}

Outcome ListFolder(const Path& folder, std::vector<Path>& names) {
  struct Close {
    void operator()(DIR* open) const { closedir(open); }
  };
  names.clear();
  const std::unique_ptr<DIR, Close> open(ThrowWithoutMemory(opendir(folder.c_str())));
  if (!open) return LastSystemError();
  for (;;) {
    errno = 0;
    const dirent* entry = readdir(open.get());
    if (!entry) break;
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
      names.emplace_back(entry->d_name);
  }
  if (errno == 0) return true;
  const std::error_code why = LastSystemError();
  names.clear();
  return why;
}

Outcome LinkFile(const Path& file, const Path& name) {
  if (link(file.c_str(), name.c_str()) == 0) return true;
  return LastSystemError();
}

NewFile CreateNewFile(const Path& path, std::error_code& why) {
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  if (file < 0 && errno == EEXIST) return NewFile::kTaken;
  if (file < 0) {
    why = LastSystemError();
    return NewFile::kFailed;
  }
  close(file);
  return NewFile::kMade;
}

namespace {

struct Locked : LockedFile {
  int file = -1;
  ~Locked() override {
    if (file >= 0) close(file);
  }
};

}  // namespace

std::unique_ptr<LockedFile> LockFile(const Path& path, bool create) {
  auto locked = std::make_unique<Locked>();
  locked->file = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | (create ? O_CREAT | O_EXCL : 0), 0600);
  struct stat facts {};
  if (locked->file < 0 || flock(locked->file, LOCK_EX | LOCK_NB) != 0) return nullptr;
  if (fstat(locked->file, &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_nlink == 0) {
    locked.reset();
    errno = ENOENT;
    return nullptr;
  }
  return locked;
}

// Each start of a system has another number, which all its containers see.
uint32_t RunningSystem() {
  static const uint32_t number = [] {
    uint32_t sum = 2166136261U;  // FNV-1a
    char text[64];
    const int file = open("/proc/sys/kernel/random/boot_id", O_RDONLY | O_CLOEXEC);
    ssize_t size = file < 0 ? 0 : read(file, text, sizeof text);
    if (file >= 0) close(file);
    if (size <= 0) size = gethostname(text, sizeof text) == 0 ? static_cast<ssize_t>(sizeof text) : 0;
    for (ssize_t i = 0; i < size && text[i]; ++i)
      sum = (sum ^ static_cast<unsigned char>(text[i])) * 16777619U;
    return sum;
  }();
  return number;
}

namespace {

Made<std::FILE*> OpenEmpty(const Path& path) {
  std::FILE* file = OpenFile(path, true);
  if (!file) return LastSystemError();
  return file;
}

Outcome WriteBytes(std::FILE* file, std::span<const uint8_t> bytes) {
  ForgetFileErrors();
  if (bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size()) return true;
  return LastFileError();
}

Outcome FlushAndClose(std::FILE* file) {
  ForgetFileErrors();
  Outcome flushed;
  // A pipe or a device has nothing to flush to, and says so.
  if (std::fflush(file) != 0 || (fsync(fileno(file)) != 0 && errno != EINVAL && errno != ENOTSUP))
    flushed = LastFileError();
  if (std::fclose(file) != 0 && flushed) return LastFileError();
  return flushed;
}

Outcome RenameOver(const Path& from, const Path& to) {
  if (std::rename(from.c_str(), to.c_str()) == 0) return true;
  return LastSystemError();
}

}  // namespace

const FileOperations& SystemFiles() {
  static const FileOperations operations = {OpenEmpty, WriteBytes, FlushAndClose, RenameOver, ListFolder};
  return operations;
}

Path ProgramFolder() {
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}
std::optional<Path> PathOfEnvironment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == '\0') return std::nullopt;
  return Path(value);
}

}  // namespace vexa
