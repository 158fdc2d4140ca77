#include "view/orbit.h"

#include <algorithm>
#include <cmath>

#include "core/field_texts.h"
#include "core/match.h"
#include "core/messages.h"

namespace vexa {

namespace {

constexpr double kOrbitWidth = 1000, kOrbitHeight = 335, kLeft = 40, kRight = 960;
constexpr double kArcTop = 220, kArcDepth = 50;     // its highest point, and how far its ends lie below
constexpr double kNamesFoot = 190, kNameStep = 13;  // the least distance of two names
constexpr double kLeastDisc = 3, kDiscGrowth = 8, kLeastRing = 1, kRingGrowth = 3;
constexpr int kStep = 100, kLeastSpan = 600;  // tenths of a degree

int FloorTo(int value, int step) {
  return (value >= 0 ? value : value - step + 1) / step * step;
}

class OrbitPainter {
 public:
  OrbitPainter(const StaticDatabase& database, const CodePage& page, const std::optional<Place>& place)
      : page_(page), from_(place), places_(OrbitPlaces(database)) {
    drawing_.width = kOrbitWidth;
    drawing_.height = kOrbitHeight;
    drawing_.title = Format("Satellites from West to East: %zu", places_.size());
    if (places_.empty()) return;
    low_ = FloorTo(places_.front().position, kStep);
    high_ = -FloorTo(-places_.back().position, kStep);
    // Wide enough, and around the same middle.
    for (bool left = true; high_ - low_ < kLeastSpan; left = !left)
      (left ? low_ : high_) += left ? -kStep : kStep;
    for (const OrbitPlace& place : places_) {
      most_services_ = std::max(most_services_, place.services);
      most_carriers_ = std::max(most_carriers_, place.satellite->carriers.size());
    }
  }

  Drawing Draw() {
    AddArc();
    const std::vector<double> names = NamePlaces();
    for (size_t i = 0; i < places_.size(); ++i) AddName(places_[i], names[i]);
    // Small ones lie above large ones, so that a pointer reaches them.
    std::vector<const OrbitPlace*> order;
    for (const OrbitPlace& place : places_) order.push_back(&place);
    std::stable_sort(order.begin(), order.end(),
                     [](const OrbitPlace* a, const OrbitPlace* b) { return a->services > b->services; });
    for (const OrbitPlace* place : order) AddDisc(*place);
    return std::move(drawing_);
  }

 private:
  double XOf(int position) const {
    return kLeft + (kRight - kLeft) * (position - low_) / static_cast<double>(high_ - low_);
  }
  static double YOf(double x) {
    const double side = (x - (kLeft + kRight) / 2) / ((kRight - kLeft) / 2);
    return kArcTop + kArcDepth * side * side;
  }

  void AddArc() {
    if (places_.empty()) return;
    for (int position = low_; position < high_; position += kStep / 4) {
      const double x1 = XOf(position), x2 = XOf(position + kStep / 4);
      drawing_.shapes.push_back(LineShape(Paint::kPlain, x1, YOf(x1), x2, YOf(x2)));
    }
    // At most about 20 marks.
    const int step = high_ - low_ > 18 * kStep ? 3 * kStep : kStep;
    for (int position = -FloorTo(-low_, step); position <= high_; position += step) {
      const double x = XOf(position), y = YOf(x);
      drawing_.shapes.push_back(LineShape(Paint::kFaint, x, y, x, y + 28));
      const char* side = position == 0 ? "" : position < 0 ? "W" : "E";
      const std::string text = std::to_string(std::abs(position) / 10) + "\xC2\xB0" + side;
      drawing_.shapes.push_back(TextShape(x, y + 40, TextPlace::kMiddle, text));
    }
  }

