// Where a satellite stands in the sky, from a place on the ground. The earth is taken as a sphere of 6378.137
// km, the satellites as standing 42164.17 km from its centre over the equator: the difference to the real
// earth is below 0.2 degrees.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "config/settings.h"
#include "view/refusal.h"

namespace vexa {

// Degrees: north and east positive.
struct Place {
  double latitude = 0, longitude = 0;

  bool operator==(const Place&) const = default;
};

// Degrees.
struct LookAngle {
  double azimuth = 0;    // from north over east, 0 to 360
  double elevation = 0;  // above the horizon; negative: not to be seen
  double skew = 0;       // of the LNB, clockwise as seen from behind the dish towards the satellite
};

// `position`: tenths of a degree, West negative, as OrbitPlace has it. Straight overhead azimuth and skew are
// 0.
LookAngle LookAngleOf(const Place& place, int position);

// "azimuth 154.6, elevation 28.2, skew -15.1", each with the sign of degrees; "below the horizon".
std::string LookAngleText(const LookAngle& angle);

// A latitude or longitude as people write it: "51.5", "-0.13", "51.5N", "0.13 W". Nothing: no such number, or
// beyond `most` degrees (90 for latitudes, 180 for longitudes). `positive` and `negative` are the letters.
std::optional<double> DegreesFromText(std::string_view text, double most, char positive, char negative);
// "51.5 N"; at most four decimals.
std::string TextOfDegrees(double degrees, char positive, char negative);

// "51.5,-0.13": latitude and longitude. Nothing: no such place.
std::optional<Place> PlaceFromText(std::string_view text);

// The place of two fields; both empty: none is known. A refusal names the field, kLatitudeField or
// kLongitudeField.
enum PlaceField { kLatitudeField, kLongitudeField };
std::optional<Refusal> PlaceFromFields(std::string_view latitude, std::string_view longitude,
                                       std::optional<Place>& place);

// Where the user is; nothing while it is not known.
std::optional<Place> LoadPlace(const SettingsStore& store);
void SavePlace(const SettingsStore& store, const std::optional<Place>& place);

}  // namespace vexa
