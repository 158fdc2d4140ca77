#include "import/channel_collector.h"

#include "import/list_text.h"

namespace vexa {

std::string PositionName(const OrbitalPosition& position) {
  return std::to_string(position.tenths / 10) + '.' + std::to_string(position.tenths % 10) +
         (position.east ? 'E' : 'W');
}

std::optional<OrbitalPosition> ParsePosition(std::string_view text) {
  if (text.empty()) return std::nullopt;
  const char side = text.back();
  if (std::string_view("EeWw").find(side) == std::string_view::npos) return std::nullopt;
  text.remove_suffix(1);
  const size_t point = text.find('.');
  const auto degrees = WholeNumber(text.substr(0, point));
  if (!degrees || *degrees > 180) return std::nullopt;
  uint32_t tenths = *degrees * 10;
  if (point != std::string_view::npos && point + 1 < text.size()) {
    const std::string_view decimals = text.substr(point + 1);
    if (decimals.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
    tenths += static_cast<uint32_t>(decimals.front() - '0');
  }
  if (tenths > 1800) return std::nullopt;
  return OrbitalPosition{tenths, tenths == 0 || side == 'E' || side == 'e'};
}

ChannelCollector::ChannelCollector(const DefaultRecords& defaults, const ListPages& pages, bool keep_s2,
                                   ListLosses& losses)
    : defaults_(defaults), page_(DatabasePage(pages)), keep_s2_(keep_s2), losses_(losses) {
  losses_.page = page_.name;
}

std::optional<size_t> ChannelCollector::AddCarrier(const ListedCarrier& carrier) {
  const OrbitalPosition& position = carrier.position;
  if (carrier.system == DeliverySystem::kDvbS2 && !keep_s2_) {
    const S2Carrier key = {position.tenths, position.east, carrier.frequency, carrier.symbol_rate,
                           carrier.polarization};
    if (s2_left_out_.insert(key).second) ++losses_.s2_carriers;
    return std::nullopt;
  }
  size_t lacking = 0;
  WorkSatellite satellite = NewWorkSatellite(defaults_);
  satellite.angle = position.tenths & 0xFFF;
  satellite.east = position.east;
  SetListName(satellite.name, PageFromUtf8(page_, carrier.satellite, lacking));
  WorkCarrier record = NewWorkCarrier(defaults_);
  record.frequency = carrier.frequency;
  record.symbol_rate = carrier.symbol_rate & 0xFFFFFF;
  record.polarization = carrier.polarization & 3;
  record.fec = carrier.fec & 7;
  const size_t satellites = gatherer_.satellites();
  const size_t place = gatherer_.AddCarrier(satellite, record);
  if (gatherer_.satellites() != satellites) losses_.lacking += lacking;
  return place;
}

void ChannelCollector::LeaveOut(const std::string& carrier) {
  if (others_left_out_.insert(carrier).second) ++losses_.other_carriers;
}

void ChannelCollector::AddService(size_t carrier, const ListedService& service) {
  if (service.type != kTv && service.type != kRadio) {
    ++losses_.other_services;
    return;
  }
  size_t lacking = 0;
  WorkService record = NewWorkService(defaults_);
  SetListName(record.name, PageFromUtf8(page_, service.name, lacking));
  record.program_number = service.program_number & 0xFFFF;
  record.type = service.type & 3;
  record.free = service.free;
  record.video_pid = service.video_pid & 0x3FFF;
  record.audio_pid = service.audio_pid & 0x3FFF;
  record.pcr_pid = service.pcr_pid & 0x3FFF;
  if (gatherer_.AddService(carrier, record, service.name)) losses_.lacking += lacking;
}

}  // namespace vexa
