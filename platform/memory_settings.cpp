#include <map>

#include "platform/settings_store.h"

namespace vexa {

SettingsStore MemorySettingsStore() {
  using Values = std::map<std::string, std::string>;
  const auto keys = std::make_shared<std::map<std::string, Values>>();
  SettingsStore store;
  store.open = [keys](const std::string& key) {
    return keys->try_emplace(key).second ? KeyState::kCreated : KeyState::kExisted;
  };
  store.read = [keys](const std::string& key, const std::string& name) -> std::optional<std::string> {
    const auto values = keys->find(key);
    if (values == keys->end()) return std::nullopt;
    const auto value = values->second.find(name);
    if (value == values->second.end()) return std::nullopt;
    return value->second;
  };
  store.write = [keys](const std::string& key, const std::string& name, const std::string& value) {
    const auto values = keys->find(key);
    if (values == keys->end()) return Outcome(std::make_error_code(std::errc::no_such_file_or_directory));
    values->second[name] = value;
    return Outcome();
  };
  return store;
}

}  // namespace vexa
