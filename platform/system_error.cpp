#include "platform/system_error.h"

namespace vexa {

namespace {

struct Advice {
  Cause cause;
  const char* text;
};

constexpr Advice kReadAdvice[] = {
    {Cause::kMissing, "Check the name and the folder."},
    {Cause::kNoPermission, "Ask the owner of the file for permission to read it."},
    {Cause::kInUse, "It is in use by another program: close it there."},
    {Cause::kFolder, "Name a file in it."},
    {Cause::kNoFolder, "Check the name and the folder."},
    {Cause::kLongName, "Give the file a shorter name."},
    {Cause::kTooMany, "Close other programs and try again."},
    {Cause::kTooLarge, "No file of this kind is that large: check the name."},
    {Cause::kFault, "Check the disk or the connection to it, and try again."},
    {Cause::kGone, "Connect the device again."},
};
constexpr Advice kWriteAdvice[] = {
    {Cause::kMissing, "Make the folder first, or choose another one."},
    {Cause::kNoPermission, "The file or its folder is write-protected: lift that, or choose another place."},
    {Cause::kInUse, "It is in use by another program: close it there."},
    {Cause::kNoSpace, "No space is left there: free some, or choose another disk."},
    {Cause::kWriteProtected, "The disk is write-protected: lift that, or choose another one."},
    {Cause::kFolder, "Name a file in it."},
    {Cause::kNoFolder, "Check the name and the folder."},
    {Cause::kLongName, "Choose a shorter name."},
    {Cause::kTooMany, "Close other programs and try again."},
    {Cause::kTooLarge, "Choose a disk or folder that takes files of this size."},
    {Cause::kFault, "Check the disk or the connection to it, and try again."},
    {Cause::kGone, "Connect the device again."},
};
constexpr Advice kOpenPortAdvice[] = {
    {Cause::kMissing, "Connect the device, or choose another port."},
    {Cause::kNoPermission, "Ask the administrator for permission to use the port, and log in again."},
    {Cause::kInUse, "Close the program that uses it."},
    {Cause::kFolder, "Choose a serial port."},
    {Cause::kNoPort, "Choose a serial port."},
    {Cause::kFault, "Connect the device again."},
    {Cause::kGone, "Connect the device again."},
};
constexpr Advice kUsePortAdvice[] = {
    {Cause::kNotTaken, "Choose other line parameters, or another port."},
    {Cause::kTooMany, "Close other programs and try again."},
    {Cause::kFault, "Connect the device again, and start anew."},
    {Cause::kGone, "Connect the device again, and start anew."},
    {Cause::kNoPort, "Choose a serial port."},
};

template <size_t count>
std::string Find(const Advice (&table)[count], Cause cause) {
  for (const Advice& advice : table) {
    if (advice.cause == cause) return advice.text;
  }
  return {};
}

}  // namespace

std::string LastErrorText() {
  const std::error_code error = LastSystemError();
  return error ? SystemText(error) : "";
}

std::string AdviceOn(Attempt attempt, Cause cause) {
  switch (attempt) {
    case Attempt::kRead:
      return Find(kReadAdvice, cause);
    case Attempt::kWrite:
    case Attempt::kKeepSettings:
      return Find(kWriteAdvice, cause);
    case Attempt::kMakeFolder:
      return "TMPDIR, on Windows TMP, names the folder for temporary files.";
    case Attempt::kOpenPort:
      return Find(kOpenPortAdvice, cause);
    case Attempt::kUsePort:
      return Find(kUsePortAdvice, cause);
    case Attempt::kMakeWindow:
      return "Close other windows and programs, and try again.";
  }
  return {};
}

std::string Reason(Attempt attempt, const std::string& object, const std::error_code& error) {
  const std::string advice = AdviceOn(attempt, error ? CauseOf(error) : Cause::kOther);
  return object + (error ? ": " + SystemText(error) : "") + (advice.empty() ? "" : ". " + advice);
}

}  // namespace vexa
