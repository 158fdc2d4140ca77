// Importing lists of 100,000 entries, from the file to the bytes of the database stream, beside copying the
// file with `cp` and beside cutting the same columns out of it in one pass with `mawk`. Best of several runs
// each.
#include "bench/measure.h"
#include "import/build_bin.h"
#include "import/list_format.h"
#include "platform/heap.h"
#include "tools/list_generator.h"

namespace {

using namespace vexa;

double ImportTime(ListFormat format, const Path& path, size_t& services) {
  const Context context;
  const DefaultRecords defaults;
  return BestMilliseconds(15, [&] {
    WorkRecords work;
    ListLosses losses;
    ReadList(context, path, format, defaults, {}, work, losses);
    const Bytes stream = BuildBinFromWorkFiles(work, defaults);
    services = work.services.size();
    if (stream.empty()) std::abort();
  });
}

void Write(const Path& path, const std::string& list) {
  WriteWholeFile(path, {reinterpret_cast<const uint8_t*>(list.data()), list.size()});
}

void Compare(const char* name, ListFormat format, const Path& path, double empty_process) {
  const std::string file = Utf8FromPath(path);
  size_t services = 0;
  const double own = ImportTime(format, path, services);
  const double copy = BestMilliseconds(15, [&] { RunCommand("cp '" + file + "' '" + file + ".copy'"); });
  const double megabytes = static_cast<double>(std::filesystem::file_size(path)) / 1e6;
  const std::string what = Format("%s, %.2f MB, 100,000 records, %zu services", name, megabytes, services);
  PrintRow({what, {own}, "`cp`", {copy}, "1.5 x"});
  PrintRow({what, {own}, "`cp` without its process", {copy - empty_process}});
  if (format != ListFormat::kSatcodx) return;
  const std::string columns =
      "mawk '{ print substr($0,11,18), substr($0,29,1), substr($0,34,6), substr($0,43,1), substr($0,44,8), "
      "substr($0,52,4), substr($0,70,5), substr($0,75,1), substr($0,76,4), substr($0,80,4), substr($0,84,4), "
      "substr($0,88,5), substr($0,112,4), substr($0,116,12) }' '";
  const double cut = BestMilliseconds(5, [&] { RunCommand(columns + file + "' > /dev/null"); });
  PrintRow({what, {own}, "the same columns by `mawk`", {cut}});
}

}  // namespace

int main() {
  PrepareHeap();
  const auto folder = MakeTestFolder("vexa-import-bench");
  if (!folder) return 1;
  ListSettings settings;
  settings.records = 100000;
  settings.line_ends = true;
  settings.per_satellite = 1200;
  Write(*folder / "list.sdx", MakeSatcodxList(settings));
  Write(*folder / "list.dvb", MakeDvb2000List(settings));
  Write(*folder / "list.dat", MakeLyngsatList(settings));
  const double empty_process = BestMilliseconds(15, [] { RunCommand("true"); });
  Compare("SatcoDX", ListFormat::kSatcodx, *folder / "list.sdx", empty_process);
  Compare("DVB2000", ListFormat::kDvb2000, *folder / "list.dvb", empty_process);
  Compare("Lyngsat", ListFormat::kLyngsat, *folder / "list.dat", empty_process);
  RemoveFolder(*folder);
}
