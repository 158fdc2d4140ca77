// Where settings are kept between runs: named keys that hold named strings. The registry of the
// current user on Windows; elsewhere an INI file (section = key) in the user's configuration folder.
// All failures are silent for the caller: a value that cannot be read is absent, one that cannot be
// written is lost.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vexa {

// What opening a key gave. Keys are always opened by create-or-open.
enum class KeyState { kCreated, kExisted, kUnavailable };

struct SettingsStore {
  std::function<KeyState(const std::string& key)> open;  // creates the key when it is not there
  std::function<std::optional<std::string>(const std::string& key, const std::string& name)> read;
  std::function<void(const std::string& key, const std::string& name, const std::string& value)> write;
};

// The system's own store. Keys are relative to HKEY_CURRENT_USER and use '\\' between levels.
SettingsStore SystemSettingsStore();
// A store that forgets at the end of the program: tests and the test mode of the editor.
SettingsStore MemorySettingsStore();

}  // namespace vexa
