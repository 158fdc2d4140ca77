#include "import/import_command.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "import/build_bin.h"
#include "import/dvb2000.h"
#include "import/list_text.h"
#include "import/lyngsat.h"
#include "import/satcodx.h"

namespace vexa {

namespace {

using Import = int (*)(const Context& context, const Path& path, const DefaultRecords& defaults,
                       WorkFiles& work);

struct FormatFacts {
  ListFormat format;
  std::string_view extension, signature;
  Import import;
};

constexpr FormatFacts kFormats[] = {{ListFormat::kSatcodx, ".sdx", "SATCODX", ImportSdxFile},
                                    {ListFormat::kDvb2000, ".dvb", "DVSO", ImportDvbFile},
                                    {ListFormat::kLyngsat, ".dat", ":SAT", ImportLyngsatFile}};
constexpr size_t kSignatureSize = 7;

}  // namespace

bool IsListFile(const Path& path) {
  return std::any_of(std::begin(kFormats), std::end(kFormats),
                     [&](const FormatFacts& facts) { return HasExtension(path, facts.extension); });
}

std::optional<ListFormat> CheckListFile(const Context& context, const Path& path) {
  const auto start = ReadFileStart(path, kSignatureSize);
  if (!start) {
    Tell(context.messages, Icon::kStop, "Unable to open the given file.");
    return std::nullopt;
  }
  for (const FormatFacts& facts : kFormats) {
    if (HasExtension(path, facts.extension) && StartsWithIgnoringCase(*start, facts.signature))
      return facts.format;
  }
  Tell(context.messages, Icon::kStop, "Error - Invalid File");
  return std::nullopt;
}

bool AskFilterMode(const Context& context) {
  return Ask(context.messages, "Do you want to generate Bin file with filter mode");
}

bool ReadList(const Context& context, const Path& path, ListFormat format, const DefaultRecords& defaults,
              WorkFiles& work) {
  for (const FormatFacts& facts : kFormats) {
    if (facts.format == format && facts.import(context, path, defaults, work) != 0) return true;
  }
  // DVB2000 lists share the text of the Lyngsat ones.
  if (format == ListFormat::kSatcodx) {
    Tell(context.messages, Icon::kStop, "Invalid or unsupported SDX file format.");
  } else {
    Tell(context.messages, Icon::kStop, "Invalid or unsupported DAT file format.");
  }
  return false;
}

bool OpenWorkFiles(const Context& context, const WorkFiles& work, const DefaultRecords& defaults,
                   Document& document) {
  return OpenBinBytes(context, BuildBinFromWorkFiles(work, defaults), document);
}

bool ImportListFile(const Context& context, const Path& path, const DefaultRecords& defaults,
                    const FilterDialogs& filter, Document& document) {
  const auto format = CheckListFile(context, path);
  if (!format) return false;
  const bool filtered = AskFilterMode(context);
  WorkFiles work;
  if (!ReadList(context, path, *format, defaults, work)) return false;
  if (filtered && !filter(work)) return false;
  return OpenWorkFiles(context, work, defaults, document);
}

}  // namespace vexa
