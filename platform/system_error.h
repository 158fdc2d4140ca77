// Why the system refused something, and what a user can do about it.
//
// The seam's operations answer with the system's own error: a number of the system (errno; on Windows what
// GetLastError gives) in std::system_category, or one of std::errc where the refusal is the program's own. No
// error in an answer that failed means that the system gave none.
#pragma once

#include <concepts>
#include <string>
#include <system_error>
#include <utility>

namespace vexa {

// Whether something was done.
struct Outcome {
  bool done = true;
  std::error_code error;  // none when `done`

  Outcome(bool is_done = true) : done(is_done) {}
  Outcome(std::error_code refused) : done(false), error(refused) {}
  explicit operator bool() const { return done; }
};

// Something that was made or opened; null when it was not.
template <class T>
struct Made {
  T value{};
  std::error_code error;  // none unless `value` is null

  Made() = default;
  template <std::convertible_to<T> U>
  Made(U&& made) : value(std::forward<U>(made)) {}
  Made(std::error_code refused) : error(refused) {}
  explicit operator bool() const { return value != nullptr; }
};

// Of the calling thread's last call of the system.
std::error_code LastSystemError();
// Of the calling thread's last call of the C library for a file. `otherwise` when it left none since
// ForgetFileErrors.
std::error_code LastFileError(std::errc otherwise = std::errc::io_error);
void ForgetFileErrors();

// The system's sentence in UTF-8, without a full stop and line ends.
std::string SystemText(const std::error_code& error);

// The same of the calling thread's last call; empty when it left no error.
std::string LastErrorText();

enum class Cause {
  kOther,
  kMissing,
  kNoPermission,
  kInUse,
  kNoSpace,
  kWriteProtected,
  kFolder,
  kNoFolder,  // a part of the path is none
  kLongName,
  kTooMany,  // open files, links, threads
  kTooLarge,
  kFault,     // of the device or the connection to it
  kGone,      // unplugged
  kNoPort,    // the device is no serial port
  kNotTaken,  // the device does not take such settings
};
// What the error means for the user.
Cause CauseOf(const std::error_code& error);

// What was to be done, and so which advice helps.
enum class Attempt { kRead, kWrite, kMakeFolder, kOpenPort, kUsePort, kKeepSettings, kMakeWindow };

// The next step for the user, a sentence with its full stop; empty where none is known.
std::string AdviceOn(Attempt attempt, Cause cause);

// "OBJECT: what the system says. What to do." in one line. Without an error the middle is missing, and the
// advice where it depends on the cause. `object` is a file, port, key, folder or window as the user knows it.
std::string Reason(Attempt attempt, const std::string& object, const std::error_code& error);

}  // namespace vexa
