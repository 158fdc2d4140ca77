// Settings as an INI file: "[key]" sections with "name=value" lines; '%', line ends and '=' in names are
// escaped as %XX.
#include "platform/settings_store.h"

#include <cstdlib>
#include <map>

#include "platform/files.h"

namespace vexa {

namespace {

using Sections = std::map<std::string, std::map<std::string, std::string>>;

Path SettingsFile() {
  const char* configured = std::getenv("XDG_CONFIG_HOME");
  const char* home = std::getenv("HOME");
  Path folder = configured && *configured ? Path(configured) : Path(home ? home : ".") / ".config";
  return folder / "vexa-editor" / "settings.ini";
}

std::string Escape(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '%' || c == '\n' || c == '\r' || c == '=' || c == ']') {
      constexpr const char* kHex = "0123456789ABCDEF";
      escaped += {'%', kHex[static_cast<uint8_t>(c) >> 4], kHex[c & 15]};
    } else {
      escaped.push_back(c);
    }
  }
  return escaped;
}

std::string Unescape(const std::string& text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '%' && i + 2 < text.size()) {
      plain.push_back(static_cast<char>(std::strtol(text.substr(i + 1, 2).c_str(), nullptr, 16)));
      i += 2;
    } else {
      plain.push_back(text[i]);
    }
  }
  return plain;
}

// `why`: of a file that is there and cannot be read.
Sections ReadSections(const Path& file, std::error_code& why) {
  Sections sections;
  Bytes content;
  const ReadResult read = ReadWholeFile(file, content, 1 << 20);
  if (read != ReadResult::kDone && CauseOf(read.error) != Cause::kMissing) why = read.error;
  std::string section, line;
  const auto take = [&] {
    const size_t equals = line.find('=');
    if (line.size() > 1 && line.front() == '[' && line.back() == ']') {
      section = Unescape(line.substr(1, line.size() - 2));
      sections.try_emplace(section);
    } else if (equals != std::string::npos) {
      sections[section][Unescape(line.substr(0, equals))] = Unescape(line.substr(equals + 1));
    }
    line.clear();
  };
  for (const uint8_t byte : content) byte == '\n' ? take() : line.push_back(static_cast<char>(byte));
  take();
  return sections;
}

Outcome WriteSections(const Path& file, const Sections& sections) {
  std::error_code error;
  std::filesystem::create_directories(file.parent_path(), error);
  if (error) return error;
  std::string text;
  for (const auto& [section, values] : sections) {
    text += "[" + Escape(section) + "]\n";
    for (const auto& [name, value] : values) text += Escape(name) + "=" + Escape(value) + "\n";
  }
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  const WriteResult written = WriteWholeFile(file, {bytes, text.size()});
  return written == WriteResult::kDone ? Outcome() : Outcome(written.error);
}

}  // namespace

SettingsStore SystemSettingsStore() {
  const Path file = SettingsFile();
  SettingsStore store;
  store.place = Utf8FromPath(file);
  store.open = [file](const std::string& key) -> OpenedKey {
    std::error_code why;
    Sections sections = ReadSections(file, why);
    if (why) return {KeyState::kUnavailable, why};
    if (sections.contains(key)) return KeyState::kExisted;
    sections[key];
    const Outcome written = WriteSections(file, sections);
    return written ? OpenedKey(KeyState::kCreated) : OpenedKey(KeyState::kUnavailable, written.error);
  };
  store.read = [file](const std::string& key, const std::string& name) -> std::optional<std::string> {
    std::error_code why;
    const Sections sections = ReadSections(file, why);
    const auto values = sections.find(key);
    if (values == sections.end()) return std::nullopt;
    const auto value = values->second.find(name);
    if (value == values->second.end()) return std::nullopt;
    return value->second;
  };
  store.write = [file](const std::string& key, const std::string& name, const std::string& value) -> Outcome {
    std::error_code why;
    Sections sections = ReadSections(file, why);
    if (why) return why;
    sections[key][name] = value;
    return WriteSections(file, sections);
  };
  return store;
}

}  // namespace vexa
