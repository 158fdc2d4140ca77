#include "core/replace_file.h"

namespace vexa {

bool MayReplaceFile(const Messages& messages, const Path& path, const std::optional<FileState>& known) {
  const auto present = StateOf(path);
  if (!known || !present || *known == *present) return true;
  const std::string text = Format("\"%s\" was changed by another program.\nDo you want to replace it ?",
                                  Utf8FromPath(path).c_str());
  return messages.ask(text, "", false);
}

}  // namespace vexa
