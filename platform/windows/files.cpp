#include "platform/files.h"

#include <io.h>
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <cwchar>
#include <cwctype>

#include "platform/file_system.h"

namespace vexa {

namespace {

// Paths of 260 characters and more need the \\?\ form, which takes no "." and "..".
std::wstring LongPath(const Path& path) {
  std::error_code error;
  Path absolute = PlainPath(std::filesystem::absolute(path, error));
  absolute.make_preferred();
  const std::wstring text = absolute.native();
  if (text.size() < 240 || text.starts_with(L"\\\\?\\")) return path.native();
  if (text.starts_with(L"\\\\")) return L"\\\\?\\UNC\\" + text.substr(2);
  return L"\\\\?\\" + text;
}

}  // namespace

bool IsOpenAlready(const Path&) {
  return false;
}

std::FILE* OpenFile(const Path& path, bool writing) {
  return _wfopen(LongPath(path).c_str(), writing ? L"wb" : L"rb");
}

// One byte far behind all content, so that nobody's reading and writing meets it.
constexpr OVERLAPPED kPlaceOfLock = [] {
  OVERLAPPED place{};
  place.OffsetHigh = 0x7FFFFFFF;
  return place;
}();

std::FILE* OpenFileToAppend(const Path& path) {
  std::FILE* file = _wfopen(LongPath(path).c_str(), L"ab");
  if (!file) return nullptr;
  // Where the file system has no locks, it goes on without.
  OVERLAPPED place = kPlaceOfLock;
  LockFileEx(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file))), LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0,
             &place);
  return file;
}

Path ComparedName(const Path& path) {
  std::wstring name = Path(path).make_preferred().native();
  while (name.ends_with(L'.') || name.ends_with(L' ')) name.pop_back();
  for (wchar_t& c : name) c = static_cast<wchar_t>(std::towlower(c));
  return name;
}

Outcome ListFolder(const Path& folder, std::vector<Path>& names) {
  struct Close {
    void operator()(HANDLE open) const { FindClose(open); }
  };
  names.clear();
  if (folder.empty()) return std::make_error_code(std::errc::no_such_file_or_directory);
  WIN32_FIND_DATAW entry{};
  const std::unique_ptr<void, Close> open(FindFirstFileW(LongPath(folder / L"*").c_str(), &entry));
  if (open.get() == INVALID_HANDLE_VALUE) return LastSystemError();
  do {
    if (std::wcscmp(entry.cFileName, L".") != 0 && std::wcscmp(entry.cFileName, L"..") != 0)
      names.emplace_back(entry.cFileName);
  } while (FindNextFileW(open.get(), &entry));
  const std::error_code end = LastSystemError();
  if (end.value() == ERROR_NO_MORE_FILES) return true;
  names.clear();
  return end;
}

Outcome LinkFile(const Path& file, const Path& name) {
  if (CreateHardLinkW(LongPath(name).c_str(), LongPath(file).c_str(), nullptr)) return true;
  return LastSystemError();
}

NewFile CreateNewFile(const Path& path, std::error_code& why) {
  const HANDLE file = CreateFileW(LongPath(path).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file != INVALID_HANDLE_VALUE) {
    CloseHandle(file);
    return NewFile::kMade;
  }
  why = LastSystemError();
  if (why.value() == ERROR_FILE_EXISTS || why.value() == ERROR_ALREADY_EXISTS) return NewFile::kTaken;
  return NewFile::kFailed;
}

namespace {

struct Locked : LockedFile {
  HANDLE file = INVALID_HANDLE_VALUE;
  ~Locked() override {
    if (file != INVALID_HANDLE_VALUE) CloseHandle(file);
  }
};

}  // namespace

std::unique_ptr<LockedFile> LockFile(const Path& path, bool create) {
  auto locked = std::make_unique<Locked>();
  locked->file = CreateFileW(LongPath(path).c_str(), GENERIC_READ | GENERIC_WRITE,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             create ? CREATE_NEW : OPEN_EXISTING,
                             FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
  if (locked->file == INVALID_HANDLE_VALUE) return nullptr;
  OVERLAPPED place = kPlaceOfLock;
  FILE_STANDARD_INFO facts{};
  DWORD refused = ERROR_FILE_NOT_FOUND;
  const bool held =
      LockFileEx(locked->file, LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1, 0, &place);
  if (!held) refused = GetLastError();
  if (held && GetFileInformationByHandleEx(locked->file, FileStandardInfo, &facts, sizeof facts) &&
      !facts.DeletePending && !facts.Directory)
    return locked;
  locked.reset();
  SetLastError(refused);
  return nullptr;
}

// Locks reach every system that opens the file.
uint32_t RunningSystem() {
  return 0;
}

namespace {

Made<std::FILE*> OpenEmpty(const Path& path) {
  ForgetFileErrors();
  std::FILE* file = OpenFile(path, true);
  if (!file) return LastFileError();
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
  if (std::fflush(file) != 0 || _commit(_fileno(file)) != 0) flushed = LastFileError();
  if (std::fclose(file) != 0 && flushed) return LastFileError();
  return flushed;
}

// A file that another program holds is refused to a renaming as one that is forbidden; whoever wants to
// delete it is told the truth.
bool IsHeld(const Path& path) {
  const HANDLE file =
      CreateFileW(LongPath(path).c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                  nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
  if (file == INVALID_HANDLE_VALUE) return GetLastError() == ERROR_SHARING_VIOLATION;
  CloseHandle(file);
  return false;
}

Outcome RenameOver(const Path& from, const Path& to) {
  if (MoveFileExW(LongPath(from).c_str(), LongPath(to).c_str(),
                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
    return true;
  }
  const std::error_code error = LastSystemError();
  if (error.value() == ERROR_ACCESS_DENIED && IsHeld(to))
    return std::error_code(ERROR_SHARING_VIOLATION, std::system_category());
  return error;
}

}  // namespace

const FileOperations& SystemFiles() {
  static const FileOperations operations = {OpenEmpty, WriteBytes, FlushAndClose, RenameOver, ListFolder};
  return operations;
}

Path ProgramFolder() {
  std::wstring name(32768, L'\0');
  name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
  return Path(name).parent_path();
}
std::optional<Path> PathOfEnvironment(const char* name) {
  std::wstring value(32768, L'\0');
  const std::wstring wide(name, name + std::strlen(name));
  value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), static_cast<DWORD>(value.size())));
  if (value.empty()) return std::nullopt;
  return Path(value);
}

}  // namespace vexa
