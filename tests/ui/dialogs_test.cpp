// Every dialog that the program holds, as it stands in its resources: reachable by keys, named for a screen
// reader, in the order of its places, and readable at 100 and 200 %.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <cwctype>
#include <map>

#include "core/messages.h"
#include "tests/ui/driver.h"
#include "ui/controls/windows_api.h"

namespace vexa {

namespace {

using testing::IsEmpty;

using Faults = std::vector<std::string>;

struct Control {
  HWND window;
  int id;
  DWORD style;
  std::wstring kind, text;
  RECT place;  // in the dialog

  bool IsButton() const { return kind == L"Button"; }
  bool IsStatic() const { return kind == L"Static"; }
  DWORD ButtonType() const { return style & BS_TYPEMASK; }
  bool IsField() const { return kind == L"Edit" || kind == L"ComboBox" || kind == L"ListBox"; }
  bool IsGroupBox() const { return IsButton() && ButtonType() == BS_GROUPBOX; }
  bool IsRadio() const {
    return IsButton() && (ButtonType() == BS_AUTORADIOBUTTON || ButtonType() == BS_RADIOBUTTON);
  }
  bool HasMark() const {  // a box or a circle before its text
    const DWORD type = ButtonType();
    return IsButton() && !(style & BS_PUSHLIKE) &&
           (IsRadio() || type == BS_CHECKBOX || type == BS_AUTOCHECKBOX || type == BS_AUTO3STATE);
  }
  bool IsText() const {
    const DWORD type = style & SS_TYPEMASK;
    return IsStatic() && (type <= SS_RIGHT || type == SS_SIMPLE || type == SS_LEFTNOWORDWRAP);
  }
  bool Shows() const { return (style & WS_VISIBLE) != 0; }
  bool HasPrefix() const { return IsButton() || (IsStatic() && !(style & SS_NOPREFIX)); }
  // A stop of the tab key; of a group of circles the first one.
  bool IsStop() const {
    return Shows() && !IsGroupBox() && (IsRadio() ? (style & WS_GROUP) != 0 : (style & WS_TABSTOP) != 0);
  }
  std::string Name() const { return Format("%d \"", id) + Utf8(text) + "\""; }
};

std::vector<Control> ControlsOf(HWND dialog) {
  std::vector<Control> controls;
  for (HWND child = GetWindow(dialog, GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT)) {
    wchar_t kind[64] = L"", text[256] = L"";
    GetClassNameW(child, kind, 64);
    GetWindowTextW(child, text, 256);
    Control control{
        child, GetDlgCtrlID(child), static_cast<DWORD>(GetWindowLongW(child, GWL_STYLE)), kind, text, {}};
    GetWindowRect(child, &control.place);
    MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&control.place), 2);
    controls.push_back(control);
  }
  return controls;
}

wchar_t KeyOf(const Control& control) {
  for (size_t i = 0; control.HasPrefix() && i + 1 < control.text.size(); ++i) {
    if (control.text[i] != L'&') continue;
    if (control.text[++i] != L'&') return static_cast<wchar_t>(std::towupper(control.text[i]));
  }
  return 0;
}

void CheckKeys(const std::vector<Control>& controls, Faults& faults) {
  std::map<wchar_t, const Control*> taken;
  for (const Control& control : controls) {
    const wchar_t key = KeyOf(control);
    if (key && !taken.emplace(key, &control).second)
      faults.push_back("access key of " + taken[key]->Name() + " again at " + control.Name());
  }
  // Where the label of one field has a key, those of all fields have.
  std::vector<const Control*> labels;
  for (size_t i = 1; i < controls.size(); ++i) {
    const Control& label = controls[i - 1];
    if (controls[i].IsField() && label.IsText() && label.Shows()) labels.push_back(&label);
  }
  const auto has_key = [](const Control* label) { return KeyOf(*label) != 0; };
  if (std::none_of(labels.begin(), labels.end(), has_key)) return;
  for (const Control* label : labels) {
    const bool name =
        std::any_of(label->text.begin(), label->text.end(), [](wchar_t c) { return std::iswalpha(c) != 0; });
    if (name && !has_key(label)) faults.push_back("no access key of " + label->Name());
  }
}

