#include "view/look_angle.h"

#include <charconv>
#include <cmath>

#include "core/messages.h"
#include "platform/text.h"

namespace vexa {

namespace {

constexpr double kEarthRadius = 6378.137, kOrbitRadius = 42164.17;  // km
constexpr double kDegree = 3.14159265358979323846 / 180;            // in radians

}  // namespace

LookAngle LookAngleOf(const Place& place, int position) {
  const double latitude = place.latitude * kDegree;
  const double aside = (position / 10.0 - place.longitude) * kDegree;
  // From the place to the satellite, in km.
  const double east = kOrbitRadius * std::sin(aside);
  const double north = -kOrbitRadius * std::cos(aside) * std::sin(latitude);
  const double up = kOrbitRadius * std::cos(aside) * std::cos(latitude) - kEarthRadius;
  const double flat = std::hypot(east, north);
  LookAngle angle;
  angle.elevation = std::atan2(up, flat) / kDegree;
  if (flat < 1e-6) return angle;
  angle.azimuth = std::atan2(east, north) / kDegree;
  if (angle.azimuth < 0) angle.azimuth += 360;
  angle.skew = -std::atan(std::sin(aside) / std::tan(latitude)) / kDegree;
  return angle;
}

std::string LookAngleText(const LookAngle& angle) {
  if (angle.elevation < 0) return "below the horizon";
  return Format("azimuth %.1f\xC2\xB0, elevation %.1f\xC2\xB0, skew %.1f\xC2\xB0", angle.azimuth,
                angle.elevation, angle.skew);
}

std::optional<double> DegreesFromText(std::string_view text, double most, char positive, char negative) {
  text = Trimmed(text);
  double sign = 1;
  if (!text.empty()) {
    const char letter =
        text.back() >= 'a' && text.back() <= 'z' ? static_cast<char>(text.back() - 32) : text.back();
    if (letter == positive || letter == negative) {
      sign = letter == negative ? -1 : 1;
      text.remove_suffix(1);
      text = Trimmed(text);
      if (text.starts_with('-')) return std::nullopt;
    }
  }
  double degrees = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), degrees, std::chars_format::fixed);
  if (error != std::errc() || end != text.data() + text.size() || !(std::abs(degrees) <= most))
    return std::nullopt;
  return sign * degrees;
}

std::string TextOfDegrees(double degrees, char positive, char negative) {
  std::string text = Format("%.4f", std::abs(degrees));
  while (text.back() == '0') text.pop_back();
  if (text.back() == '.') text.pop_back();
  return text + ' ' + (degrees < 0 ? negative : positive);
}

std::optional<Place> PlaceFromText(std::string_view text) {
  const size_t comma = text.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  const auto latitude = DegreesFromText(text.substr(0, comma), 90, 'N', 'S');
  const auto longitude = DegreesFromText(text.substr(comma + 1), 180, 'E', 'W');
  if (!latitude || !longitude) return std::nullopt;
  return Place{*latitude, *longitude};
}

std::optional<Refusal> PlaceFromFields(std::string_view latitude, std::string_view longitude,
                                       std::optional<Place>& place) {
  place.reset();
  if (Trimmed(latitude).empty() && Trimmed(longitude).empty()) return std::nullopt;
  const auto north = DegreesFromText(latitude, 90, 'N', 'S');
  if (!north)
    return Refusal{"The latitude is a number of degrees up to 90, such as 51.5 N.", Icon::kStop,
                   kLatitudeField};
  const auto east = DegreesFromText(longitude, 180, 'E', 'W');
  if (!east)
    return Refusal{"The longitude is a number of degrees up to 180, such as 0.13 W.", Icon::kStop,
                   kLongitudeField};
  place = Place{*north, *east};
  return std::nullopt;
}

std::optional<Place> LoadPlace(const SettingsStore& store) {
  const PlaceSettings place = LoadPlaceSettings(store);
  return PlaceFromText(place.latitude + "," + place.longitude);
}

void SavePlace(const SettingsStore& store, const std::optional<Place>& place) {
  if (!place) return SavePlaceSettings(store, {});
  SavePlaceSettings(store,
                    {TextOfDegrees(place->latitude, 'N', 'S'), TextOfDegrees(place->longitude, 'E', 'W')});
}

}  // namespace vexa
