// The window of a comparison: every record of both databases in one list, filtered by what happened to it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "core/compare.h"
#include "core/take_over.h"
#include "view/tree_path.h"

namespace vexa {

// What the list shows. Places of the two lists of choices; 0 stands for all of them.
struct CompareFilter {
  size_t kind = 0;
  size_t change = 0;
  bool equal = false;  // records too that are the same in both
};
std::vector<std::string> CompareKinds();    // "All kinds", "LNBs", ...
std::vector<std::string> CompareChanges();  // "All changes", "Added", ...

struct CompareView {
  std::vector<Difference> records;  // of CompareDocuments; equal ones among them where they are asked for
  std::vector<size_t> shown;        // places in `records`, one for each row
};
// Compares the window's database with the other one, and shows what the filter lets through.
void CompareInto(CompareView& view, const Document& document, size_t sdb, const Document& other,
                 size_t other_sdb, const CompareFilter& filter);
// The same for another filter that asks for equal records as the one before.
void FilterComparison(CompareView& view, const CompareFilter& filter);

std::vector<std::string> CompareColumns();  // "Change", "Record", "This database", "Other database"
// The text of a record in one of these columns.
std::string CompareCell(const Difference& difference, size_t column);

// The next row behind `row` (before: the last one in front of it) that is a difference; without a row the
// first (last) one. Nothing when there is none.
std::optional<size_t> NextDifference(const CompareView& view, std::optional<size_t> row, bool before);

// What is taken over, as places in `records`: rows, all of the kinds of these rows, everything.
enum class TakeOverRange { kRows, kKinds, kAll };
std::vector<size_t> ChosenDifferences(const CompareView& view, const std::vector<size_t>& rows,
                                      TakeOverRange range);

// "Differences: 12: 3 added, 0 removed, 8 changed, 1 moved", or that there is none.
std::string CompareStatus(const CompareView& view);
// "Taken over: 3", and what became of favourite entries.
std::string TakenOverText(const TakenOver& taken);
// Where the window's tree has the record, or what it belongs to; empty: nowhere.
TreePath PathOfDifference(const Document& document, size_t sdb, const Difference& difference);

// The differences as a text file, a line each, ended as Windows ends lines.
std::string ComparisonText(const std::vector<Difference>& records);
// The differences as a page. `first` and `second` name the two databases; the page is whole in itself.
std::string ComparisonPage(const std::vector<Difference>& records, const std::string& first,
                           const std::string& second);

}  // namespace vexa