// A screen reader names a control by its own text, or by the text that was made right before it, which need
// not be seen.
void CheckNames(const std::vector<Control>& controls, Faults& faults) {
  for (size_t i = 0; i < controls.size(); ++i) {
    const Control& control = controls[i];
    if (control.IsStatic() || (control.IsButton() && !control.text.empty())) continue;
    const std::wstring label = i > 0 && controls[i - 1].IsText() ? controls[i - 1].text : L"";
    if (std::count_if(label.begin(), label.end(), [](wchar_t each) { return std::iswalpha(each) != 0; }) < 2)
      faults.push_back("no name of " + control.Name());
  }
}

bool StandsBefore(const Control& first, const Control& second) {
  return first.place.bottom <= second.place.top || first.place.right <= second.place.left;
}

// Stops follow each other as they are read when they can be parted, again and again, into some that stand
// wholly above, or wholly left of, all that come after them.
bool IsReadingOrder(std::span<const Control> stops) {
  if (stops.size() < 2) return true;
  for (size_t at = 1; at < stops.size(); ++at) {
    LONG bottom = 0, right = 0, top = LONG_MAX, left = LONG_MAX;
    for (size_t i = 0; i < stops.size(); ++i) {
      const RECT& place = stops[i].place;
      if (i < at) {
        bottom = std::max(bottom, place.bottom);
        right = std::max(right, place.right);
      } else {
        top = std::min(top, place.top);
        left = std::min(left, place.left);
      }
    }
    if (bottom <= top || right <= left)
      return IsReadingOrder(stops.first(at)) && IsReadingOrder(stops.subspan(at));
  }
  return false;
}

void CheckOrder(const std::vector<Control>& controls, Faults& faults) {
  std::vector<Control> stops;
  std::copy_if(controls.begin(), controls.end(), std::back_inserter(stops),
               [](const Control& each) { return each.IsStop(); });
  if (IsReadingOrder(stops)) return;
  std::string order = "tab order:";
  for (size_t i = 1; i < stops.size(); ++i) {
    if (!StandsBefore(stops[i - 1], stops[i]))
      order += " " + stops[i - 1].Name() + " before " + stops[i].Name();
  }
  faults.push_back(order);
}

void CheckPlaces(HWND dialog, const std::vector<Control>& controls, Faults& faults) {
  RECT area{}, common{};
  GetClientRect(dialog, &area);
  const auto holds = [&](const RECT& outer, const RECT& inner) {
    return UnionRect(&common, &outer, &inner) && EqualRect(&common, &outer);
  };
  for (size_t i = 0; i < controls.size(); ++i) {
    const Control& one = controls[i];
    if (!one.Shows()) continue;
    if (!holds(area, one.place)) faults.push_back("outside: " + one.Name());
    for (size_t k = i + 1; k < controls.size(); ++k) {
      const Control& other = controls[k];
      if (!other.Shows() || !IntersectRect(&common, &one.place, &other.place)) continue;
      if (one.IsGroupBox() && holds(one.place, other.place)) continue;
      if (other.IsGroupBox() && holds(other.place, one.place)) continue;
      faults.push_back("over each other: " + one.Name() + " and " + other.Name());
    }
  }
}

