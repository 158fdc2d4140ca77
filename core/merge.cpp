#include "core/merge.h"

#include <iterator>
#include <utility>

#include "core/bin_file.h"
#include "core/messages.h"

namespace vexa {

namespace {

// `sdbs` and `ubis`: with those of the file that `messages` are about.
bool Fits(const Messages& messages, size_t sdbs, size_t ubis) {
  if (sdbs > kMaximumSdbs) {
    TellWhy(messages, Icon::kStop,
            Format("With its SDBs there would be %zu, at most %u: leave it out, or delete SDBs first.", sdbs,
                   kMaximumSdbs),
            "SDB count exceeds the allowed numbers.Cannot add more SDB's.");
    return false;
  }
  if (ubis > kMaximumUbis) {
    TellWhy(messages, Icon::kStop,
            Format("With its user box records there would be %zu: leave it out, or delete some first.", ubis),
            "Can't add USER BOX information. It exceeds the limit %d.", static_cast<int>(kMaximumUbis));
    return false;
  }
  return true;
}

}  // namespace

bool MergeBins(const Context& context, const std::vector<Path>& files, Document& document) {
  std::vector<OpenSdb> sdbs;
  std::vector<OpenUbi> ubis;
  for (const Path& file : files) {
    Document read;
    if (!OpenBin(context, file, read)) return false;
    if (!Fits(About(context.messages, Utf8FromPath(file)),
              document.sdbs.size() + sdbs.size() + read.sdbs.size(),
              document.ubis.size() + ubis.size() + read.ubis.size()))
      return false;
    std::move(read.sdbs.begin(), read.sdbs.end(), std::back_inserter(sdbs));
    ubis.insert(ubis.end(), read.ubis.begin(), read.ubis.end());
  }
  for (OpenSdb& sdb : sdbs) {
    sdb.slot = static_cast<uint32_t>(ClaimSlot(document));
    document.sdbs.push_back(std::move(sdb));
  }
  document.ubis.insert(document.ubis.end(), ubis.begin(), ubis.end());
  return true;
}

}  // namespace vexa
