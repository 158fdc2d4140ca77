// Settings in a key of the test's own, so that they outlive the program; gone with the object.
#pragma once

#include <string>

#include "config/settings.h"
#include "core/messages.h"
#include "ui/controls/windows_api.h"

namespace vexa {

struct TestKey {
  const std::wstring name = L"test-" + std::to_wstring(GetCurrentProcessId());
  const std::wstring root = L"Software\\VexaEditorTests\\" + name, mode = L"--test-mode=" + name;
  TestKey() { Remove(); }
  ~TestKey() { Remove(); }
  TestKey(const TestKey&) = delete;
  TestKey& operator=(const TestKey&) = delete;

  void Remove() const {
    RegDeleteTreeW(HKEY_CURRENT_USER, root.c_str());
    RegDeleteKeyW(HKEY_CURRENT_USER, root.c_str());
  }
  std::wstring Of(const char* subkey) const { return root + L"\\" + Wide(SettingsKey(subkey)); }
  std::string Value(const char* subkey, const char* value) const {
    wchar_t text[256] = L"";
    DWORD size = sizeof text;
    RegGetValueW(HKEY_CURRENT_USER, Of(subkey).c_str(), Wide(value).c_str(), RRF_RT_REG_SZ, nullptr, text,
                 &size);
    return Utf8(text);
  }
  void Set(const char* subkey, const wchar_t* value, const std::wstring& text) const {
    RegSetKeyValueW(HKEY_CURRENT_USER, Of(subkey).c_str(), value, REG_SZ, text.c_str(),
                    static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
  }
};

}  // namespace vexa