// `scale`: 1 at 96 dots an inch, 2 at 192.
void CheckTexts(HWND dialog, const std::vector<Control>& controls, int scale, Faults& faults) {
  constexpr DWORD kShortened = SS_ELLIPSISMASK;
  constexpr int kMark = 13 + 4, kFrame = 2 * 3, kGroupMargin = 2 * 9;  // dots at 96 dots an inch
  HDC screen = GetDC(dialog);
  HGDIOBJ before = SelectObject(screen, reinterpret_cast<HFONT>(SendMessageW(dialog, WM_GETFONT, 0, 0)));
  for (const Control& control : controls) {
    if (!control.Shows() || control.text.empty() || !(control.IsButton() || control.IsText())) continue;
    if (control.IsStatic() && (control.style & kShortened)) continue;
    int extra = 0;
    if (control.HasMark())
      extra = kMark;
    else if (control.IsGroupBox())
      extra = kGroupMargin;
    else if (control.IsButton())
      extra = kFrame;
    const LONG width = control.place.right - control.place.left - extra * scale;
    const LONG height = control.place.bottom - control.place.top;
    RECT needed{0, 0, width, 0};
    UINT how = DT_CALCRECT | (control.HasPrefix() ? 0u : DT_NOPREFIX);
    how |= control.IsStatic() ? DT_WORDBREAK : DT_SINGLELINE;
    DrawTextW(screen, control.text.c_str(), -1, &needed, how);
    if (needed.right > width || needed.bottom > height)
      faults.push_back(Format("%ldx%ld for %ldx%ld: ", width, height, needed.right, needed.bottom) +
                       control.Name());
  }
  SelectObject(screen, before);
  ReleaseDC(dialog, screen);
}

Faults FaultsOf(HWND dialog, int scale) {
  const std::vector<Control> controls = ControlsOf(dialog);
  Faults faults;
  CheckKeys(controls, faults);
  CheckNames(controls, faults);
  CheckOrder(controls, faults);
  CheckPlaces(dialog, controls, faults);
  CheckTexts(dialog, controls, scale, faults);
  return faults;
}

INT_PTR CALLBACK NoProcedure(HWND, UINT, WPARAM, LPARAM) noexcept {
  return FALSE;
}

struct Template {
  std::vector<uint8_t> bytes;

  uint16_t& Word(size_t at) { return *reinterpret_cast<uint16_t*>(bytes.data() + at); }
  // Behind a name, a number, or neither.
  size_t Behind(size_t at) {
    if (Word(at) == 0xFFFF) return at + 4;
    while (Word(at) != 0) at += 2;
    return at + 2;
  }
  // Not shown, not held to the screen's size as windows with a sizing frame are, and with its font as large
  // as at that many times 96 dots an inch.
  void Prepare(int scale) {
    constexpr size_t kStyle = 12, kMenu = 26;
    uint32_t style = 0;
    std::memcpy(&style, &bytes[kStyle], sizeof style);
    style &= ~static_cast<uint32_t>(WS_VISIBLE | WS_THICKFRAME);
    std::memcpy(&bytes[kStyle], &style, sizeof style);
    uint16_t& points = Word(Behind(Behind(Behind(kMenu))));
    points = static_cast<uint16_t>(points * scale);
  }
};

using DialogTemplates = std::map<std::string, Template>;

BOOL CALLBACK AddDialog(HMODULE module, LPCWSTR type, LPWSTR name, LONG_PTR to) {
  HRSRC found = FindResourceW(module, name, type);
  const auto* bytes = static_cast<const uint8_t*>(LockResource(LoadResource(module, found)));
  const std::string number = Format("dialog %u", static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(name)));
  (*reinterpret_cast<DialogTemplates*>(to))[number].bytes.assign(bytes,
                                                                 bytes + SizeofResource(module, found));
  return TRUE;
}

DialogTemplates DialogsOf(HMODULE program) {
  DialogTemplates dialogs;
  EnumResourceNamesW(program, RT_DIALOG, AddDialog, reinterpret_cast<LONG_PTR>(&dialogs));
  return dialogs;
}

