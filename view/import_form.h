// The question of an import: how the list is to be read, where its bytes leave that open. It shows what each
// way makes of the list: the first record of each kind, and how many there are.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/database.h"
#include "import/list_format.h"
#include "platform/code_page.h"
#include "view/refusal.h"

namespace vexa {

struct ImportForm {
  ListFormat format = ListFormat::kSatcodx;
  Path file;
  std::span<const uint8_t> list;  // belongs to who opened the form
  DefaultRecords defaults;
  const CodePage* shown_in = nullptr;  // the page in which the program shows names

  // What is open.
  std::string doubt;       // what speaks against the default layout; empty: nothing does
  bool names = false;      // some have characters beyond ASCII
  bool utf8 = false;       // they are UTF-8: no page of the list is asked for
  size_t s2_carriers = 0;  // left out unless they are kept

  // What is chosen.
  size_t layout = 0;                           // place in kSatcodxLayouts
  std::string record_length;                   // bytes; empty: as the layout says
  std::vector<std::string> pages, list_pages;  // of the database's and of the list's names: the choices
  size_t page = 0, list_page = 0;              // places in them
  bool keep_s2 = false;
};

// Reads the list once, as its format says, to find out what is open. `list` must outlive the form.
ImportForm OpenImportForm(ListFormat format, const Path& file, std::span<const uint8_t> list,
                          const DefaultRecords& defaults, const CodePage& shown_in);
// Whether there is anything to ask.
bool HasQuestions(const ImportForm& form);
// What the dialog says above the ways: the file, and a line for each thing that is open.
std::string ImportQuestion(const ImportForm& form);

// What is chosen, as options of the import, and the page in which the database's names stand then.
struct ImportChoice {
  ListOptions options;
  const CodePage* names = nullptr;
};
// Refused, and left as it is, for a length of records that is no number of bytes from 127 to 65535.
std::optional<Refusal> AcceptImportForm(const ImportForm& form, ImportChoice& choice);

// One way to read the list, as a row of the dialog's list shows it.
inline constexpr std::array kWayColumns = {"Layout",        "Length",     "First satellite", "First carrier",
                                           "First service", "Satellites", "Carriers",        "Services"};
using ListWay = std::array<std::string, kWayColumns.size()>;
// A row a layout of the format, in the order of kSatcodxLayouts; one row for the other formats. While the
// length is refused, each layout takes its own.
std::vector<ListWay> WaysOf(const ImportForm& form);

}  // namespace vexa
