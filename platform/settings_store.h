// Where settings are kept between runs: named keys that hold named strings. The registry of the
// current user on Windows; elsewhere an INI file (section = key) in the user's configuration folder.
// Nothing is shown here. What cannot be opened or written answers with the system's error; a value that
// cannot be read counts as absent. A store that cannot be read is not written to: what it holds stays.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/system_error.h"

namespace vexa {

// What opening a key gave. Keys are always opened by create-or-open.
enum class KeyState { kCreated, kExisted, kUnavailable };
struct OpenedKey {
  KeyState state = KeyState::kUnavailable;
  std::error_code error;  // of kUnavailable

  OpenedKey(KeyState reached, std::error_code why = {}) : state(reached), error(why) {}
  operator KeyState() const { return state; }
};

struct SettingsStore {
  std::string place;  // a file, or a part of the registry; empty for one in memory
  std::function<OpenedKey(const std::string& key)> open;  // creates the key when it is not there
  std::function<std::optional<std::string>(const std::string& key, const std::string& name)> read;
  std::function<Outcome(const std::string& key, const std::string& name, const std::string& value)> write;
};

// The system's own store. Keys are relative to HKEY_CURRENT_USER and use '\\' between levels.
SettingsStore SystemSettingsStore();
// A store that forgets at the end of the program: tests and the test mode of the editor.
SettingsStore MemorySettingsStore();

}  // namespace vexa
