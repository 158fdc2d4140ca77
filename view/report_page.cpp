#include "view/report_page.h"

#include <initializer_list>

#include "core/check.h"
#include "core/code_names.h"
#include "core/edit.h"
#include "core/field_texts.h"
#include "core/match.h"
#include "core/messages.h"
#include "import/table_cells.h"
#include "view/band_plan.h"
#include "view/orbit.h"
#include "view/report_style.h"
#include "view/svg.h"

namespace vexa {

namespace {

constexpr size_t kFecCodes = 8;

std::string PidCell(uint32_t pid) {
  return pid == kNoPid ? "" : std::to_string(pid);
}

class PageWriter {
 public:
  PageWriter(const Document& document, size_t sdb, const CodePage& code_page,
             const std::optional<Place>& place)
      : document_(document),
        sdb_(sdb),
        database_(*document.sdbs[sdb].database),
        code_page_(code_page),
        place_(place) {
    name_ = Utf8FromPage(code_page, document.sdbs[sdb].name);
    // About what a row and a block take.
    page_.reserve(65536 + database_.services.size() * 230 + database_.carriers.size() * 400);
  }

  std::string Write() {
    AddHead();
    AddTotals();
    AddOrbit();
    AddFindings();
    AddPlans();
    page_ += "<p class=\"find\"><label>Search the tables <input type=\"search\" id=\"search\"></label></p>\n";
    AddSatellites();
    AddCarriers();
    AddServices();
    AddFavourites();
    page_ += "<script>";
    page_ += kReportScript;
    page_ += "</script>\n</body>\n</html>\n";
    return std::move(page_);
  }

 private:
  // A text of the program's own, already markup.
  void Add(const char* markup) { page_ += markup; }
  void AddText(std::string_view text) { AppendMarkup(page_, text); }
  std::string Named(std::string_view name) const { return Utf8FromPage(code_page_, name); }

  void AddHead() {
    Add("<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src "
        "'unsafe-inline'; "
        "script-src 'unsafe-inline'\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>");
    AddText(name_);
    Add(" - Vexa Editor</title>\n<style>");
    Add(kReportStyle);
    for (size_t i = 0; i < kMaximumLnbs; ++i)
      page_ += Format("svg .l%zu{fill:hsl(%d 70%% var(--lnb))}\n", i, HueOfLnb(static_cast<int>(i)));
    for (size_t i = 0; i < kFecCodes; ++i)
      page_ += Format("svg .f%zu{fill:hsl(%d 60%% var(--fec))}\n", i, HueOfFec(static_cast<int>(i)));
    Add("</style>\n</head>\n<body>\n"
        "<svg class=\"defs\" aria-hidden=\"true\"><defs><pattern id=\"hatch\" width=\"5\" height=\"5\" "
        "patternUnits=\"userSpaceOnUse\" patternTransform=\"rotate(45)\"><path d=\"M0 "
        "0V5\"/></pattern></defs></svg>\n<h1>");
    AddText(name_);
    Add("</h1>\n<nav><a href=\"#orbit\">Orbit</a><a href=\"#findings\">Findings</a><a href=\"#plans\">Band "
        "plans</a>"
        "<a href=\"#satellites\">Satellites</a><a href=\"#carriers\">Carriers</a><a "
        "href=\"#services\">Services</a>"
        "<a href=\"#favourites\">Favourites</a></nav>\n");
  }

  void AddTotals() {
    size_t tv = 0, scrambled = 0, entries = 0, unused = 0;
    for (const Service* service : database_.services) {
      tv += service->record.type == kTv ? 1 : 0;
      scrambled += service->record.free ? 0 : 1;
    }
    for (const FavouriteGroup& group : database_.favourites) entries += group.tv.size() + group.radio.size();
    for (const Satellite* satellite : database_.satellites) unused += IsUnusedPlace(*satellite) ? 1 : 0;
    const size_t services = database_.services.size();
    const std::pair<const char*, size_t> totals[] = {
        {"LNBs", database_.lnb_count}, {"Satellites", database_.satellites.size()},
        {"Unused places", unused},     {"Carriers", database_.carriers.size()},
        {"Services", services},        {"TV", tv},
        {"Radio", services - tv},      {"Scrambled", scrambled},
        {"Favourite entries", entries}};
    Add("<dl>\n");
    for (const auto& [name, count] : totals)
      page_ += Format("<div><dt>%s</dt><dd>%zu</dd></div>\n", name, count);
    Add("</dl>\n");
  }

