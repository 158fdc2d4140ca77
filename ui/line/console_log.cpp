#include "ui/line/console_log.h"

#include <commdlg.h>
#include <richedit.h>

#include <algorithm>

namespace vexa {

namespace {

constexpr COLORREF kErrorColour = RGB(255, 0, 0), kSuccessColour = RGB(0, 0, 255);
constexpr LPARAM kTextLimit = 16 << 20;  // characters; what is shown is kept far below
constexpr int kLinesAbove = 8;           // in sight above what was found

struct StreamSource {
  const std::string* text;
  size_t position;
};

DWORD CALLBACK ReadSource(DWORD_PTR cookie, LPBYTE buffer, LONG wanted, LONG* moved) noexcept {
  auto& source = *reinterpret_cast<StreamSource*>(cookie);
  const size_t count =
      std::min(static_cast<size_t>(std::max<LONG>(0, wanted)), source.text->size() - source.position);
  std::copy_n(source.text->data() + source.position, count, reinterpret_cast<char*>(buffer));
  source.position += count;
  *moved = static_cast<LONG>(count);
  return 0;
}

LONG Length(HWND log) {
  return static_cast<LONG>(SendMessageW(log, WM_GETTEXTLENGTH, 0, 0));
}

CHARRANGE Selection(HWND log) {
  CHARRANGE range{};
  SendMessageW(log, EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&range));
  return range;
}

void Select(HWND log, LONG first, LONG last) {
  CHARRANGE range{first, last};
  SendMessageW(log, EM_EXSETSEL, 0, reinterpret_cast<LPARAM>(&range));
}

void Colour(HWND log, ReportColour colour) {
  CHARFORMATW format{};
  format.cbSize = sizeof format;
  format.dwMask = CFM_COLOR | CFM_BOLD;
  // Where the system's own colour must stand for it, errors stand out by being bold.
  format.crTextColor = colour == ReportColour::kError ? kErrorColour : kSuccessColour;
  const bool plain = SeenColour(format.crTextColor, WindowColours()) != format.crTextColor;
  if (plain || colour == ReportColour::kNeutral) format.dwEffects = CFE_AUTOCOLOR;
  if (plain && colour == ReportColour::kError) format.dwEffects |= CFE_BOLD;
  SendMessageW(log, EM_SETCHARFORMAT, SCF_SELECTION, reinterpret_cast<LPARAM>(&format));
}

// True when text that is added at the selection has no colour or weight of its own.
bool IsNeutral(HWND log) {
  CHARFORMATW format{};
  format.cbSize = sizeof format;
  SendMessageW(log, EM_GETCHARFORMAT, SCF_SELECTION, reinterpret_cast<LPARAM>(&format));
  return (format.dwEffects & (CFE_AUTOCOLOR | CFE_BOLD)) == CFE_AUTOCOLOR;
}

void InsertPiece(HWND log, const ConsolePiece& piece) {
  const LONG end = Length(log);
  Select(log, end, end);
  const bool as_it_is = piece.colour == ReportColour::kNeutral && IsNeutral(log);
  StreamSource source{&piece.text, 0};
  EDITSTREAM stream{};
  stream.dwCookie = reinterpret_cast<DWORD_PTR>(&source);
  stream.pfnCallback = ReadSource;
  SendMessageW(log, EM_STREAMIN, SF_TEXT | SFF_SELECTION, reinterpret_cast<LPARAM>(&stream));
  if (as_it_is) return;  // to colour it takes as long as to add it
  Select(log, end, Length(log));
  Colour(log, piece.colour);
}

void Empty(HWND log) {
  SetWindowTextW(log, L"");
  SetLogFont(log, GetWindowLongPtrW(log, GWLP_USERDATA) != 0);
}

// The frame too: a scroll bar that comes or goes while nothing is drawn is not drawn by itself.
void Redraw(HWND log) {
  SendMessageW(log, WM_SETREDRAW, TRUE, 0);
  RedrawWindow(log, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
}

// Takes the oldest text out of a view that holds too much. True when it did.
bool TrimFront(HWND log) {
  const auto excess = static_cast<LONG>(ViewExcess(static_cast<size_t>(Length(log))));
  if (excess == 0) return false;
  Select(log, 0, excess);
  SendMessageW(log, EM_REPLACESEL, FALSE, reinterpret_cast<LPARAM>(L""));
  return true;
}

}  // namespace

HWND CreateLogView(HWND parent, HINSTANCE instance, int id) {
  static const HMODULE library = LoadLibraryW(SystemFile(L"RICHED32.DLL").c_str());
  if (!library) return nullptr;
  HWND log = CreateWindowExW(WS_EX_CLIENTEDGE, L"RICHEDIT", L"",
                             WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_TABSTOP | ES_MULTILINE | ES_READONLY |
                                 ES_AUTOVSCROLL | ES_NOHIDESEL,
                             0, 0, 0, 0, parent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), instance,
                             nullptr);
  if (log) SendMessageW(log, EM_EXLIMITTEXT, 0, kTextLimit);
  if (log) SendMessageW(log, EM_SETUNDOLIMIT, 0, 0);
  return log;
}

