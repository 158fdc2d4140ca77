#include "view/import_form.h"

#include <algorithm>

#include "core/field_texts.h"
#include "core/messages.h"
#include "core/rules.h"

namespace vexa {

namespace {

bool BeyondAscii(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<uint8_t>(c) >= 0x80; });
}

template <class Record>
bool AnyBeyondAscii(const std::vector<Record>& records) {
  return std::any_of(records.begin(), records.end(),
                     [](const Record& record) { return BeyondAscii(NameOf(record.name)); });
}

size_t PlaceIn(const std::vector<std::string>& names, const std::string& name) {
  const auto found = std::find(names.begin(), names.end(), name);
  return found == names.end() ? 0 : static_cast<size_t>(found - names.begin());
}

WorkRecords ReadWith(const ImportForm& form, const ListOptions& options, ListLosses& losses) {
  WorkRecords work;
  const ListToRead list = {form.list, Utf8FromPath(form.file.filename()), form.defaults, options, {}};
  if (!RowOf(form.format).read(list, work, losses)) work = {};
  return work;
}

// Lists of the program's own formats keep their bytes unless a page is named; the others are converted.
void FillPages(ImportForm& form) {
  form.pages = form.list_pages = CodePageNames();
  if (IsText(form.format)) {
    form.page = PlaceIn(form.pages, form.shown_in->name);
    form.list_page = PlaceIn(form.list_pages, Windows1252().name);
    return;
  }
  form.pages.insert(form.pages.begin(), "Bytes as they are in the list");
  form.list_pages.insert(form.list_pages.begin(), "As the database's names");
}

// Nothing for the choice that names none.
const CodePage* PageAt(const std::vector<std::string>& names, size_t place) {
  return place < names.size() ? FindCodePage(names[place]) : nullptr;
}

// Nothing for what is no length.
std::optional<size_t> RecordLength(const std::string& text) {
  if (text.empty()) return 0;
  const int64_t length = FilledNumberOf(text);
  const bool fits = length >= static_cast<int64_t>(kSatcodxReadLength) &&
                    length <= static_cast<int64_t>(kLongestSatcodxRecord);
  return fits ? std::optional(static_cast<size_t>(length)) : std::nullopt;
}

ImportChoice ChoiceOf(const ImportForm& form, size_t record_length) {
  ImportChoice choice;
  if (form.format == ListFormat::kSatcodx) {
    choice.options.satcodx.layout = kSatcodxLayouts[form.layout].layout;
    choice.options.satcodx.record_length = record_length;
  }
  choice.options.keep_s2 = form.keep_s2;
  ListPages& pages = choice.options.pages;
  pages.database = PageAt(form.pages, form.page);
  if (!form.utf8) pages.list = PageAt(form.list_pages, form.list_page);
  // What is converted is converted to the page in which it is shown.
  if (!pages.database && pages.list) pages.database = form.shown_in;
  choice.names = pages.database ? pages.database : form.shown_in;
  return choice;
}

ListWay WayOf(const ImportForm& form, const ImportChoice& choice) {
  ListLosses losses;
  const WorkRecords work = ReadWith(form, choice.options, losses);
  const auto name = [&](const auto& record) { return Utf8FromPage(*choice.names, NameOf(record.name)); };
  ListWay way;
  if (form.format == ListFormat::kSatcodx) {
    for (const auto& known : kSatcodxLayouts) {
      if (known.layout == choice.options.satcodx.layout) way[0] = known.name;
    }
    way[1] = std::to_string(SatcodxRecordLength(form.list, choice.options.satcodx));
  } else {
    way[0] = RowOf(form.format).name;
  }
  if (!work.satellites.empty()) {
    const WorkSatellite& satellite = work.satellites[0];
    way[2] = name(satellite) + ", " + ViewAngleText(satellite.angle);
  }
  if (!work.carriers.empty()) {
    const WorkCarrier& carrier = work.carriers[0];
    way[3] =
        Format("%u %s %u", static_cast<unsigned>(carrier.frequency),
               PolarizationName(carrier.polarization).c_str(), static_cast<unsigned>(carrier.symbol_rate));
  }
  if (!work.services.empty()) way[4] = name(work.services[0]);
  way[5] = std::to_string(work.satellites.size());
  way[6] = std::to_string(work.carriers.size());
  way[7] = std::to_string(work.services.size());
  return way;
}

}  // namespace

ImportForm OpenImportForm(ListFormat format, const Path& file, std::span<const uint8_t> list,
                          const DefaultRecords& defaults, const CodePage& shown_in) {
  ImportForm form;
  form.format = format;
  form.file = file;
  form.list = list;
  form.defaults = defaults;
  form.shown_in = &shown_in;
  FillPages(form);
  if (format == ListFormat::kSatcodx) form.doubt = SatcodxDoubt(list);
  ListLosses losses;
  const WorkRecords work = ReadWith(form, ChoiceOf(form, 0).options, losses);
  form.names = losses.lacking > 0 || AnyBeyondAscii(work.satellites) || AnyBeyondAscii(work.carriers) ||
               AnyBeyondAscii(work.services);
  const std::string_view text(reinterpret_cast<const char*>(list.data()), list.size());
  form.utf8 = format != ListFormat::kDvb2000 && BeyondAscii(text) && IsUtf8(text);
  if (form.utf8) {
    form.list_pages = {"UTF-8"};
    form.list_page = 0;
  }
  form.s2_carriers = losses.s2_carriers;
  return form;
}

bool HasQuestions(const ImportForm& form) {
  return !form.doubt.empty() || form.names || form.s2_carriers > 0;
}

std::string ImportQuestion(const ImportForm& form) {
  std::string text = Utf8FromPath(form.file.filename());
  if (!form.doubt.empty()) {
    text +=
        " does not look as lists of its format do: " + form.doubt + ". Choose the row that reads it right.";
  } else {
    text += " leaves open how it is to be read.";
  }
  if (form.names) {
    text += form.utf8 ? "\nNames have characters beyond ASCII, in UTF-8: choose the database's code page."
                      : "\nNames have characters beyond ASCII: choose the code pages.";
  }
  if (form.s2_carriers > 0)
    text += Format("\n%zu DVB-S2 carriers and their services are left out, unless they are kept.",
                   form.s2_carriers);
  return text;
}

std::optional<Refusal> AcceptImportForm(const ImportForm& form, ImportChoice& choice) {
  const auto length = RecordLength(form.record_length);
  if (!length)
    return Refusal{RangeText("Record length", -1, static_cast<int>(kSatcodxReadLength),
                             static_cast<int>(kLongestSatcodxRecord))};
  choice = ChoiceOf(form, *length);
  return std::nullopt;
}

std::vector<ListWay> WaysOf(const ImportForm& form) {
  const size_t length = RecordLength(form.record_length).value_or(0);
  if (form.format != ListFormat::kSatcodx) return {WayOf(form, ChoiceOf(form, length))};
  std::vector<ListWay> ways;
  ImportForm each = form;
  for (each.layout = 0; each.layout < std::size(kSatcodxLayouts); ++each.layout)
    ways.push_back(WayOf(form, ChoiceOf(each, length)));
  return ways;
}

}  // namespace vexa
