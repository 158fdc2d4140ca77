#include "platform/temporary_folder.h"

#include <system_error>
#include <vector>

#include "platform/file_system.h"

namespace vexa {

namespace fs = std::filesystem;

namespace {

constexpr const char* kOwnerFile = "vexa-owner";
constexpr int kAttempts = 100;

// What the user named as the place of temporary files, which the library does not tell where it is none.
Path NamedParent() {
  for (const char* name : {"TMPDIR", "TMP", "TEMP"}) {
    std::error_code error;
    const auto named = PathOfEnvironment(name);
    // Systems ask for them in different orders; the one that is no folder is at fault.
    if (named && !fs::is_directory(*named, error)) return *named;
  }
  return "The folder for temporary files";
}

// The owner's file goes last: of a program that is killed meanwhile, the next start knows what is left.
void RemoveOwned(const Path& folder, std::unique_ptr<LockedFile> owner) {
  EmptyFolder(folder, kOwnerFile);
  owner.reset();  // some systems do not remove an open file; nobody else makes a folder that is there
  RemoveFolder(folder);
}

}  // namespace

TemporaryFolder::TemporaryFolder(Path path, std::unique_ptr<LockedFile> owner)
    : path_(std::move(path)), owner_(std::move(owner)) {}

TemporaryFolder::~TemporaryFolder() {
  if (!stays_) RemoveOwned(path_, std::move(owner_));
}

std::unique_ptr<TemporaryFolder> TemporaryFolder::Make(const std::string& name, std::string& why) {
  std::error_code error;
  const Path parent = fs::temp_directory_path(error);
  if (!error) return MakeIn(parent, name, why);
  why = Reason(Attempt::kMakeFolder, Utf8FromPath(NamedParent()), error);
  return nullptr;
}

std::unique_ptr<TemporaryFolder> TemporaryFolder::MakeIn(const Path& parent, const std::string& name,
                                                         std::string& why) {
  std::error_code error;
  Path folder;
  // Where a hundred names are taken, that is the reason.
  std::error_code refused = std::make_error_code(std::errc::file_exists);
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    folder = parent / PathFromUtf8(attempt == 0 ? name : name + "-" + std::to_string(attempt));
    const bool made = fs::create_directory(folder, error);
    if (error) break;
    if (!made) continue;
    // Where another start looks between the two steps, the file is gone or locked: the next name is tried.
    try {
      if (auto owner = LockFile(folder / kOwnerFile, true))
        return std::unique_ptr<TemporaryFolder>(new TemporaryFolder(folder, std::move(owner)));
      refused = LastSystemError();
    } catch (...) {  // memory ran out: nobody else would ever remove it
      RemoveFolder(folder);
      throw;
    }
    RemoveFolder(folder);
  }
  why = Reason(Attempt::kMakeFolder, Utf8FromPath(folder), error ? error : refused);
  return nullptr;
}

std::vector<std::unique_ptr<TemporaryFolder>> TemporaryFolder::TakeAbandoned(const Path& parent,
                                                                             const std::string& family) {
  std::vector<std::unique_ptr<TemporaryFolder>> taken;
  std::vector<Path> names;
  ListFolder(parent, names);
  for (const Path& name : names) {
    if (!Utf8FromPath(name).starts_with(family)) continue;
    const Path folder = parent / name;
    std::error_code error;
    if (fs::symlink_status(folder, error).type() != fs::file_type::directory) continue;
    taken.emplace_back();  // before the lock: what comes behind it must not fail
    if (auto owner = LockFile(folder / kOwnerFile, false))
      taken.back().reset(new TemporaryFolder(folder, std::move(owner)));
    else
      taken.pop_back();
  }
  return taken;
}

void RemoveAbandonedFolders(const std::string& family) {
  std::error_code error;
  const Path parent = fs::temp_directory_path(error);
  if (!error) TemporaryFolder::TakeAbandoned(parent, family);
}

}  // namespace vexa