void SetLogFont(HWND log, bool fixed) {
  SetWindowLongPtrW(log, GWLP_USERDATA, fixed);
  CHARFORMATW format{};
  format.cbSize = sizeof format;
  format.dwMask = CFM_FACE | CFM_SIZE | CFM_CHARSET | CFM_BOLD | CFM_ITALIC;
  format.yHeight = 180;  // twentieths of a point
  format.bCharSet = DEFAULT_CHARSET;
  format.bPitchAndFamily = fixed ? FIXED_PITCH | FF_MODERN : VARIABLE_PITCH | FF_SWISS;
  wcscpy(format.szFaceName, fixed ? L"Courier New" : L"Arial");
  SendMessageW(log, EM_SETCHARFORMAT, SCF_ALL, reinterpret_cast<LPARAM>(&format));
}

ViewUse LogUse(HWND log) {
  const CHARRANGE selection = Selection(log);
  SCROLLINFO bar{};
  bar.cbSize = sizeof bar;
  bar.fMask = SIF_ALL;
  GetScrollInfo(log, SB_VERT, &bar);
  ViewLook look;
  look.selecting = (GetFocus() == log && GetKeyState(VK_SHIFT) < 0) || GetCapture() == log;
  look.selected = static_cast<size_t>(selection.cpMax - selection.cpMin);
  look.shown = LogLength(log);
  look.has_bar = (GetWindowLongPtrW(log, GWL_STYLE) & WS_VSCROLL) != 0;
  look.position = bar.nPos;
  look.page = bar.nPage;
  look.maximum = bar.nMax;
  return UseOfView(look);
}

void ScrollLogToEnd(HWND log) {
  SendMessageW(log, EM_SCROLLCARET, 0, 0);
  // Without the focus the caret alone does not scroll everywhere.
  SendMessageW(log, WM_VSCROLL, SB_BOTTOM, 0);
}

size_t LogLength(HWND log) {
  return static_cast<size_t>(Length(log));
}

bool HasLogSelection(HWND log) {
  const CHARRANGE selection = Selection(log);
  return selection.cpMin != selection.cpMax;
}

void SelectWholeLog(HWND log) {
  SetFocus(log);
  Select(log, 0, -1);
}

void CopyLogSelection(HWND log) {
  SendMessageW(log, WM_COPY, 0, 0);
}

void ShowLogMenu(HWND log, Application& app, POINT point) {
  if (point.x == -1 && point.y == -1) {
    point = {0, 0};
    ClientToScreen(log, &point);
  }
  SetFocus(log);
  app.show_popup(MenuName::kConsoleLog, point, TPM_LEFTALIGN | TPM_TOPALIGN);
}

bool AppendToLog(HWND log, const std::deque<ConsolePiece>& pieces, bool start_anew) {
  if (pieces.empty() && !start_anew) return false;
  const CHARRANGE selection = Selection(log);
  const bool follows = start_anew || LogUse(log) == ViewUse::kFollows;
  POINT place{};
  SendMessageW(log, EM_GETSCROLLPOS, 0, reinterpret_cast<LPARAM>(&place));
  SendMessageW(log, WM_SETREDRAW, FALSE, 0);
  if (start_anew) Empty(log);
  for (const ConsolePiece& piece : pieces) InsertPiece(log, piece);
  bool trimmed = false;
  if (follows) {
    trimmed = TrimFront(log);
    const LONG end = Length(log);
    Select(log, end, end);
  } else {
    Select(log, selection.cpMin, selection.cpMax);
    SendMessageW(log, EM_SETSCROLLPOS, 0, reinterpret_cast<LPARAM>(&place));
  }
  Redraw(log);
  if (follows) ScrollLogToEnd(log);
  return trimmed;
}

bool FindInLog(HWND log, const std::string& text, bool match_case, bool round) {
  const std::wstring wide = Wide(text);
  if (wide.empty()) return false;
  const LONG from = Selection(log).cpMax;
  for (const LONG start : {from, LONG{0}}) {
    if (start < from && !round) break;
    FINDTEXTEXW question{};
    question.chrg = {start, -1};
    question.lpstrText = wide.c_str();
    const WPARAM flags = FR_DOWN | (match_case ? FR_MATCHCASE : 0);
    if (SendMessageW(log, EM_FINDTEXTEXW, flags, reinterpret_cast<LPARAM>(&question)) < 0) continue;
    Select(log, question.chrgText.cpMin, question.chrgText.cpMax);
    SendMessageW(log, EM_SCROLLCARET, 0, 0);
    return true;
  }
  return false;
}

void ShowFound(HWND log, const FoundText& found) {
  SendMessageW(log, WM_SETREDRAW, FALSE, 0);
  Empty(log);
  for (const ConsolePiece& piece : found.before) InsertPiece(log, piece);
  const LONG first = Length(log);
  for (const ConsolePiece& piece : found.text) InsertPiece(log, piece);
  const LONG last = Length(log);
  for (const ConsolePiece& piece : found.after) InsertPiece(log, piece);
  Select(log, first, last);
  Redraw(log);
  const auto line = static_cast<int>(SendMessageW(log, EM_EXLINEFROMCHAR, 0, first));
  const auto top = static_cast<int>(SendMessageW(log, EM_GETFIRSTVISIBLELINE, 0, 0));
  SendMessageW(log, EM_LINESCROLL, 0, std::max(0, line - kLinesAbove) - top);
}

}  // namespace vexa
