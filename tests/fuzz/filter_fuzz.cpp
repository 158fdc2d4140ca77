// Reads any bytes as a filter of a list, and filters a list by it, of the kind that the length chooses: rows
// are left out, none is made up, and a filter that is refused says why.
#include <iterator>

#include "core/edit.h"
#include "tests/fuzz/require.h"
#include "view/list_filter.h"
#include "view/tree_path.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vexa;
  static const Document document = [] {
    Document made = NewDocument();
    StaticDatabase& database = *made.sdbs[0].database;
    AddLnb({}, database, {});
    for (uint32_t i = 0; i < 3; ++i) {
      Satellite* satellite = AddSatellite({}, database, {});
      satellite->record.angle = i * 100 & 0xFFF;
      Carrier* carrier = AddCarrier({}, database, *satellite, {});
      carrier->record.frequency += i;
      for (uint32_t k = 0; k < 3; ++k) AddService({}, database, *carrier, {})->record.free = k & 1;
    }
    return made;
  }();
  const ListFilter filter = ParseFilter({reinterpret_cast<const char*>(data), size});
  Require(filter.error.empty() || filter.terms.empty(), "a refused filter with terms");
  constexpr ListView kViews[] = {ListView::kBelow, ListView::kCarriers, ListView::kServices};
  const ListModel all = ListBelow(document, RootNodes(document)[0], kViews[size % std::size(kViews)], false);
  ListModel list = all;
  const std::string error = FilterRows(document, list, filter, false);
  Require(error.empty() || list.rows == all.rows, "rows left out in spite of an error");
  size_t next = 0;
  for (const NodeRef& row : all.rows) next += next < list.rows.size() && row == list.rows[next];
  Require(next == list.rows.size(), "rows that were not there");
  return 0;
}
