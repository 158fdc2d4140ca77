#include <grp.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>

#include "platform/files.h"
#include "platform/serial.h"

namespace vexa {

namespace {

// The process that holds the lock of a device by which programs agree on one user; 0: not told.
unsigned long LockOwner(const struct stat& device) {
  char place[64];
  std::snprintf(place, sizeof place, "%02x:%02x:%lu", major(device.st_dev), minor(device.st_dev),
                static_cast<unsigned long>(device.st_ino));
  std::ifstream locks("/proc/locks");
  for (std::string line; std::getline(locks, line);) {
    // "1: FLOCK  ADVISORY  WRITE 1234 00:16:5 0 EOF"
    std::istringstream words(line);
    std::string number, kind, mode, use, where;
    unsigned long owner = 0;
    if (words >> number >> kind >> mode >> use >> owner >> where && kind == "FLOCK" && where == place)
      return owner;
  }
  return 0;
}

bool HoldsOpen(const Path& process, const struct stat& device) {
  std::vector<Path> files;
  ListFolder(process / "fd", files);
  return std::any_of(files.begin(), files.end(), [&](const Path& file) {
    struct stat opened {};
    return stat((process / "fd" / file).c_str(), &opened) == 0 && S_ISCHR(opened.st_mode) &&
           opened.st_rdev == device.st_rdev;
  });
}

// Any process that has the device open; 0: none of those that this user may look into.
unsigned long AnyHolder(const struct stat& device) {
  std::vector<Path> names;
  ListFolder("/proc", names);
  for (const std::string name : names) {
    if (name.find_first_not_of("0123456789") == name.npos && HoldsOpen(Path("/proc") / name, device))
      return std::stoul(name);
  }
  return 0;
}

// "PROGRAM (PID)"; empty when it cannot be told.
std::string OwnerOf(const struct stat& device) {
  unsigned long owner = LockOwner(device);
  if (owner == 0) owner = AnyHolder(device);
  std::string program;
  std::ifstream name("/proc/" + std::to_string(owner) + "/comm");
  if (owner == 0 || !std::getline(name, program) || program.empty()) return {};
  return program + " (" + std::to_string(owner) + ")";
}

// The group whose members may read and write the device; empty when there is none.
std::string GroupOf(const struct stat& device) {
  const group* found = (device.st_mode & 060) == 060 ? getgrgid(device.st_gid) : nullptr;
  return found && device.st_gid != 0 ? found->gr_name : "";
}

}  // namespace

std::string PortRefusal(const std::string& name, const std::error_code& error) {
  struct stat device {};
  const bool there = stat(PathFromUtf8(name).c_str(), &device) == 0;
  const Cause cause = CauseOf(error);
  if (cause == Cause::kInUse) {
    const std::string owner = there ? OwnerOf(device) : "";
    return name + " is in use" + (owner.empty() ? "" : " by " + owner);
  }
  const std::string group = there && cause == Cause::kNoPermission ? GroupOf(device) : "";
  if (group.empty()) return Reason(Attempt::kOpenPort, name, error);
  return name + ": " + SystemText(error) + ". Join the group " + group + ", and log in again.";
}

}  // namespace vexa