  void AddKey(const char* kind, size_t index, const std::string& text) {
    page_ += Format(
        "<li><svg viewBox=\"0 0 10 10\" aria-hidden=\"true\"><rect class=\"%s%zu\" width=\"10\" "
        "height=\"10\"/></svg>",
        kind, index);
    AddText(text);
    Add("</li>\n");
  }

  void AddOrbit() {
    Add("<section id=\"orbit\">\n<h2>Orbit</h2>\n<figure>\n");
    AppendSvg(page_, Orbit(database_, code_page_, place_));
    Add("</figure>\n<ul class=\"key\">\n");
    for (size_t i = 0; i < database_.lnb_count && i < kMaximumLnbs; ++i) {
      const LnbRecord& lnb = database_.lnbs[i];
      AddKey("l", i,
             Format("LNB%zu: %s, %u / %u MHz", i + 1, LnbTypeName(lnb.type).c_str(), uint32_t{lnb.frequency1},
                    uint32_t{lnb.frequency2}));
    }
    Add("</ul>\n<p>A disc grows with the services of the satellite, the ring around it with the "
        "carriers.</p>\n"
        "</section>\n");
  }

  void AddFindings() {
    size_t count = 0;
    std::string lines;
    for (const Finding& finding : FindFaults(document_)) {
      if (finding.place.ubi >= 0 || finding.place.record.sdb != static_cast<int>(sdb_)) continue;
      if (++count > kMostFindings) continue;
      lines += "<li>";
      AppendMarkup(lines, finding.line());
      lines += "</li>\n";
    }
    page_ += Format("<section id=\"findings\">\n<h2>Findings: %zu</h2>\n", count);
    if (count == 0) Add("<p>The check finds nothing.</p>\n");
    if (count > 0) page_ += "<ol>\n" + lines + "</ol>\n";
    if (count > kMostFindings)
      page_ += Format("<p>%zu more are not listed here.</p>\n", count - kMostFindings);
    Add("</section>\n");
  }

  void AddPlans() {
    Add("<section id=\"plans\">\n<h2>Band plans</h2>\n<ul class=\"key\">\n");
    for (size_t fec = 0; fec < std::size(kFecs); ++fec) AddKey("f", fec, std::string("FEC ") + kFecs[fec]);
    Add("<li><svg viewBox=\"0 0 10 10\" aria-hidden=\"true\"><rect class=\"x\" width=\"10\" "
        "height=\"10\"/></svg>"
        "overlaps, or the LNB does not receive it</li>\n</ul>\n");
    for (size_t i = 0; i < database_.satellites.size(); ++i) {
      const Satellite& satellite = *database_.satellites[i];
      if (satellite.carriers.empty()) continue;
      page_ += Format("<figure id=\"s%zu\">\n<h3>", i + 1);
      AddText(Named(NameOf(satellite.record.name)) + " " + AngleText(satellite.record.angle) + " " +
              kSides[satellite.record.east]);
      Add("</h3>\n");
      AppendSvg(page_, PlanOf(database_, satellite, code_page_).drawing);
      Add("</figure>\n");
    }
    Add("</section>\n");
  }

  void BeginTable(const char* id, const char* title, size_t rows, const std::vector<const char*>& columns) {
    page_ += Format(
        "<section id=\"%s\">\n<h2>%s: <span class=\"count\">%zu</span></h2>\n<div class=\"wide\"><table "
        "class=\"list\">\n<thead><tr>",
        id, title, rows);
    for (const char* column : columns) page_ += std::string("<th>") + column + "</th>";
    Add("</tr></thead>\n<tbody>\n");
  }
  void EndTable() { Add("</tbody>\n</table></div>\n</section>\n"); }

  // Texts are escaped here.
  void AddCells(std::initializer_list<std::string_view> cells) {
    for (const std::string_view cell : cells) {
      Add("<td>");
      AddText(cell);
      Add("</td>");
    }
  }
  void AddRow(std::initializer_list<std::string_view> cells) {
    Add("<tr>");
    AddCells(cells);
    Add("</tr>\n");
  }

