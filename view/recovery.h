// Unsaved work that outlives the program.
//
// A running program has a folder of its own and keeps in it a file for each database that was changed and not
// saved. The folder goes when the user ends the program. Otherwise it stays, and the next start offers what
// it holds; beside a second running copy too, as a folder is locked as long as its program lives.
//
// The kept file is text in UTF-8, lines that end with LF, and then a BIN file (core/bin_file.h):
//   "Vexa Editor recovery 2"
//   the path of the database's file; empty: it has none
//   the name in its window's caption
//   the time of keeping, "YYYY-MM-DD HH:MM:SS"
//   size in bytes and time of writing (ticks of the file system's clock) of that file as the program last
//   knew it; empty: there was none
//   major version, minor version and initials of the next save, with a space between them
//   the path of the list that it was imported from; empty: of none
//   the code page of its names; empty: not chosen
//   the receiver's own settings, 96 bytes in hexadecimal digits
//   the LNBs and the satellites of each SDB, numbers with a space behind each: a BIN file fills both tables
//   the size of the BIN file in bytes
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/bin_file.h"
#include "platform/clock.h"
#include "platform/file_identity.h"
#include "platform/system_error.h"
#include "platform/temporary_folder.h"

namespace vexa {

// A database of a window, as far as it is not the document itself.
struct UnsavedWork {
  Path path;         // empty: it has no file
  std::string name;  // in the caption, where there is no path
  std::optional<FileState> state;
  BinVersion version;
  LocalTime kept;
  Path list = {};  // that it was imported from; empty: of none
};

struct RecoveredWork {
  UnsavedWork work;
  Document document;
  Path file;  // where it is kept
};

// The bytes of a kept file. Nothing when the document cannot be packed.
std::optional<Bytes> WriteRecovery(const UnsavedWork& work, const Document& document);
// Nothing when it is no kept file, or its database cannot be read whole.
std::optional<RecoveredWork> ReadRecovery(std::span<const uint8_t> file);

// The running program's own folder of kept files.
class Recovery {
 public:
  // Below `root`, which is made when it is not there. Null when it cannot be; `why` then says so.
  static std::unique_ptr<Recovery> Start(const Path& root, std::string& why);

  // Keeps the document of the window `window`; `turn` tells its states apart, so that one that is kept
  // already costs nothing. Not done when it could not be written: what was kept before is still there.
  Outcome Keep(uint64_t window, uint64_t turn, const UnsavedWork& work, const Document& document);
  void Forget(uint64_t window);  // it was saved, or is not wanted
  // Whether the user is to be told, after a round of Keep that went well or not, that nothing is kept: once,
  // until a round goes well. `may_tell`: a box can be shown; without it the telling waits for the next round.
  bool MustTell(bool kept, bool may_tell);
  // What was kept is not wanted any more and goes with this object. Without this word all of it stays,
  // however the program ends.
  void End() { folder_->LeaveBehind(false); }
  const Path& path() const { return folder_->path(); }

 private:
  explicit Recovery(std::unique_ptr<TemporaryFolder> folder) : folder_(std::move(folder)) {}
  Path FileOf(uint64_t window) const;
  std::unique_ptr<TemporaryFolder> folder_;
  std::map<uint64_t, uint64_t> turns_;  // by window: the state that is kept
  bool told_ = false;
};

// What programs that are gone left below `root`. It stays with them unless it is removed.
class AbandonedWork {
 public:
  explicit AbandonedWork(const Path& root);
  ~AbandonedWork();
  // Oldest first. Files that cannot be read are not among them, and are never removed.
  std::vector<RecoveredWork>& works() { return works_; }
  // What to ask the user; No throws the work away, Cancel leaves it for the next start.
  std::string Question() const;
  // Hands over one after the other. What `take` has opened and kept anew is removed here; what it has not,
  // for which it gives back false, is offered again at the next start.
  void HandOver(const std::function<bool(RecoveredWork& work)>& take);
  // All of it, when it is not wanted.
  void Remove();

 private:
  std::vector<std::unique_ptr<TemporaryFolder>> folders_;
  std::vector<RecoveredWork> works_;
};

}  // namespace vexa
