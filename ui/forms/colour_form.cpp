// The colours of tree and list.
#include "config/settings.h"
#include "ui/controls/form.h"
#include "ui/forms/options.h"
#include "ui/forms/options_resource.h"
// After windows.h.
#include <commdlg.h>

namespace vexa {

namespace {

void Choose(const Form& form, uint32_t& colour) {
  static COLORREF own[16] = {};  // the user's mixtures, for the time of the program
  CHOOSECOLORW question{};
  question.lStructSize = sizeof question;
  question.hwndOwner = form.window;
  question.rgbResult = colour;
  question.lpCustColors = own;
  question.Flags = CC_RGBINIT | CC_FULLOPEN | CC_ANYCOLOR;
  if (ChooseColorW(&question)) colour = question.rgbResult;
}

// A button filled with its colour.
void Draw(const DRAWITEMSTRUCT& item, uint32_t colour) {
  RECT area = item.rcItem;
  DrawEdge(item.hDC, &area, item.itemState & ODS_SELECTED ? EDGE_SUNKEN : EDGE_RAISED, BF_RECT | BF_ADJUST);
  HBRUSH brush = CreateSolidBrush(colour);
  FillRect(item.hDC, &area, brush);
  DeleteObject(brush);
  if (!(item.itemState & ODS_FOCUS)) return;
  InflateRect(&area, -2, -2);
  SetTextColor(item.hDC, RGB(0, 0, 0));
  SetBkColor(item.hDC, RGB(255, 255, 255));
  DrawFocusRect(item.hDC, &area);
}

size_t PlaceOfButton(UINT id) {
  return id >= IDC_COLOURS_FIRST && id < IDC_COLOURS_FIRST + kColourRoles
             ? static_cast<size_t>(id - IDC_COLOURS_FIRST)
             : kColourRoles;
}

}  // namespace

void ShowColours(Application& app) {
  EditorColourTable colours = app.colours;
  FormActions actions;
  actions.draw = [&](Form&, const DRAWITEMSTRUCT& item) {
    const size_t place = PlaceOfButton(item.CtlID);
    if (place < colours.size()) Draw(item, colours[place]);
  };
  actions.command = [&](Form& form, int id, int code) {
    if (code != BN_CLICKED) return;
    const size_t place = PlaceOfButton(static_cast<UINT>(id));
    if (place < colours.size()) Choose(form, colours[place]);
    if (id == IDC_COLOURS_STANDARD) colours = DefaultColours();
    InvalidateRect(form.window, nullptr, FALSE);
  };
  if (!RunForm(app, IDD_COLOURS, actions)) return;
  app.colours = colours;
  SaveColours(app.settings, app.colours);
  for (EditorWindow* editor : AllEditors(app)) {
    InvalidateRect(editor->tree, nullptr, TRUE);
    InvalidateRect(editor->list, nullptr, TRUE);
  }
}

}  // namespace vexa
