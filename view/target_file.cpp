#include "view/target_file.h"

#include <system_error>

namespace vexa {

namespace {

namespace fs = std::filesystem;

// Lower case of the letters A-Z and, where a character is no byte, of the Latin-1, Greek and Cyrillic ones.
Path::value_type Lower(Path::value_type c) {
  const auto in = [c](unsigned first, unsigned last) {
    const auto code = static_cast<uint32_t>(c);
    return code >= first && code <= last;
  };
  unsigned distance = 0;
  if (in('A', 'Z')) distance = 32;
  if (sizeof c > 1) {
    if (in(0xC0, 0xDE) && !in(0xD7, 0xD7)) distance = 32;
    if (in(0x391, 0x3A9) || in(0x410, 0x42F)) distance = 32;
    if (in(0x400, 0x40F)) distance = 80;
  }
  return static_cast<Path::value_type>(static_cast<uint32_t>(c) + distance);
}

Path::string_type Folded(const Path& path) {
  std::error_code error;
  Path whole = fs::weakly_canonical(fs::absolute(path, error), error);
  if (error) whole = path.lexically_normal();
  auto text = whole.make_preferred().native();
  for (auto& c : text) c = Lower(c);
  return text;
}

}  // namespace

bool NameOneFile(const Path& one, const Path& other) {
  std::error_code error;
  return fs::equivalent(one, other, error) || Folded(one) == Folded(other);
}

bool MayReplace(const Messages& messages, const Path& target, const Path& agreed) {
  std::error_code error;
  if (target == agreed || !fs::exists(target, error)) return true;
  const std::string question =
      Format("%s already exists.\nDo you want to replace it ?", Utf8FromPath(target).c_str());
  return messages.ask && messages.ask(question, kApplicationTitle, false);
}

}  // namespace vexa
