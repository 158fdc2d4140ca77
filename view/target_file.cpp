#include "view/target_file.h"

#include <system_error>

#include "platform/text.h"

namespace vexa {

namespace {

namespace fs = std::filesystem;

// Lower case of the letters A-Z and of the Latin-1, Greek and Cyrillic ones.
char16_t Lower(char16_t c) {
  const auto in = [c](unsigned first, unsigned last) { return c >= first && c <= last; };
  unsigned distance = 0;
  if (in('A', 'Z') || (in(0xC0, 0xDE) && c != 0xD7) || in(0x391, 0x3A9) || in(0x410, 0x42F)) distance = 32;
  if (in(0x400, 0x40F)) distance = 80;
  return static_cast<char16_t>(c + distance);
}

std::u16string Folded(const Path& path) {
  std::error_code error;
  Path whole = fs::weakly_canonical(fs::absolute(path, error), error);
  if (error) whole = PlainPath(path);
  std::u16string text = Utf16FromUtf8(Utf8FromPath(whole.make_preferred()));
  for (char16_t& c : text) c = Lower(c);
  return text;
}

}  // namespace

bool NameOneFile(const Path& one, const Path& other) {
  std::error_code error;
  return fs::equivalent(one, other, error) || Folded(one) == Folded(other);
}

Path BesideInput(const Path& input, const Path& target) {
  return target.empty() || target.has_root_path() ? target : input.parent_path() / target;
}

Path NamedAfter(const Path& file, const char* extension) {
  const std::string old = Utf8FromPath(file.extension());
  const bool is_extension = old.size() > 1 && !(old[1] >= '0' && old[1] <= '9');
  Path name = is_extension ? file.stem() : file.filename();
  return file.parent_path() / (name += extension);
}

bool MayReplace(const Messages& messages, const Path& target, const Path& agreed) {
  std::error_code error;
  if (target == agreed || !fs::exists(target, error)) return true;
  const std::string question =
      Format("%s already exists.\nDo you want to replace it ?", Utf8FromPath(target).c_str());
  return messages.ask && messages.ask(question, kApplicationTitle, false);
}

}  // namespace vexa
