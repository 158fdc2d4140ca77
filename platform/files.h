// Files of the operating system, as the engine needs them: read whole, or written whole.
//
// A file is written beside its target under a name that was free, flushed to the disk and renamed over
// the target, so that the target is at every moment the old file or the new one, never a part. Of several
// files each has a second name until all have taken theirs; only where the file system knows no second names
// the target is missing for a moment, and a program that is killed then leaves the old file as
// ".vexa-*.kept". All else that it left there goes with the next write to that folder. A device or a pipe is
// written to as it stands; a read-only file is refused.
//
// `FileOperations` is the table of the primitive steps; the tests hand in one whose n-th step fails.
// All paths may hold any character of the system's file names. Thread-safe: no shared state.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/system_error.h"

namespace vexa {

using Path = std::filesystem::path;
using Bytes = std::vector<uint8_t>;

struct WriteResult {
  enum State {
    kDone,
    kCannotCreate,  // the target is read-only, or no file could be made beside it
    kFailed,        // writing, flushing or renaming failed; the target is as it was
  };
  State state = kDone;
  std::error_code error;  // the system's, unless `state` is kDone

  WriteResult(State reached, std::error_code why = {}) : state(reached), error(why) {}
  operator State() const { return state; }
};

struct FileOperations {
  // Opens `path` for writing, empty.
  std::function<Made<std::FILE*>(const Path&)> create;
  // Writes all bytes; not done when the disk is full or the device is gone.
  std::function<Outcome(std::FILE*, std::span<const uint8_t>)> write;
  // Flushes to the disk and closes; the file is closed in every case.
  std::function<Outcome(std::FILE*)> finish;
  // Puts `from` in the place of `to`, replacing it.
  std::function<Outcome(const Path& from, const Path& to)> replace;
  // As ListFolder.
  std::function<Outcome(const Path& folder, std::vector<Path>& names)> list;
};

// The operating system's own.
const FileOperations& SystemFiles();

struct ReadResult {
  enum State {
    kDone,
    kCannotOpen,  // not there, a folder, or not permitted
    kFailed,      // reading broke off, the program was interrupted, or the file is above the limit
  };
  State state = kDone;
  std::error_code error;  // the system's, unless `state` is kDone

  ReadResult(State reached, std::error_code why = {}) : state(reached), error(why) {}
  operator State() const { return state; }
};

inline constexpr uint64_t kReadLimit = uint64_t{1} << 31;  // bytes

// The whole content in `content`, which is empty unless the result is kDone. `limit` in bytes.
ReadResult ReadWholeFile(const Path& path, Bytes& content, uint64_t limit = kReadLimit);
// The same; nothing when the file cannot be opened or read, or is above `limit` bytes.
std::optional<Bytes> ReadWholeFile(const Path& path, uint64_t limit = kReadLimit);

// The first bytes of the file, up to `count`, in `start`, which is empty unless the result is kDone.
ReadResult ReadFileStart(const Path& path, size_t count, std::string& start);

// Writes `content` in place of whatever `path` held.
WriteResult WriteWholeFile(const Path& path, std::span<const uint8_t> content,
                           const FileOperations& files = SystemFiles());

// Where content goes that is made piece by piece; false when that failed.
struct PieceWriter {
  std::function<bool(std::span<const uint8_t>)> append;
  // Puts a piece in the place of as many of the first bytes; nothing is written behind it. Empty for a device
  // or a pipe, which take the content as it comes.
  std::function<bool(std::span<const uint8_t>)> replace_start;

  bool operator()(std::span<const uint8_t> piece) const { return append(piece); }
};
// Behind what `bytes`, which outlive it, hold.
PieceWriter AppendingTo(Bytes& bytes);

// The same for content in pieces: `produce` hands them to its argument and gives back false as soon as that
// does.
WriteResult WriteWholeFileBy(const Path& path, const std::function<bool(const PieceWriter&)>& produce,
                             const FileOperations& files = SystemFiles());

// All of them or none: when one fails, every path holds what it held before. `refused` is the place of that
// one. Devices and pipes have taken theirs by then.
struct FileContent {
  Path path;
  Bytes content;
};
WriteResult WriteWholeFiles(std::span<const FileContent> contents, size_t& refused,
                            const FileOperations& files = SystemFiles());

// Adds the lines `more` at the end of the file, which is made when it is not there; `first` comes before them
// in a file that holds nothing, and CR LF in one whose last line has no end. Programs that do so at once
// follow each other. When not all of it can be written, a
// file keeps what it held.
Outcome AppendLines(const Path& path, std::span<const uint8_t> more, std::span<const uint8_t> first = {});

// Why the system refuses to read the file, or to write it in place of what `path` holds; no error when it
// does not.
std::error_code WhyUnreadable(const Path& path);
std::error_code WhyNotWritable(const Path& path);
// The same as `Reason` words it; the path alone when nothing refuses.
std::string ReadReason(const Path& path, const std::error_code& error);
std::string WriteReason(const Path& path, const std::error_code& error);

// The names of all that stands in the folder, in no order; not done, and `names` empty, unless it was read to
// its end. The library's own walk ends the program when memory runs out.
Outcome ListFolder(const Path& folder, std::vector<Path>& names);

// Removes the folder with all that is in it; failures are silent.
void RemoveFolder(const Path& folder);

// The folder of the running program, without a trailing separator.
Path ProgramFolder();
// The path that the environment gives under this name; an empty one, or none, is nothing.
std::optional<Path> PathOfEnvironment(const char* name);

// Path to and from UTF-8, the encoding of all message texts.
std::string Utf8FromPath(const Path& path);
// The path without "." and "..", as it is written: links are not followed. The library's own function breaks
// the heap when memory runs out in it.
Path PlainPath(const Path& path);
Path PathFromUtf8(std::string_view text);

}  // namespace vexa
