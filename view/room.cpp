#include "view/room.h"

#include <algorithm>

#include "core/bin_file.h"
#include "core/messages.h"
#include "image/adb.h"

namespace vexa {

namespace {

constexpr double kNearFrom = 0.9;

double ShareOf(const TableUse& use) {
  if (use.room == 0) return use.used == 0 ? 0 : 2;
  return static_cast<double>(use.used) / static_cast<double>(use.room);
}

// What the tables are called in a sentence.
std::string NameOfTable(const std::string& table) {
  if (table == "tables") return "bytes of carriers and services";
  if (table.starts_with("tv-group-")) return "TV group " + table.substr(9);
  if (table.starts_with("radio-group-")) return "radio group " + table.substr(12);
  return table;
}

}  // namespace

uint64_t FileSizeWhenSaved(const Document& document) {
  Context silent;
  silent.messages = {[](const Message&) {},
                     [](const std::string&, const std::string&, bool) { return false; }};
  const auto sizes = SizesWhenSaved(silent, document);
  return sizes ? sizes->total : 0;
}

RoomLook RoomOf(const Document& document, size_t sdb, const ProjectConfig& config, uint64_t file_size) {
  RoomLook look;
  if (sdb >= document.sdbs.size()) return look;
  std::vector<TableUse> uses = AdbRooms(*document.sdbs[sdb].database, config);
  // Always all of them, and never more.
  std::erase_if(uses, [](const TableUse& use) { return use.table == "lnbs"; });
  if (file_size > 0) uses.push_back({"bytes of the database file", file_size, kMaximumBinSize});
  if (uses.empty()) return look;
  std::stable_sort(uses.begin(), uses.end(),
                   [](const TableUse& a, const TableUse& b) { return ShareOf(a) > ShareOf(b); });
  look.share = ShareOf(uses.front());
  look.level = look.share > 1            ? RoomLevel::kOver
               : look.share >= kNearFrom ? RoomLevel::kNear
                                         : RoomLevel::kEnough;
  look.text = Format("Room: %s %.0f %%", NameOfTable(uses.front().table).c_str(), look.share * 100);
  for (const TableUse& use : uses) {
    if (use.used == 0) continue;
    look.lines += Format("%s: %llu of %llu%s\n", NameOfTable(use.table).c_str(),
                         static_cast<unsigned long long>(use.used), static_cast<unsigned long long>(use.room),
                         use.used > use.room ? ", too many" : "");
  }
  return look;
}

}  // namespace vexa
