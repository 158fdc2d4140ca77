#include "platform/system_error.h"

#include <windows.h>

#include <array>
#include <cerrno>
#include <cstdlib>

#include "platform/windows/wide.h"

namespace vexa {

namespace {

#ifndef ERROR_NO_SUCH_DEVICE
constexpr int ERROR_NO_SUCH_DEVICE = 433;  // older headers lack it
#endif

struct Meaning {
  int number;
  Cause cause;
};
constexpr Meaning kSystemMeanings[] = {
    {ERROR_FILE_NOT_FOUND, Cause::kMissing},
    {ERROR_PATH_NOT_FOUND, Cause::kMissing},
    {ERROR_INVALID_DRIVE, Cause::kMissing},
    {ERROR_BAD_NETPATH, Cause::kMissing},
    {ERROR_BAD_NET_NAME, Cause::kMissing},
    {ERROR_DEV_NOT_EXIST, Cause::kMissing},
    {ERROR_NO_SUCH_DEVICE, Cause::kMissing},
    {ERROR_ACCESS_DENIED, Cause::kNoPermission},
    {ERROR_PRIVILEGE_NOT_HELD, Cause::kNoPermission},
    {ERROR_SHARING_VIOLATION, Cause::kInUse},
    {ERROR_LOCK_VIOLATION, Cause::kInUse},
    {ERROR_BUSY, Cause::kInUse},
    {ERROR_USER_MAPPED_FILE, Cause::kInUse},
    {ERROR_DISK_FULL, Cause::kNoSpace},
    {ERROR_HANDLE_DISK_FULL, Cause::kNoSpace},
    {ERROR_WRITE_PROTECT, Cause::kWriteProtected},
    {ERROR_DIRECTORY, Cause::kNoFolder},
    {ERROR_INVALID_NAME, Cause::kNoFolder},
    {ERROR_FILENAME_EXCED_RANGE, Cause::kLongName},
    {ERROR_TOO_MANY_OPEN_FILES, Cause::kTooMany},
    {ERROR_NOT_ENOUGH_MEMORY, Cause::kTooMany},
    {ERROR_OUTOFMEMORY, Cause::kTooMany},
    {ERROR_NO_SYSTEM_RESOURCES, Cause::kTooMany},
    {ERROR_FILE_TOO_LARGE, Cause::kTooLarge},
    {ERROR_IO_DEVICE, Cause::kFault},
    {ERROR_CRC, Cause::kFault},
    {ERROR_NOT_READY, Cause::kFault},
    {ERROR_SEEK, Cause::kFault},
    {ERROR_READ_FAULT, Cause::kFault},
    {ERROR_WRITE_FAULT, Cause::kFault},
    {ERROR_GEN_FAILURE, Cause::kGone},
    {ERROR_BAD_COMMAND, Cause::kGone},
    {ERROR_DEVICE_NOT_CONNECTED, Cause::kGone},
    {ERROR_DEVICE_REMOVED, Cause::kGone},
    {ERROR_INVALID_HANDLE, Cause::kNoPort},
    {ERROR_INVALID_FUNCTION, Cause::kNoPort},
    {ERROR_INVALID_PARAMETER, Cause::kNotTaken},
    {ERROR_NOT_SUPPORTED, Cause::kNotTaken},
};
constexpr Meaning kLibraryMeanings[] = {
    {ENOENT, Cause::kMissing}, {EACCES, Cause::kNoPermission}, {EPERM, Cause::kNoPermission},
    {EBUSY, Cause::kInUse},    {ENOSPC, Cause::kNoSpace},      {EROFS, Cause::kWriteProtected},
    {EISDIR, Cause::kFolder},  {ENOTDIR, Cause::kNoFolder},    {ENAMETOOLONG, Cause::kLongName},
    {EMFILE, Cause::kTooMany}, {ENOMEM, Cause::kTooMany},      {EFBIG, Cause::kTooLarge},
    {EIO, Cause::kFault},      {EINVAL, Cause::kNotTaken},     {ENOTTY, Cause::kNoPort},
    {ENODEV, Cause::kGone},
};

template <size_t count>
Cause Find(const Meaning (&table)[count], int number) {
  for (const Meaning& meaning : table) {
    if (meaning.number == number) return meaning.cause;
  }
  return Cause::kOther;
}

}  // namespace

std::error_code LastSystemError() {
  return {static_cast<int>(GetLastError()), std::system_category()};
}

// The library keeps the system's number beside its own, which says less.
std::error_code LastFileError(std::errc otherwise) {
  if (_doserrno != 0) return {static_cast<int>(_doserrno), std::system_category()};
  return errno == 0 ? std::make_error_code(otherwise) : std::error_code(errno, std::generic_category());
}

void ForgetFileErrors() {
  errno = 0;
  _doserrno = 0;
}

std::string SystemText(const std::error_code& error) {
  if (error.category() != std::system_category()) return error.message();
  std::array<wchar_t, 512> buffer{};
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK, nullptr,
      static_cast<DWORD>(error.value()), 0, buffer.data(), static_cast<DWORD>(buffer.size()), nullptr);
  std::wstring text(buffer.data(), length);
  while (!text.empty() && (text.back() == L'.' || text.back() <= L' ')) text.pop_back();
  return text.empty() ? "error " + std::to_string(error.value()) : Utf8(text);
}

Cause CauseOf(const std::error_code& error) {
  return error.category() == std::system_category() ? Find(kSystemMeanings, error.value())
                                                    : Find(kLibraryMeanings, error.value());
}

}  // namespace vexa
