#include "view/picture.h"

#include <gmock/gmock.h>

#include "core/bin_file.h"
#include "tests/image/image_maker.h"
#include "tests/support/random_database.h"
#include "view/room.h"

namespace vexa {
namespace {

// Against spherical trigonometry: elevation from the angle at the earth's centre, azimuth from the great
// circle to the point below the satellite.
TEST(LookAngles, OfPlacesAndSatellites) {
  const struct {
    Place place;
    int position;
    double azimuth, elevation, skew;
  } rows[] = {{{51.5, -0.13}, 282, 145.44, 25.37, -20.68},
              {{51.5, -0.13}, -300, 216.27, 24.78, 21.61},
              {{-33.9, 151.2}, 1560, 8.56, 50.25, 7.10},
              {{-33.9, 18.4}, 685, 65.00, 24.24, 48.78},
              {{40, 0}, 0, 180, 43.72, 0},
              {{40, -100}, 600, 29.52, -51.45, -22.18},
              {{0, 10}, 400, 90, 55.03, -90},
              {{0, 20}, 200, 0, 90, 0}};
  for (const auto& row : rows) {
    const LookAngle angle = LookAngleOf(row.place, row.position);
    EXPECT_NEAR(angle.azimuth, row.azimuth, 0.01) << row.position;
    EXPECT_NEAR(angle.elevation, row.elevation, 0.01) << row.position;
    EXPECT_NEAR(angle.skew, row.skew, 0.01) << row.position;
  }
}

TEST(LookAngles, PlacesAsPeopleWriteThem) {
  const struct {
    const char* text;
    std::optional<double> latitude, longitude;
  } rows[] = {{"51.5,-0.13", 51.5, -0.13},
              {" 33.9 s , 18.4E ", -33.9, 18.4},
              {"90,180", 90, 180},
              {"-90N,0", {}, {}},
              {"90.1,0", {}, {}},
              {"0,180.5", {}, {}},
              {"1", {}, {}},
              {"1,", {}, {}},
              {"1E,1N", {}, {}},
              {"nan,0", {}, {}},
              {"1e1,0", {}, {}},
              {"1,2,3", {}, {}},
              {"5,0.00001 W", 5.0, -0.00001}};
  const SettingsStore store = MemorySettingsStore();
  EXPECT_FALSE(LoadPlace(store));
  for (const auto& row : rows) {
    const auto place = PlaceFromText(row.text);
    ASSERT_EQ(place.has_value(), row.latitude.has_value()) << row.text;
    if (!place) continue;
    EXPECT_DOUBLE_EQ(place->latitude, *row.latitude) << row.text;
    EXPECT_DOUBLE_EQ(place->longitude, *row.longitude) << row.text;
    SavePlace(store, place);
    const auto loaded = LoadPlace(store);
    ASSERT_TRUE(loaded) << row.text;
    EXPECT_NEAR(loaded->latitude, place->latitude, 0.0001) << row.text;
    EXPECT_NEAR(loaded->longitude, place->longitude, 0.0001) << row.text;
  }
  EXPECT_EQ(store.read(SettingsKey(kPlaceKey), "Latitude"), "5 N");
  EXPECT_EQ(store.read(SettingsKey(kPlaceKey), "Longitude"), "0 W");
  SavePlace(store, {});
  EXPECT_FALSE(LoadPlace(store));
  std::optional<Place> place = Place{};
  EXPECT_FALSE(PlaceFromFields(" ", "", place));
  EXPECT_FALSE(place);
  EXPECT_EQ(PlaceFromFields("", "1", place)->field, kLatitudeField);
  EXPECT_EQ(PlaceFromFields("1", "", place)->field, kLongitudeField);
  EXPECT_FALSE(PlaceFromFields("1 S", "2", place));
  EXPECT_EQ(place->latitude, -1);
}

struct PictureTest : testing::Test {
  PictureTest() {
    for (const uint32_t frequency : {12000u, 10900u, 11500u}) {
      Carrier* carrier = AddTestCarrier(database, 0);
      carrier->record.frequency = frequency;
      carrier->record.symbol_rate = 20000;
    }
    satellite.record.angle = 192;
    satellite.record.east = 1;
    AddTestSatellite(database, "West")->record.angle = 300;
    AddTestSatellite(database, "NewSat 3");
    node = {.kind = NodeKind::kSatellite, .satellite = &satellite};
  }
  void Show(const NodeRef& tree, const NodeRef& record) {
    ShowPicture(picture, document, tree, record, {Windows1252(), place, beneath});
  }
  const Shape& ShapeOf(size_t item) {
    const Shape* last = nullptr;
    for (const Shape& shape : picture.drawing.shapes)
      if (shape.item == item) last = &shape;
    return *last;
  }

