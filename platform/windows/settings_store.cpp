#include "platform/settings_store.h"

#include <windows.h>

#include "platform/windows/wide.h"

namespace vexa {

namespace {

struct Key {
  HKEY handle = nullptr;
  DWORD disposition = 0;
  explicit Key(const std::string& name, REGSAM access) {
    if (RegCreateKeyExW(HKEY_CURRENT_USER, Wide(name).c_str(), 0, nullptr, 0, access, nullptr, &handle,
                        &disposition) != ERROR_SUCCESS) {
      handle = nullptr;
    }
  }
  ~Key() {
    if (handle) RegCloseKey(handle);
  }
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
};

std::optional<std::string> ReadValue(const std::string& key, const std::string& name) {
  std::wstring value(32768, L'\0');
  DWORD size = static_cast<DWORD>(value.size() * sizeof(wchar_t));
  if (RegGetValueW(HKEY_CURRENT_USER, Wide(key).c_str(), Wide(name).c_str(), RRF_RT_REG_SZ, nullptr,
                   value.data(), &size) != ERROR_SUCCESS) {
    return std::nullopt;
  }
  value.resize(wcslen(value.c_str()));
  return Utf8(value);
}

void WriteValue(const std::string& key, const std::string& name, const std::string& value) {
  const Key opened(key, KEY_SET_VALUE);
  if (!opened.handle) return;
  const std::wstring text = Wide(value);
  RegSetValueExW(opened.handle, Wide(name).c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                 static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

}  // namespace

SettingsStore SystemSettingsStore() {
  SettingsStore store;
  store.open = [](const std::string& key) {
    const Key opened(key, KEY_READ | KEY_WRITE);
    if (!opened.handle) return KeyState::kUnavailable;
    return opened.disposition == REG_CREATED_NEW_KEY ? KeyState::kCreated : KeyState::kExisted;
  };
  store.read = ReadValue;
  store.write = WriteValue;
  return store;
}

}  // namespace vexa
