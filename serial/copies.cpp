#include "serial/copies.h"

#include <algorithm>
#include <map>

#include "core/bin_file.h"
#include "core/edit.h"
#include "core/match.h"
#include "image/decoder.h"
#include "image/receiver_layout.h"
#include "serial/backup.h"

namespace vexa {

namespace {

constexpr size_t kTimeSize = 15;  // "YYYYMMDD-HHMMSS"

// The name of the copy that the file belongs to; empty: to none.
std::string CopyNameOf(const std::string& file) {
  for (const std::string& end : {std::string(kCopyExtension), RawSuffix(0), RawSuffix(1)}) {
    if (file.ends_with(end)) return file.substr(0, file.size() - end.size());
  }
  return "";
}

std::optional<ReceiverCopy> CopyOf(const std::string& name) {
  if (name.size() < kTimeSize || (name.size() > kTimeSize && name[kTimeSize] != '-')) return std::nullopt;
  std::string time = name.substr(0, kTimeSize);
  if (time[8] != '-') return std::nullopt;
  time[8] = ' ';
  for (const size_t colon : {size_t{13}, size_t{11}}) time.insert(colon, ":");
  for (const size_t dash : {size_t{6}, size_t{4}}) time.insert(dash, "-");
  const auto parsed = ParseLocalTime(time);
  if (!parsed) return std::nullopt;
  return ReceiverCopy{name, *parsed, name.size() > kTimeSize ? name.substr(kTimeSize + 1) : ""};
}

// One file of a copy. False after `refusal` has said why.
bool ReadPart(const Path& folder, const std::string& name, const std::string& end, Bytes& bytes,
              CopyContent& content) {
  const Path path = folder / PathFromUtf8(name + end);
  const ReadResult read = ReadWholeFile(path, bytes);
  content.bytes += bytes.size();
  if (read == ReadResult::kDone) return true;
  if (content.refusal.empty()) {
    // Which regions there are is the configuration's to say.
    const char* const what =
        end == RawSuffix(1) ? "Half a copy, or of a receiver with another configuration" : "Half a copy";
    content.refusal = CauseOf(read.error) == Cause::kMissing
                          ? what + (": its file " + end) + " is missing."
                          : "It cannot be read: " + ReadReason(path, read.error);
  }
  return false;
}

// The context, with what is told kept as the reason.
Context Reasoning(const Context& context, std::string& reason) {
  Context silent = context;
  silent.messages.tell = [&reason](const Message& message) {
    if (reason.empty()) reason = message.text.substr(0, message.text.find('\n'));
  };
  silent.messages.ask = [](const std::string&, const std::string&, bool) { return false; };
  return silent;
}

void CountRecords(const Document& document, CopyContent& content) {
  for (const OpenSdb& sdb : document.sdbs) {
    const auto& satellites = sdb.database->satellites;
    content.satellites += static_cast<size_t>(std::count_if(
        satellites.begin(), satellites.end(), [](const Satellite* each) { return !IsUnusedPlace(*each); }));
    content.carriers += sdb.database->carriers.size();
    content.services += sdb.database->services.size();
  }
}

// What the regions hold, when that is the database beside them.
std::optional<DecodedImage> Decode(const Context& context, const ProjectConfig& config, const Bytes& database,
                                   const std::vector<Bytes>& raw, CopyContent& content) {
  std::string reason;
  const RegionEntry* region = AdbRegion(config);
  auto decoded = region && raw[0].size() == region->end - region->start
                     ? DecodeImage(Reasoning(context, reason), config, raw[0], raw[1], UserBoxInfo{})
                     : std::nullopt;
  if (decoded && decoded->file == database) return decoded;
  content.refusal =
      "Damaged, or of a receiver with another configuration: its database is not the one in "
      "its memory.";
  return std::nullopt;
}

// Unused places of the receiver's table, which come as satellites, become unused again.
void RemoveUnusedPlaces(StaticDatabase& database) {
  auto& satellites = database.satellites;
  for (size_t count = satellites.size(); count > 0 && IsUnusedPlace(*satellites[count - 1]); --count)
    DeleteSatellites(database, {count - 1});
}

// A copy whose name was taken has a number behind it, from 2, which is no part of the serial number.
void TakeNumberOff(const std::map<std::string, ReceiverCopy, std::greater<>>& copies, ReceiverCopy& copy) {
  const size_t end = copy.name.rfind('-');
  const std::string number = copy.name.substr(end + 1);
  const auto first = copies.find(copy.name.substr(0, end));
  const bool is_number = number != "1" && !number.empty() && number[0] != '0' && number.size() < 6 &&
                         number.find_first_not_of("0123456789") == number.npos;
  if (is_number && first != copies.end()) copy.serial = first->second.serial;
}

}  // namespace

Outcome ListCopies(const Path& folder, std::vector<ReceiverCopy>& copies) {
  copies.clear();
  std::vector<Path> files;
  const Outcome listed = ListFolder(folder, files);
  if (!listed && CauseOf(listed.error) != Cause::kMissing) return listed;
  std::map<std::string, ReceiverCopy, std::greater<>> found;
  for (const Path& file : files) {
    if (auto copy = CopyOf(CopyNameOf(Utf8FromPath(file)))) found.try_emplace(copy->name, std::move(*copy));
  }
  for (auto& [name, copy] : found) TakeNumberOff(found, copy);
  for (auto& [name, copy] : found) copies.push_back(std::move(copy));
  return true;
}

CopyContent ReadCopy(const Context& context, const ProjectConfig& config, const Path& folder,
                     const ReceiverCopy& copy, CopyToSend* back) {
  CopyContent content;
  Bytes database;
  std::vector<Bytes> raw(kRawRegions);
  const size_t regions = config.configuration_index == 1 ? kRawRegions : 1;
  bool whole = ReadPart(folder, copy.name, kCopyExtension, database, content);
  for (size_t i = 0; i < regions; ++i)
    whole = ReadPart(folder, copy.name, RawSuffix(i), raw[i], content) && whole;
  std::string reason;
  Document opened;
  if (!database.empty() && OpenBinBytes(Reasoning(context, reason), database, opened)) {
    CountRecords(opened, content);
  } else if (whole) {
    if (database.empty()) reason = "It is empty.";
    content.refusal = "Damaged: its file " + std::string(kCopyExtension) + " holds no database. " + reason;
    whole = false;
  }
  const auto decoded = whole ? Decode(context, config, database, raw, content) : std::nullopt;
  if (!decoded || !back) return content;
  Document document;
  if (!OpenDecoded(Reasoning(context, reason), *decoded, document)) {
    content.refusal = "Damaged: " + reason;
    return content;
  }
  // The user box record stands in the settings, which are the receiver's own.
  document.ubis.clear();
  for (const OpenSdb& sdb : document.sdbs) RemoveUnusedPlaces(*sdb.database);
  *back = {std::move(document), {config, {std::move(raw[0]), std::move(raw[1])}}};
  return content;
}

}  // namespace vexa
