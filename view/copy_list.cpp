#include "view/copy_list.h"

#include "core/messages.h"

namespace vexa {

namespace {

const CopyContent& ContentOf(CopyList& list, size_t row) {
  auto& content = list.contents[row];
  if (!content) content = ReadCopy(list.context, list.config, list.folder, list.copies[row]);
  return *content;
}

std::string SizeText(uint64_t bytes) {
  return Format("%llu KB", static_cast<unsigned long long>((bytes + 1023) / 1024));
}

}  // namespace

CopyList OpenCopyList(const Context& context, const ProjectConfig& config, const Path& folder) {
  CopyList list{context, config, folder, {}, {}};
  const Outcome listed = ListCopies(folder, list.copies);
  if (!listed) {
    TellWhy(context.messages, Icon::kStop, ReadReason(folder, listed.error),
            "The folder of the copies cannot be read.");
  }
  list.contents.resize(list.copies.size());
  return list;
}

std::string CopyCell(CopyList& list, size_t row, size_t column) {
  const ReceiverCopy& copy = list.copies[row];
  const LocalTime& time = copy.time;
  switch (column) {
    case 0:
      return Format("%04d-%02d-%02d", time.year, time.month, time.day);
    case 1:
      return Format("%02d:%02d:%02d", time.hour, time.minute, time.second);
    case 2:
      return copy.serial;
    default:
      break;
  }
  const CopyContent& content = ContentOf(list, row);
  switch (column) {
    case 3:
      return std::to_string(content.satellites);
    case 4:
      return std::to_string(content.carriers);
    case 5:
      return std::to_string(content.services);
    case 6:
      return SizeText(content.bytes);
    default:
      return content.refusal.empty() ? "Whole" : content.refusal;
  }
}

std::optional<Refusal> TakeCopy(CopyList& list, std::optional<size_t> row, CopyToSend& back) {
  if (!row || *row >= list.copies.size()) return Refusal{"Choose a copy.", Icon::kInformation};
  // Anew: its files may have changed since it was shown.
  CopyContent& content =
      list.contents[*row].emplace(ReadCopy(list.context, list.config, list.folder, list.copies[*row], &back));
  if (content.refusal.empty()) return std::nullopt;
  Refusal refusal{"This copy cannot be sent back."};
  refusal.detail = content.refusal;
  return refusal;
}

std::string CopyCountText(const CopyList& list) {
  const size_t count = list.copies.size();
  return Format("%zu %s in %s", count, count == 1 ? "copy" : "copies", Utf8FromPath(list.folder).c_str());
}

}  // namespace vexa