  // Each name above its satellite, moved aside as far as its neighbours ask.
  std::vector<double> NamePlaces() const {
    std::vector<double> places;
    const double count = static_cast<double>(places_.size());
    const double step = std::min(kNameStep, (kRight - kLeft + 40) / std::max(1.0, count));
    for (const OrbitPlace& place : places_) {
      const double x = XOf(place.position);
      places.push_back(places.empty() ? x : std::max(x, places.back() + step));
    }
    double right = kRight + 30;
    for (size_t i = places.size(); i-- > 0; right = places[i] - step) places[i] = std::min(places[i], right);
    return places;
  }

  std::string NameOfPlace(const OrbitPlace& place) const {
    const SatelliteRecord& record = place.satellite->record;
    return Utf8FromPage(page_, NameOf(record.name)) + " " + AngleText(record.angle) + "\xC2\xB0" +
           (record.east ? "E" : "W");
  }

  std::optional<LookAngle> AngleOf(const OrbitPlace& place) const {
    return from_ ? std::optional(LookAngleOf(*from_, place.position)) : std::nullopt;
  }

  void AddName(const OrbitPlace& place, double name) {
    const double x = XOf(place.position);
    drawing_.shapes.push_back(LineShape(Paint::kFaint, x, YOf(x), name, kNamesFoot + 3));
    drawing_.shapes.push_back(TextShape(name + 3, kNamesFoot, TextPlace::kUpwards, NameOfPlace(place)));
  }

  void AddDisc(const OrbitPlace& place) {
    const size_t carriers = place.satellite->carriers.size();
    const double disc = kLeastDisc + kDiscGrowth * std::sqrt(static_cast<double>(place.services) /
                                                             static_cast<double>(most_services_));
    const double ring =
        kLeastRing + kRingGrowth * static_cast<double>(carriers) / static_cast<double>(most_carriers_);
    const double x = XOf(place.position);
    const uint32_t lnb = place.satellite->record.lnb_index;
    Shape shape{.kind = ShapeKind::kDisc,
                .paint = Paint::kPlain,
                .x = x,
                .y = YOf(x),
                .width = disc + ring,
                .text = NameOfPlace(place) +
                        Format(", LNB%u, %zu carriers, %zu services", lnb + 1, carriers, place.services),
                .item = place.item};
    const std::optional<LookAngle> angle = AngleOf(place);
    if (angle) shape.text += ", " + LookAngleText(*angle);
    drawing_.shapes.push_back(shape);
    shape.paint = angle && angle->elevation < 0 ? Paint::kBeneath : Paint::kLnb;
    shape.index = static_cast<uint8_t>(lnb % kMaximumLnbs);
    shape.width = disc;
    drawing_.shapes.push_back(std::move(shape));
  }

  const CodePage& page_;
  const std::optional<Place> from_;
  const std::vector<OrbitPlace> places_;
  int low_ = 0, high_ = kLeastSpan;  // tenths of a degree
  size_t most_services_ = 1, most_carriers_ = 1;
  Drawing drawing_;
};

}  // namespace

int OrbitalPositionOf(const Satellite& satellite) {
  const int angle = static_cast<int>(satellite.record.angle);
  return satellite.record.east ? angle : -angle;
}

std::vector<OrbitPlace> OrbitPlaces(const StaticDatabase& database) {
  std::vector<OrbitPlace> places;
  for (size_t i = 0; i < database.satellites.size(); ++i) {
    const Satellite* satellite = database.satellites[i];
    if (IsUnusedPlace(*satellite)) continue;
    OrbitPlace place{satellite, OrbitalPositionOf(*satellite), 0, i};
    for (const Carrier* carrier : satellite->carriers) place.services += carrier->services.size();
    places.push_back(place);
  }
  std::stable_sort(places.begin(), places.end(),
                   [](const OrbitPlace& a, const OrbitPlace& b) { return a.position < b.position; });
  return places;
}

Drawing Orbit(const StaticDatabase& database, const CodePage& page, const std::optional<Place>& place) {
  return OrbitPainter(database, page, place).Draw();
}

}  // namespace vexa
