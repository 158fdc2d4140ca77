#include "platform/system_error.h"

#include <cerrno>

namespace vexa {

namespace {

struct Meaning {
  int number;
  Cause cause;
};
constexpr Meaning kMeanings[] = {
    {ENOENT, Cause::kMissing}, {EACCES, Cause::kNoPermission}, {EPERM, Cause::kNoPermission},
    {EBUSY, Cause::kInUse},    {ETXTBSY, Cause::kInUse},       {EAGAIN, Cause::kInUse},
    {ENOSPC, Cause::kNoSpace}, {EDQUOT, Cause::kNoSpace},      {EROFS, Cause::kWriteProtected},
    {EISDIR, Cause::kFolder},  {ENOTDIR, Cause::kNoFolder},    {ENAMETOOLONG, Cause::kLongName},
    {EMFILE, Cause::kTooMany}, {ENFILE, Cause::kTooMany},      {ENOMEM, Cause::kTooMany},
    {EFBIG, Cause::kTooLarge}, {EIO, Cause::kFault},           {ENXIO, Cause::kGone},
    {ENODEV, Cause::kGone},    {ENOTTY, Cause::kNoPort},       {EINVAL, Cause::kNotTaken},
    {ENOTCONN, Cause::kFault}, {ESTALE, Cause::kFault},        {ETIMEDOUT, Cause::kFault},
};

}  // namespace

std::error_code LastSystemError() {
  return {errno, std::system_category()};
}

std::error_code LastFileError(std::errc otherwise) {
  return errno == 0 ? std::make_error_code(otherwise) : LastSystemError();
}

void ForgetFileErrors() {
  errno = 0;
}

std::string SystemText(const std::error_code& error) {
  return error.message();
}

Cause CauseOf(const std::error_code& error) {
  for (const Meaning& meaning : kMeanings) {
    if (error.value() == meaning.number) return meaning.cause;
  }
  return Cause::kOther;
}

}  // namespace vexa
