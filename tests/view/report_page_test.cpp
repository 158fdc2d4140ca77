// The pictures of a database and the page around them.
#include "view/report_page.h"

#include <gtest/gtest.h>

#include <cmath>

#include "platform/text.h"
#include "tests/support/random_database.h"
#include "view/band_plan.h"
#include "view/orbit.h"
#include "view/svg.h"

namespace vexa {
namespace {

struct Pictures : testing::Test {
  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  Satellite& satellite = *AddTestSatellite(database, "Sat");
  Carrier* Add(uint32_t frequency, uint32_t symbol_rate, uint32_t polarization = kHorizontal) {
    Carrier* carrier = AddTestCarrier(database, 0);
    carrier->record.frequency = frequency;
    carrier->record.symbol_rate = symbol_rate & 0xFFFFFF;
    carrier->record.polarization = polarization & 3;
    return carrier;
  }
  // What is wrong with each block: "o" outside, "x" and the place of what it overlaps, "." nothing.
  std::string Faults() {
    std::string text;
    for (const CarrierBlock& block : BlocksOf(database, satellite)) {
      if (block.outside) text += "o";
      for (size_t i = 0; i < satellite.carriers.size(); ++i) {
        if (block.overlaps == satellite.carriers[i]) text += "x" + std::to_string(i);
      }
      text += ".";
    }
    return text;
  }
};

// A symbol rate of 20000 kS/s takes 27 MHz.
TEST_F(Pictures, BlocksThatOverlapOrAreNotReceived) {
  Add(11000, 20000);
  Add(11027, 20000);  // touches the first
  Add(11053, 20000);  // a megahertz into the second
  Add(11053, 20000, kVertical);
  Add(11045, 1000);   // inside the third
  Add(11066, 20000);  // reaches the third behind the small one
  Add(12751, 1000);
  Add(12750, 1000, kLeft);
  Add(10699, 0);
  EXPECT_EQ(Faults(), ".x2.x1..x2.x2.o..o.");
  Add(4294967295u, 0xFFFFFF);
  database.lnbs[0].type = kLnbLnbf;
  EXPECT_EQ(Faults(), "o.ox2.ox1.o.ox2.ox2.o.o.o.o.");
  database.lnbs[1].type = kLnbUniversal;
  satellite.record.lnb_index = 1;
  EXPECT_EQ(Faults(), ".x2.x1..x2.x2.o..o.o.");
}

// Overlaps of any carriers, against a look at every pair.
TEST_F(Pictures, OverlapsAgainstEveryPair) {
  std::mt19937 random(7);
  const auto below = [&](uint32_t end) { return static_cast<uint32_t>(random() % end); };
  for (int i = 0; i < 200; ++i) Add(10700 + below(2050), below(9000), below(4));
  size_t overlapping = 0;
  const auto blocks = BlocksOf(database, satellite);
  for (const CarrierBlock& one : blocks) {
    bool expected = false, named = false;
    for (const CarrierBlock& other : blocks) {
      const CarrierRecord &a = one.carrier->record, &b = other.carrier->record;
      const double apart = std::abs(double(a.frequency) - double(b.frequency));
      const bool shared = &one != &other && a.polarization == b.polarization &&
                          apart < 1.35e-3 / 2 * (double(a.symbol_rate) + double(b.symbol_rate));
      expected |= shared;
      named |= shared && one.overlaps == other.carrier;
    }
    EXPECT_EQ(one.overlaps != nullptr, expected);
    EXPECT_EQ(named, expected);
    overlapping += expected;
  }
  EXPECT_GT(overlapping, 20u);
  EXPECT_LT(overlapping, 180u);
}

TEST_F(Pictures, BlocksStandOverTheirFrequencies) {
  AddTestService(database, Add(11725, 30000));
  Add(10700, 0, kVertical);
  Add(3600, 20000);
  Add(20000, 1000, kVertical);
  satellite.carriers[0]->record.fec = 3;
  const Drawing plan = PlanOf(database, satellite, Windows1252()).drawing;
  std::vector<const Shape*> blocks;  // C: the third; Ku: the first, then the vertical ones
  size_t ranges = 0;
  for (const Shape& shape : plan.shapes) {
    EXPECT_TRUE(shape.x >= 0 && shape.x + shape.width <= plan.width);
    EXPECT_LE(shape.y + shape.height, plan.height);
    if (shape.paint == Paint::kRange) ++ranges;
    if (shape.paint == Paint::kFec) blocks.push_back(&shape);
  }
  ASSERT_EQ(blocks.size(), 4u);
  EXPECT_EQ(ranges, 1u);
  const double per_c = 960.0 / 1880, per_ku = 960.0 / 2130;  // units a megahertz
  EXPECT_NEAR(blocks[0]->x, 30 + (3600 - 13.5 - 2960) * per_c, 1e-6);
  EXPECT_NEAR(blocks[0]->width, 27 * per_c, 1e-6);
  EXPECT_NEAR(blocks[1]->x, 30 + (11725 - 20.25 - 10660) * per_ku, 1e-6);
  EXPECT_NEAR(blocks[1]->width, 40.5 * per_ku, 1e-6);
  EXPECT_NEAR(blocks[2]->x + blocks[2]->width / 2, 30 + 40 * per_ku, 1e-6);
  EXPECT_NEAR(blocks[3]->x + blocks[3]->width, kPlanRight, 1e-6);
  EXPECT_GT(blocks[1]->height, blocks[0]->height);
  EXPECT_EQ(blocks[1]->index, 3);
  EXPECT_EQ(blocks[0]->y + blocks[0]->height + 30 + 22 + 22, blocks[1]->y + blocks[1]->height);
  EXPECT_TRUE(blocks[0]->faulty && !blocks[1]->faulty && !blocks[2]->faulty && blocks[3]->faulty);
  EXPECT_TRUE(PlanOf(database, *AddTestSatellite(database, "None"), Windows1252()).drawing.shapes.empty());
}

TEST_F(Pictures, TheOrbitGoesFromWestToEast) {
  const std::pair<const char*, int> others[] = {{"Far", 450}, {"NewSat 7", 0}, {"West", -150}, {"Same", 192}};
  satellite.record.angle = 192;
  satellite.record.east = 1;
  for (const auto& [name, position] : others) {
    SatelliteRecord& record = AddTestSatellite(database, name)->record;
    record.angle = static_cast<uint32_t>(std::abs(position)) & 0xFFF;
    record.east = position >= 0;
    record.lnb_index = 2;
  }
  AddTestService(database, Add(11000, 1000));
  std::string names;
  for (const OrbitPlace& place : OrbitPlaces(database))
    names += std::string(NameOf(place.satellite->record.name)) + " ";
  EXPECT_EQ(names, "West Sat Same Far ");
  std::vector<Shape> discs;
  std::vector<double> texts;
  for (const Shape& shape : Orbit(database, Windows1252()).shapes) {
    if (shape.paint == Paint::kLnb) discs.push_back(shape);
    if (shape.kind == ShapeKind::kText && shape.place == TextPlace::kUpwards) texts.push_back(shape.x);
  }
  // The one with a service is the largest and lies below; the arc shows 20 West to 50 East.
  ASSERT_EQ(discs.size(), 4u);
  EXPECT_NEAR(discs[0].x, 40 + 920 * (19.2 + 20) / 70, 1e-6);
  EXPECT_EQ(discs[0].index, 0);
  EXPECT_EQ(discs[0].text,
            "Sat 19.2\xC2\xB0"
            "E, LNB1, 1 carriers, 1 services");
  EXPECT_GT(discs[0].width, discs[1].width);
  EXPECT_NEAR(discs[1].x, 40 + 920 * 5 / 70.0, 1e-6);
  EXPECT_EQ(discs[1].index, 2);
  EXPECT_LT(discs[3].y, 220 + 50);
  ASSERT_EQ(texts.size(), 4u);
  for (size_t i = 1; i < 4; ++i) EXPECT_GE(texts[i] - texts[i - 1], 12.9);
}

// Counts that every opened element of a page is closed in its order.
std::string Unbalanced(std::string page) {
  for (const char* raw : {"style", "script"}) {
    const size_t begin = page.find(std::string("<") + raw + ">"),
                 end = page.find(std::string("</") + raw + ">");
    page.erase(begin, end - begin + std::string(raw).size() + 3);
  }
  std::vector<std::string> open;
  for (size_t at = page.find('<'); at != std::string::npos; at = page.find('<', at + 1)) {
    const size_t end = page.find('>', at), next = page.find('<', at + 1);
    if (end == std::string::npos || next < end) return page.substr(at, 80);
    const std::string tag = page.substr(at + 1, end - at - 1),
                      name = tag.substr(0, tag.find_first_of(" /", 1));
    if (name[0] == '/') {
      if (open.empty() || "/" + open.back() != name) return page.substr(at, 80);
      open.pop_back();
    } else if (tag.back() != '/' && name != "meta" && name != "input" && name != "!DOCTYPE") {
      open.push_back(name);
    }
  }
  return open.empty() ? "" : open.back();
}

size_t CountOf(const std::string& page, const std::string& part) {
  size_t count = 0;
  for (size_t at = page.find(part); at != std::string::npos; at = page.find(part, at + 1)) ++count;
  return count;
}

TEST(Markup, WhatAPageMayNotHold) {
  std::string page;
  AppendMarkup(page, "<a b=\"c\">&amp;\t\n\x01\x7F\xC2\x81\xC2\xA0\xC3\xA9\xFE'");
  EXPECT_EQ(page,
            "&lt;a b=&quot;c&quot;&gt;&amp;amp;  "
            "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\xC2\xA0\xC3\xA9\xEF\xBF\xBD'");
  Drawing drawing{.width = 10, .height = 5, .title = "\"<", .shapes = {}};
  drawing.shapes.push_back({.paint = Paint::kFec,
                            .index = 3,
                            .faulty = true,
                            .x = -0.5,
                            .y = 1.25,
                            .width = 2,
                            .height = 1.999,
                            .text = "<&"});
  drawing.shapes.push_back(LineShape(Paint::kEdge, 4, 3, 2, 1.07));
  drawing.shapes.push_back(TextShape(1, 2, TextPlace::kUpwards, "a<"));
  page.clear();
  AppendSvg(page, drawing);
  EXPECT_EQ(
      page,
      "<svg role=\"img\" viewBox=\"0 0 10 5\" aria-label=\"&quot;&lt;\">\n"
      "<rect class=\"f3\" x=\"-0.5\" y=\"1.25\" width=\"2\" height=\"2\"><title>&lt;&amp;</title></rect>"
      "<rect class=\"x\" x=\"-0.5\" y=\"1.25\" width=\"2\" height=\"2\"/>\n"
      "<line class=\"e\" x1=\"4\" y1=\"3\" x2=\"2\" y2=\"1.07\"/>\n"
      "<text x=\"1\" y=\"2\" transform=\"rotate(-90 1 2)\">a&lt;</text>\n</svg>\n");
}

TEST_F(Pictures, ThePageHoldsEverythingEscaped) {
  Carrier* carrier = Add(11000, 27500);
  Service* service = AddTestService(database, carrier);
  SetName(satellite.record.name, "<b>&");
  SetName(service->record.name, "</td><script>");
  database.favourites[2].tv = {service};
  SetName(database.favourites[2].record.tv_name, "\"\xE9");
  document.sdbs[0].name = "<S>";
  database.satellites[0]->record.angle = 4000;
  AppendSdb(document, "");
  const std::string page = ReportPage(document, 0, *FindCodePage("ISO 8859-5"));
  EXPECT_EQ(Unbalanced(page), "");
  EXPECT_EQ(CountOf(page, "<b>") + CountOf(page, "</td><script") + CountOf(page, "<S>"), 0u);
  EXPECT_EQ(CountOf(page, "&lt;/td&gt;&lt;script&gt;"), 2u);  // its row, and its favourite entry
  EXPECT_EQ(CountOf(page, "<td>&quot;\xD1\x89</td>"), 1u);
  EXPECT_EQ(CountOf(page, "<script"), 1u);
  EXPECT_EQ(CountOf(page, "http"), CountOf(page, "http-equiv"));
  EXPECT_EQ(CountOf(page, "<figure"), 2u);
  EXPECT_EQ(CountOf(page, "&lt;S&gt; satellite 1: "), 1u);
  EXPECT_EQ(CountOf(ReportPage(document, 1, Windows1252()), "&lt;S&gt;"), 0u);
}

TEST(ReportPages, OfAnyDatabase) {
  std::mt19937 random(11);
  for (int i = 0; i < 30; ++i) {
    RandomShape shape = MakeRandomShape(random);
    shape.any_bits = shape.long_names = true;
    Document document = NewDocument();
    document.sdbs[0].database = MakeRandomDatabase(random, shape);
    const std::string page = ReportPage(document, 0, Windows1252());
    EXPECT_EQ(Unbalanced(page), "");
    EXPECT_TRUE(IsUtf8(page));
    const StaticDatabase& database = *document.sdbs[0].database;
    size_t entries = 0;
    for (const FavouriteGroup& group : database.favourites) entries += group.tv.size() + group.radio.size();
    EXPECT_EQ(CountOf(page, "<tr><td>"),
              database.satellites.size() + database.carriers.size() + database.services.size() + entries);
    EXPECT_EQ(CountOf(page, "nan") + CountOf(page, "inf\""), 0u);
  }
}

}  // namespace
}  // namespace vexa