  Document document = NewDocument();
  StaticDatabase& database = *document.sdbs[0].database;
  Satellite& satellite = *AddTestSatellite(database, "East");
  NodeRef node;
  Picture picture;
  std::optional<Place> place;
  const StaticDatabase* beneath = nullptr;
};

TEST_F(PictureTest, FollowsTheSelection) {
  const size_t east = database.satellites.size() - 3;
  Show({.kind = NodeKind::kSdb}, node);
  EXPECT_EQ(picture.kind, PictureKind::kOrbit);
  EXPECT_EQ(picture.selected, east);
  const Shape& disc = ShapeOf(east);
  EXPECT_EQ(ShapeAt(picture.drawing, disc.x + 1, disc.y - 1, 2)->item, east);
  EXPECT_EQ(ShapeAt(picture.drawing, 1, 1, 2), nullptr);
  EXPECT_EQ(NodeOfItem(picture, document, east).satellite, &satellite);
  EXPECT_EQ(NeighbourItem(picture, -1), east + 1);  // West lies left of it
  EXPECT_EQ(NeighbourItem(picture, 1), kNoItem);
  NodeRef carrier = {.kind = NodeKind::kCarrier, .index = 1, .satellite = &satellite};
  carrier.carrier = satellite.carriers[1];
  Show(node, carrier);
  EXPECT_EQ(picture.kind, PictureKind::kPlan);
  EXPECT_EQ(picture.selected, 1u);
  EXPECT_EQ(NodeOfItem(picture, document, 2).carrier, satellite.carriers[2]);
  EXPECT_EQ(NodeOfItem(picture, document, 3).kind, NodeKind::kNone);
  EXPECT_EQ(NeighbourItem(picture, 1), 2u);
  EXPECT_EQ(NeighbourItem(picture, -1), kNoItem);
  SelectInPicture(picture, document, node);
  EXPECT_EQ(NeighbourItem(picture, 1), 1u);
  EXPECT_EQ(NeighbourItem(picture, -1), 0u);
  const Shape& block = ShapeOf(0);
  EXPECT_EQ(ShapeAt(picture.drawing, block.x - 1, block.y + 1, 2)->item, 0u);
  Show({.kind = NodeKind::kUbiLevel}, {});
  EXPECT_EQ(picture.kind, PictureKind::kNone);
  EXPECT_TRUE(picture.drawing.shapes.empty());
}

TEST_F(PictureTest, ZoomsIntoAPlanAndOutAgain) {
  Show(node, node);
  const PlanPanel whole = picture.panels.at(0);
  const auto at = [&](double mhz) {
    return kPlanLeft + (mhz - whole.low) / (whole.high - whole.low) * (kPlanRight - kPlanLeft);
  };
  EXPECT_FALSE(ZoomBy(picture, 2, 500, 1));
  EXPECT_FALSE(ZoomBetween(picture, whole.foot + 1, 100, 200));
  ASSERT_TRUE(ZoomBetween(picture, whole.top + 1, at(11600), at(10800)));
  EXPECT_EQ(picture.range->lowest, 10800u);
  EXPECT_EQ(picture.range->highest, 11600u);
  Show(node, node);
  std::vector<size_t> items;
  for (const Shape& shape : picture.drawing.shapes)
    if (shape.item != kNoItem) items.push_back(shape.item);
  EXPECT_THAT(items, testing::ElementsAre(1, 2));
  EXPECT_NEAR(ShapeOf(1).x + ShapeOf(1).width / 2, kPlanLeft + 100.0 / 800 * (kPlanRight - kPlanLeft), 1e-6);
  ASSERT_TRUE(ZoomBy(picture, 0.5, (kPlanLeft + kPlanRight) / 2, 1));
  EXPECT_EQ(picture.range->lowest, 11000u);
  EXPECT_EQ(picture.range->highest, 11400u);
  Show(node, node);
  for (int i = 0; i < 20 && ZoomBy(picture, 0.5, kPlanRight, 1); ++i) Show(node, node);
  EXPECT_EQ(picture.range->highest, 11400u);
  EXPECT_EQ(picture.range->highest - picture.range->lowest, kLeastRange);
  for (int i = 0; i < 20 && picture.range; ++i) {
    ZoomBy(picture, 2, kPlanLeft, 1);
    Show(node, node);
  }
  EXPECT_FALSE(picture.range);
  // Each panel zooms its own band.
  satellite.carriers[0]->record.frequency = 3600;
  Show(node, node);
  ASSERT_EQ(picture.panels.size(), 2u);
  ASSERT_TRUE(ZoomBy(picture, 0.5, 500, picture.panels[1].top + 1));
  EXPECT_GT(picture.range->lowest, 10000u);
  ZoomBetween(picture, 1, 0, 1000);
  Show({.kind = NodeKind::kSdb}, node);
  EXPECT_FALSE(picture.range);
}

TEST_F(PictureTest, AnotherDatabaseLiesBeneath) {
  Document other = NewDocument();
  Satellite* same = AddTestSatellite(*other.sdbs[0].database, "Else");
  same->record.angle = 192;
  same->record.east = 1;
  AddTestCarrier(*other.sdbs[0].database, other.sdbs[0].database->satellites.size() - 1)->record.frequency =
      11000;
  beneath = other.sdbs[0].database.get();
  Show(node, node);
  size_t faint = 0;
  for (const Shape& shape : picture.drawing.shapes) faint += shape.paint == Paint::kBeneath ? 1 : 0;
  EXPECT_EQ(faint, 1u);
  EXPECT_THAT(picture.drawing.shapes,
              testing::Contains(testing::Field(&Shape::text, testing::StartsWith("Other database: "))));
  same->record.east = 0;
  Show(node, node);
  for (const Shape& shape : picture.drawing.shapes) EXPECT_NE(shape.paint, Paint::kBeneath);
}

TEST_F(PictureTest, APlaceTellsWhereToLook) {
  place = Place{51.5, -100};
  Show({.kind = NodeKind::kSdb}, {});
  const size_t east = database.satellites.size() - 3;
  EXPECT_EQ(ShapeOf(east).paint, Paint::kBeneath);
  EXPECT_THAT(ShapeOf(east).text, testing::EndsWith(", below the horizon"));
  EXPECT_EQ(ShapeOf(east + 1).paint, Paint::kLnb);
  EXPECT_THAT(ShapeOf(east + 1).text, testing::HasSubstr(", azimuth 1"));
}

TEST(Rooms, TheFullestTableComesFirst) {
  Document document = NewDocument();
  ProjectConfig config;
  EXPECT_EQ(RoomOf(document, 0, config, 0).text, "");
  const struct {
    uint64_t size;
    RoomLevel level;
    const char* text;
  } rows[] = {{kMaximumBinSize / 2, RoomLevel::kEnough, "Room: bytes of the database file 50 %"},
              {kMaximumBinSize * 9 / 10 + 1, RoomLevel::kNear, "Room: bytes of the database file 90 %"},
              {kMaximumBinSize, RoomLevel::kNear, "Room: bytes of the database file 100 %"},
              {kMaximumBinSize * 2, RoomLevel::kOver, "Room: bytes of the database file 200 %"}};
  for (const auto& row : rows) {
    const RoomLook look = RoomOf(document, 0, config, row.size);
    EXPECT_EQ(look.level, row.level) << row.size;
    EXPECT_EQ(look.text, row.text);
  }
  config = MakeImageConfig(0);
  StaticDatabase& database = *document.sdbs[0].database;
  AddTestSatellite(database, "One");
  AddTestService(database, AddTestCarrier(database, 0));
  const RoomLook look = RoomOf(document, 0, config, 1);
  EXPECT_THAT(look.lines, testing::HasSubstr("\ncarriers: 1 of "));
  EXPECT_THAT(look.lines, testing::Not(testing::HasSubstr("lnbs")));
  EXPECT_EQ(FileSizeWhenSaved(document), BuildBin({}, document)->size());
}

}  // namespace
}  // namespace vexa
