#include "platform/settings_store.h"

#include <windows.h>

#include "platform/windows/wide.h"

namespace vexa {

namespace {

std::error_code SystemError(LSTATUS status) {
  return {static_cast<int>(status), std::system_category()};
}

struct Key {
  HKEY handle = nullptr;
  DWORD disposition = 0;
  std::error_code error;  // when there is no handle
  explicit Key(const std::string& name, REGSAM access) {
    error = SystemError(RegCreateKeyExW(HKEY_CURRENT_USER, Wide(name).c_str(), 0, nullptr, 0, access, nullptr,
                                        &handle, &disposition));
    if (error) handle = nullptr;
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

Outcome WriteValue(const std::string& key, const std::string& name, const std::string& value) {
  const Key opened(key, KEY_SET_VALUE);
  if (!opened.handle) return opened.error;
  const std::wstring text = Wide(value);
  const auto* bytes = reinterpret_cast<const BYTE*>(text.c_str());
  const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
  const auto error = SystemError(RegSetValueExW(opened.handle, Wide(name).c_str(), 0, REG_SZ, bytes, size));
  return error ? Outcome(error) : Outcome();
}

}  // namespace

SettingsStore SystemSettingsStore() {
  SettingsStore store;
  store.place = "HKEY_CURRENT_USER";
  store.open = [](const std::string& key) -> OpenedKey {
    const Key opened(key, KEY_READ | KEY_WRITE);
    if (!opened.handle) return {KeyState::kUnavailable, opened.error};
    return opened.disposition == REG_CREATED_NEW_KEY ? KeyState::kCreated : KeyState::kExisted;
  };
  store.read = ReadValue;
  store.write = WriteValue;
  return store;
}

}  // namespace vexa