class Dialogs : public testing::Test {
 protected:
  void SetUp() override {
    const INITCOMMONCONTROLSEX classes{sizeof classes, ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&classes);
    owner_ =
        CreateWindowExW(0, L"Static", L"", WS_POPUP, 0, 0, 2000, 1500, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(owner_);
  }
  void TearDown() override { DestroyWindow(owner_); }

  HWND owner_ = nullptr;
};

TEST_F(Dialogs, AllAreReachedNamedOrderedAndReadable) {
  HMODULE program = LoadLibraryExW(EditorProgram().c_str(), nullptr,
                                   LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
  ASSERT_TRUE(program);
  const auto dialogs = DialogsOf(program);
  EXPECT_FALSE(dialogs.empty());
  for (const auto& [name, stored] : dialogs) {
    for (const int scale : {1, 2}) {
      SCOPED_TRACE(name + Format(" at %d dots an inch", 96 * scale));
      Template prepared = stored;
      prepared.Prepare(scale);
      HWND dialog = CreateDialogIndirectParamW(
          program, reinterpret_cast<const DLGTEMPLATE*>(prepared.bytes.data()), owner_, NoProcedure, 0);
      ASSERT_TRUE(dialog);
      EXPECT_THAT(FaultsOf(dialog, scale), IsEmpty());
      RECT place{};
      GetWindowRect(dialog, &place);
      EXPECT_LE(place.right - place.left, 1024 * scale);
      EXPECT_LE(place.bottom - place.top, 768 * scale);
      DestroyWindow(dialog);
    }
  }
  FreeLibrary(program);
}

// The checks themselves: a sound dialog, and the same with one fault.
TEST_F(Dialogs, EachFaultIsFound) {
  struct Place {
    const wchar_t* kind;
    const wchar_t* text;
    DWORD style;
    int left, top, width, height;
  };
  using Places = std::array<Place, 4>;
  const Places sound = {{{L"Static", L"&Name", 0, 10, 10, 80, 20},
                         {L"Edit", L"", WS_TABSTOP, 100, 10, 80, 20},
                         {L"Button", L"&OK", WS_TABSTOP, 10, 40, 80, 25},
                         {L"Button", L"Cancel", WS_TABSTOP, 100, 40, 80, 25}}};
  const auto faults = [&](const std::function<void(Places&)>& change) {
    Places places = sound;
    change(places);
    HWND dialog =
        CreateWindowExW(0, L"Static", L"", WS_POPUP, 0, 0, 200, 80, owner_, nullptr, nullptr, nullptr);
    for (const Place& each : places)
      SetWindowPos(CreateWindowExW(0, each.kind, each.text, WS_CHILD | WS_VISIBLE | each.style, each.left,
                                   each.top, each.width, each.height, dialog, nullptr, nullptr, nullptr),
                   HWND_BOTTOM, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    const Faults found = FaultsOf(dialog, 1);
    DestroyWindow(dialog);
    return found;
  };
  const auto one = [](const char* text) { return testing::ElementsAre(testing::StartsWith(text)); };
  EXPECT_THAT(faults([](Places&) {}), IsEmpty());
  EXPECT_THAT(faults([](Places& all) { all[3].text = L"N&o"; }), one("access key"));
  EXPECT_THAT(faults([](Places& all) { all[0].text = L"."; }), one("no name"));
  EXPECT_THAT(
      faults([](Places& all) { all[2] = {L"Static", L"Count", 0, 10, 40, 80, 20}, all[3].kind = L"Edit"; }),
      one("no access key"));
  EXPECT_THAT(faults([](Places& all) { std::swap(all[2].left, all[3].left); }), one("tab order"));
  EXPECT_THAT(faults([](Places& all) { all[3].left = 121; }), one("outside"));
  EXPECT_THAT(faults([](Places& all) { all[0].width = 91; }), one("over each other"));
  EXPECT_THAT(faults([](Places& all) { all[3].text = L"What is to be done instead"; }), one("74x25"));
}

}  // namespace

}  // namespace vexa
