#include "loader/memory.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <string>

namespace vexa {

namespace {

constexpr uint64_t kSpaceSize = uint64_t{1} << 32;

std::string NameOf(size_t space, uint32_t address) {
  char name[32];
  std::snprintf(name, sizeof name, "space%zu-%08X.bin", space + 1, address);
  return name;
}

bool ParseName(const std::string& name, size_t& space, uint32_t& address) {
  unsigned number = 0, at = 0;
  if (std::sscanf(name.c_str(), "space%1u-%8X.bin", &number, &at) != 2 || number < 1 || number > 2)
    return false;
  space = number - 1;
  address = at;
  return name == NameOf(space, address);
}

// Takes the addresses from `start` to below `end` out of all pieces.
void Clear(std::map<uint32_t, Bytes>& pieces, uint64_t start, uint64_t end) {
  std::map<uint32_t, Bytes> kept;
  for (auto& [address, bytes] : pieces) {
    const uint64_t first = address, last = first + bytes.size();
    if (last <= start || first >= end) {
      kept[address] = std::move(bytes);
      continue;
    }
    if (first < start)
      kept[address] = Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(start - first));
    if (last > end) {
      kept[static_cast<uint32_t>(end)] =
          Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(end - first), bytes.end());
    }
  }
  pieces = std::move(kept);
}

}  // namespace

void StoreBytes(LoaderMemory& memory, size_t space, uint32_t address, std::span<const uint8_t> bytes) {
  const uint64_t size = std::min<uint64_t>(bytes.size(), kSpaceSize - address);
  if (size == 0) return;
  Clear(memory.spaces.at(space), address, address + size);
  const auto part = bytes.first(static_cast<size_t>(size));
  memory.spaces.at(space)[address] = Bytes(part.begin(), part.end());
}

Bytes LoadBytes(const LoaderMemory& memory, size_t space, uint32_t address, uint64_t size) {
  Bytes loaded(static_cast<size_t>(std::min(size, kLargestRegion)), 0xFF);
  const uint64_t start = address, end = start + loaded.size();
  for (const auto& [at, bytes] : memory.spaces.at(space)) {
    const uint64_t first = std::max<uint64_t>(start, at), last = std::min(end, uint64_t{at} + bytes.size());
    for (uint64_t i = first; i < last; ++i)
      loaded[static_cast<size_t>(i - start)] = bytes[static_cast<size_t>(i - at)];
  }
  return loaded;
}

Outcome SaveMemory(const LoaderMemory& memory, const Path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  std::error_code none;
  if (!std::filesystem::is_directory(folder, none))
    return error ? error : std::make_error_code(std::errc::not_a_directory);
  std::set<std::string> written;
  for (size_t space = 0; space < memory.spaces.size(); ++space) {
    for (const auto& [address, bytes] : memory.spaces[space]) {
      const std::string name = NameOf(space, address);
      const WriteResult kept = WriteWholeFile(folder / name, bytes);
      if (kept != WriteResult::kDone) return kept.error;
      written.insert(name);
    }
  }
  std::vector<Path> names;
  const Outcome listed = ListFolder(folder, names);
  for (const Path& name : names) {
    size_t space = 0;
    uint32_t address = 0;
    if (ParseName(Utf8FromPath(name), space, address) && !written.contains(Utf8FromPath(name)))
      std::filesystem::remove(folder / name, error);
  }
  return listed;
}

std::optional<LoaderMemory> OpenMemory(const Path& folder, std::string& why) {
  LoaderMemory memory;
  std::vector<Path> names;
  const Outcome listed = ListFolder(folder, names);
  std::error_code error;
  if (!listed && std::filesystem::exists(folder, error)) {
    why = ReadReason(folder, listed.error);
    return std::nullopt;
  }
  for (const Path& name : names) {
    size_t space = 0;
    uint32_t address = 0;
    if (!ParseName(Utf8FromPath(name), space, address)) continue;
    Bytes bytes;
    const ReadResult read = ReadWholeFile(folder / name, bytes);
    if (read != ReadResult::kDone) {
      why = ReadReason(folder / name, read.error);
      return std::nullopt;
    }
    StoreBytes(memory, space, address, bytes);
  }
  return memory;
}

}  // namespace vexa