  void AddSatellites() {
    std::vector<const char*> columns = {"No",        "Satellite Name", "Angle",     "East/West Flag",
                                        "Position",  "Carrier Count",  "LNB Index", "LNB freq 1",
                                        "LNB freq 2"};
    if (place_) columns.insert(columns.end(), {"Azimuth", "Elevation", "Skew"});
    BeginTable("satellites", "Satellites", database_.satellites.size(), columns);
    for (size_t i = 0; i < database_.satellites.size(); ++i) {
      const Satellite& satellite = *database_.satellites[i];
      const SatelliteRecord& record = satellite.record;
      const LnbRecord& lnb = LnbOf(database_, satellite);
      Add("<tr>");
      AddCells({std::to_string(i + 1), Named(NameOf(record.name)), AngleText(record.angle),
                kSides[record.east], std::to_string(record.position),
                std::to_string(satellite.carriers.size()), "LNB" + std::to_string(record.lnb_index + 1u),
                std::to_string(lnb.frequency1), std::to_string(lnb.frequency2)});
      if (place_) AddLookAngle(satellite);
      Add("</tr>\n");
    }
    EndTable();
  }

  void AddLookAngle(const Satellite& satellite) {
    const LookAngle angle = LookAngleOf(*place_, OrbitalPositionOf(satellite));
    if (IsUnusedPlace(satellite)) {
      AddCells({"", "", ""});
    } else if (angle.elevation < 0) {
      AddCells({"", "below the horizon", ""});
    } else {
      AddCells({Format("%.1f", angle.azimuth), Format("%.1f", angle.elevation), Format("%.1f", angle.skew)});
    }
  }

  void AddCarriers() {
    BeginTable("carriers", "Carriers", database_.carriers.size(),
               {"Satellite Name", "No", "Carrier Name", "Frequency", "Symbol Rate", "Polarization", "FEC",
                "Service Count"});
    for (const Satellite* satellite : database_.satellites) {
      const std::string name = Named(NameOf(satellite->record.name));
      for (size_t i = 0; i < satellite->carriers.size(); ++i) {
        const Carrier& carrier = *satellite->carriers[i];
        const CarrierRecord& record = carrier.record;
        AddRow({name, std::to_string(i + 1), Named(NameOf(record.name)), std::to_string(record.frequency),
                std::to_string(record.symbol_rate), kPolarizations[record.polarization],
                WordOf<CarrierRecord>("fec", record), std::to_string(carrier.services.size())});
      }
    }
    EndTable();
  }

  void AddServices() {
    BeginTable("services", "Services", database_.services.size(),
               {"Satellite Name", "Frequency", "Polarization", "Service Name", "Program No", "Service Type",
                "Video PID", "Audio PID", "PCR PID", "Scrambled"});
    for (const Satellite* satellite : database_.satellites) {
      const std::string name = Named(NameOf(satellite->record.name));
      for (const Carrier* carrier : satellite->carriers) {
        const std::string frequency = std::to_string(carrier->record.frequency);
        for (const Service* service : carrier->services) {
          const ServiceRecord& record = service->record;
          AddRow({name, frequency, kPolarizations[carrier->record.polarization], Named(NameOf(record.name)),
                  std::to_string(record.program_number), record.type == kTv ? "TV" : "Radio",
                  PidCell(record.video_pid), PidCell(record.audio_pid), PidCell(record.pcr_pid),
                  record.free ? "---" : "Yes"});
        }
      }
    }
    EndTable();
  }

  void AddFavourites() {
    size_t entries = 0;
    for (const FavouriteGroup& group : database_.favourites) entries += group.tv.size() + group.radio.size();
    BeginTable("favourites", "Favourites", entries,
               {"Group", "List", "Group Name", "Entry", "Service Name", "Satellite Name", "Frequency"});
    for (size_t g = 0; g < kFavouriteGroups; ++g) {
      const FavouriteGroup& group = database_.favourites[g];
      AddEntries(g, "TV", NameOf(group.record.tv_name), group.tv);
      AddEntries(g, "Radio", NameOf(group.record.radio_name), group.radio);
    }
    EndTable();
  }

  void AddEntries(size_t group, const char* list, std::string_view name,
                  const std::vector<Service*>& entries) {
    for (size_t i = 0; i < entries.size(); ++i) {
      const Carrier& carrier = *entries[i]->carrier;
      AddRow({std::to_string(group + 1), list, Named(name), std::to_string(i + 1),
              Named(NameOf(entries[i]->record.name)), Named(NameOf(carrier.satellite->record.name)),
              std::to_string(carrier.record.frequency)});
    }
  }

  const Document& document_;
  const size_t sdb_;
  const StaticDatabase& database_;
  const CodePage& code_page_;
  const std::optional<Place>& place_;
  std::string name_, page_;
};

}  // namespace

std::string ReportPage(const Document& document, size_t sdb, const CodePage& page,
                       const std::optional<Place>& place) {
  return PageWriter(document, sdb, page, place).Write();
}

}  // namespace vexa
