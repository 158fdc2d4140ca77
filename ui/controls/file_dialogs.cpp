#include "ui/controls/file_dialogs.h"

#include <commdlg.h>
#include <objbase.h>
#include <shlobj.h>

#include <algorithm>

namespace vexa {

namespace {

// Pairs of name and pattern, each with its NUL, and one more at the end.
std::wstring FilterText(const std::vector<FileFilter>& filters) {
  std::wstring text;
  for (const FileFilter& filter : filters) {
    text += Wide(filter.name);
    text += L'\0';
    text += Wide(filter.pattern);
    text += L'\0';
  }
  return text;
}

enum class Asked { kOne, kSeveral, kNew };

// What the dialog leaves: a path; of several files the folder and each name, with a NUL behind every part.
std::optional<std::wstring> AskNames(HWND owner, const FileQuestion& question, const Path& proposed,
                                     Asked asked) {
  std::wstring name(32768, L'\0');
  // The system's dialog fails on a longer proposal: the name alone is left of it.
  const std::wstring start =
      proposed.native().size() < MAX_PATH ? proposed.native() : proposed.filename().native();
  name.replace(0, start.size(), start);
  const std::wstring filter = FilterText(question.filters), title = Wide(question.title);
  const std::wstring extension = question.extension ? Wide(question.extension) : L"";
  OPENFILENAMEW dialog{};
  dialog.lStructSize = sizeof dialog;
  dialog.hwndOwner = owner;
  dialog.lpstrFilter = filter.c_str();
  dialog.nFilterIndex = static_cast<DWORD>(question.first_filter + 1);
  dialog.lpstrFile = name.data();
  dialog.nMaxFile = static_cast<DWORD>(name.size());
  dialog.lpstrTitle = title.c_str();
  dialog.lpstrDefExt = extension.empty() ? nullptr : extension.c_str();
  dialog.Flags = OFN_EXPLORER | OFN_HIDEREADONLY | OFN_NOCHANGEDIR | OFN_PATHMUSTEXIST |
                 (asked == Asked::kNew ? OFN_OVERWRITEPROMPT : OFN_FILEMUSTEXIST) |
                 (asked == Asked::kSeveral ? OFN_ALLOWMULTISELECT : 0);
  const BOOL chosen = asked == Asked::kNew ? GetSaveFileNameW(&dialog) : GetOpenFileNameW(&dialog);
  if (!chosen) return std::nullopt;
  return name;
}

std::optional<Path> AskFile(HWND owner, const FileQuestion& question, const Path& proposed, Asked asked) {
  const auto name = AskNames(owner, question, proposed, asked);
  if (!name) return std::nullopt;
  return Path(name->c_str());
}

int CALLBACK FolderHighlighted(HWND dialog, UINT message, LPARAM parameter, LPARAM start) noexcept {
  if (message == BFFM_INITIALIZED) {
    SendMessageW(dialog, BFFM_SETSELECTIONW, TRUE, start);
    SendMessageW(dialog, BFFM_SETSTATUSTEXTW, 0, start);
  }
  if (message == BFFM_SELCHANGED) {
    wchar_t path[MAX_PATH] = L"";
    SHGetPathFromIDListW(reinterpret_cast<PCIDLIST_ABSOLUTE>(parameter), path);
    SendMessageW(dialog, BFFM_SETSTATUSTEXTW, 0, reinterpret_cast<LPARAM>(path));
  }
  return 0;
}

}  // namespace

std::optional<Path> AskOpenFile(HWND owner, const FileQuestion& question, const Path& proposed) {
  return AskFile(owner, question, proposed, Asked::kOne);
}

std::vector<Path> AskOpenFiles(HWND owner, const FileQuestion& question) {
  const auto names = AskNames(owner, question, {}, Asked::kSeveral);
  if (!names) return {};
  std::vector<Path> parts;
  for (size_t at = 0; at < names->size() && (*names)[at]; at = names->find(L'\0', at) + 1)
    parts.emplace_back(names->c_str() + at);
  if (parts.size() < 2) return parts;
  std::vector<Path> files;
  for (size_t i = 1; i < parts.size(); ++i) files.push_back(parts[0] / parts[i]);
  std::sort(files.begin(), files.end());
  return files;
}

std::optional<Path> AskSaveFile(HWND owner, const FileQuestion& question, const Path& proposed) {
  return AskFile(owner, question, proposed, Asked::kNew);
}

std::optional<Path> AskFolder(HWND owner, const char* title, const Path& folder) {
  const std::wstring text = Wide(title);
  wchar_t path[MAX_PATH] = L"";
  BROWSEINFOW question{};
  question.hwndOwner = owner;
  question.lpszTitle = text.c_str();
  question.pszDisplayName = path;
  question.ulFlags = BIF_RETURNONLYFSDIRS | BIF_STATUSTEXT;
  question.lpfn = FolderHighlighted;
  question.lParam = reinterpret_cast<LPARAM>(folder.c_str());
  PIDLIST_ABSOLUTE chosen = SHBrowseForFolderW(&question);
  if (!chosen) return std::nullopt;
  const bool has_path = SHGetPathFromIDListW(chosen, path);
  CoTaskMemFree(chosen);
  if (!has_path) return std::nullopt;
  return Path(path);
}

Path DocumentsFolder() {
  wchar_t path[MAX_PATH] = L"";
  if (FAILED(SHGetFolderPathW(nullptr, CSIDL_PERSONAL, nullptr, SHGFP_TYPE_CURRENT, path)))
    return ProgramFolder();
  return Path(path);
}

}  // namespace vexa
