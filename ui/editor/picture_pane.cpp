#include "ui/editor/picture_pane.h"

#include <algorithm>

#include "ui/controls/child_window.h"
#include "ui/controls/paint_drawing.h"
#include "ui/editor/editor_parts.h"

namespace vexa {

namespace {

constexpr const wchar_t* kPictureClass = L"VexaPicture";
constexpr int kReach = 3, kLine = 18, kMargin = 4;  // at 96 dots an inch
constexpr int kLeastDrag = 4;                       // pixels, below it is a click
constexpr double kStep = 0.5;                       // of a key or a notch of the wheel

EditorWindow* EditorOfPane(HWND pane) {
  return reinterpret_cast<EditorWindow*>(GetWindowLongPtrW(pane, 0));
}

struct PaneArea {
  RECT drawing{}, line{};
  Fit fit;
};

PaneArea AreaOf(const EditorWindow& editor) {
  PaneArea area;
  RECT all{};
  GetClientRect(editor.picture_pane, &all);
  const int margin = Scaled(editor.window, kMargin);
  area.line = all;
  area.line.top = std::max(all.top, all.bottom - Scaled(editor.window, kLine));
  area.drawing = {all.left + margin, all.top + margin, all.right - margin, area.line.top - margin};
  const double dots = DotsPerUnit(editor.window);
  area.fit = FitInto(editor.picture.drawing, std::max(1L, area.drawing.right - area.drawing.left),
                     std::max(1L, area.drawing.bottom - area.drawing.top), dots);
  return area;
}

struct DrawingPoint {
  double x = 0, y = 0;
};
DrawingPoint PointOf(const PaneArea& area, POINT at) {
  return {(at.x - area.drawing.left) / area.fit.x, (at.y - area.drawing.top) / area.fit.y};
}

const Shape* ShapeUnder(const EditorWindow& editor, POINT at) {
  const PaneArea area = AreaOf(editor);
  const DrawingPoint point = PointOf(area, at);
  return ShapeAt(editor.picture.drawing, point.x, point.y, Scaled(editor.window, kReach) / area.fit.y);
}

const Shape* SelectedShape(const Picture& picture) {
  const Shape* selected = nullptr;
  for (const Shape& shape : picture.drawing.shapes)
    if (picture.selected != kNoItem && shape.item == picture.selected) selected = &shape;
  return selected;
}

// The figures of what is under the mouse, else of what is selected.
void PaintLineBelow(const EditorWindow& editor, HDC device, RECT line) {
  const Shape* selected = SelectedShape(editor.picture);
  const std::string& text = !editor.picture_tip.empty()   ? editor.picture_tip
                            : selected                    ? selected->text
                            : editor.picture.text.empty() ? editor.picture.drawing.title
                                                          : editor.picture.text;
  FillRect(device, &line, GetSysColorBrush(COLOR_BTNFACE));
  line.left += Scaled(editor.window, kMargin);
  SetBkMode(device, TRANSPARENT);
  SetTextColor(device, GetSysColor(COLOR_BTNTEXT));
  HGDIOBJ old = SelectObject(device, editor.font);
  DrawTextW(device, Wide(text).c_str(), -1, &line,
            DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX | DT_END_ELLIPSIS);
  SelectObject(device, old);
}

void PaintZoomBand(const EditorWindow& editor, HDC device, const RECT& drawing) {
  if (!editor.picture_drag || editor.picture.panels.empty()) return;
  RECT band = drawing;
  band.left = std::min(editor.picture_drag->x, editor.picture_drag_end.x);
  band.right = std::max(editor.picture_drag->x, editor.picture_drag_end.x);
  DrawFocusRect(device, &band);
}

void PaintPane(const EditorWindow& editor, HDC screen) {
  RECT all{};
  GetClientRect(editor.picture_pane, &all);
  const OffscreenPicture picture(screen, all);
  const PaneArea area = AreaOf(editor);
  PaintDrawing(picture.device(), area.drawing, editor.picture.drawing, area.fit, editor.picture.selected);
  PaintLineBelow(editor, picture.device(), area.line);
  PaintZoomBand(editor, picture.device(), area.drawing);
  if (GetFocus() == editor.picture_pane) DrawFocusRect(picture.device(), &all);
  picture.Show();
}

// Ends the painting whatever happens in it.
void PaintPane(const EditorWindow& editor) {
  struct Painting {
    explicit Painting(HWND pane) : window(pane), screen(BeginPaint(pane, &paint)) {}
    ~Painting() { EndPaint(window, &paint); }
    Painting(const Painting&) = delete;
    Painting& operator=(const Painting&) = delete;
    HWND window;
    PAINTSTRUCT paint{};
    HDC screen;
  };
  const Painting painting(editor.picture_pane);
  PaintPane(editor, painting.screen);
}

void RedrawPane(const EditorWindow& editor) {
  InvalidateRect(editor.picture_pane, nullptr, FALSE);
}

void SelectItem(EditorWindow& editor, size_t item) {
  const NodeRef node = NodeOfItem(editor.picture, editor.document, item);
  if (node.kind == NodeKind::kNone) return;
  ShowRecord(editor, PathOf(PlaceOf(editor.document, node)), false);
  editor.last_focus = editor.list;
  RefreshPictureSelection(editor);
}

// From the orbit into the plan of the selected satellite: its node of the tree.
void OpenItem(EditorWindow& editor) {
  const NodeRef node = NodeOfItem(editor.picture, editor.document, editor.picture.selected);
  if (node.kind != NodeKind::kSatellite) return;
  SelectTreeNode(editor, PathOf(PlaceOf(editor.document, node)));
}

void ZoomPane(EditorWindow& editor, bool changes) {
  if (changes) RefreshPicture(editor);
}

// True when the key is one of the pane's.
bool TakePaneKey(EditorWindow& editor, WPARAM key) {
  Picture& picture = editor.picture;
  const Shape* selected = SelectedShape(picture);
  // Around what is selected, else around the middle of the first panel.
  const double x = selected ? selected->x + selected->width / 2 : (kPlanLeft + kPlanRight) / 2;
  const double y = selected ? selected->y : 0;
  switch (key) {
    case VK_LEFT:
    case VK_RIGHT: {
      const size_t item = NeighbourItem(picture, key == VK_RIGHT ? 1 : -1);
      if (item != kNoItem) SelectItem(editor, item);
      return true;
    }
    case VK_ADD:
    case VK_OEM_PLUS:
      ZoomPane(editor, ZoomBy(picture, kStep, x, y));
      return true;
    case VK_SUBTRACT:
    case VK_OEM_MINUS:
      ZoomPane(editor, ZoomBy(picture, 1 / kStep, x, y));
      return true;
    case VK_HOME:
      ZoomPane(editor, ShowWhole(picture));
      return true;
    case VK_RETURN:
      OpenItem(editor);
      return true;
    case VK_ESCAPE:
      if (ShowWhole(picture)) return RefreshPicture(editor), true;
      SetFocus(editor.last_focus ? editor.last_focus : editor.tree);
      return true;
    default:
      return false;
  }
}

void EndPaneDrag(EditorWindow& editor, POINT at) {
  const auto from = std::exchange(editor.picture_drag, std::nullopt);
  if (!from) return;
  ReleaseCapture();
  if (std::abs(at.x - from->x) >= kLeastDrag && !editor.picture.panels.empty()) {
    const PaneArea area = AreaOf(editor);
    const DrawingPoint first = PointOf(area, *from), last = PointOf(area, at);
    ZoomPane(editor, ZoomBetween(editor.picture, first.y, first.x, last.x));
  } else if (const Shape* shape = ShapeUnder(editor, at); shape && shape->item != kNoItem) {
    // A click on what is selected goes into it.
    if (shape->item == editor.picture.selected)
      OpenItem(editor);
    else
      SelectItem(editor, shape->item);
  }
  RedrawPane(editor);
}

void MoveOverPane(EditorWindow& editor, POINT at) {
  if (editor.picture_drag) {
    editor.picture_drag_end = at;
    return RedrawPane(editor);
  }
  TRACKMOUSEEVENT leave = {sizeof leave, TME_LEAVE, editor.picture_pane, 0};
  TrackMouseEvent(&leave);
  const Shape* shape = ShapeUnder(editor, at);
  std::string tip = shape ? shape->text : "";
  if (tip == editor.picture_tip) return;
  editor.picture_tip = std::move(tip);
  RedrawPane(editor);
}

bool TakePaneMouse(EditorWindow& editor, UINT message, WPARAM wparam, LPARAM lparam) {
  POINT at = {GET_X_LPARAM(lparam), GET_Y_LPARAM(lparam)};
  switch (message) {
    case WM_LBUTTONDOWN:
      SetFocus(editor.picture_pane);
      SetCapture(editor.picture_pane);
      editor.picture_drag = editor.picture_drag_end = at;
      return true;
    case WM_LBUTTONUP:
      EndPaneDrag(editor, at);
      return true;
    case WM_CAPTURECHANGED:
      editor.picture_drag.reset();
      RedrawPane(editor);
      return true;
    case WM_MOUSEMOVE:
      MoveOverPane(editor, at);
      return true;
    case WM_MOUSELEAVE:
      editor.picture_tip.clear();
      RedrawPane(editor);
      return true;
    case WM_MOUSEWHEEL: {
      ScreenToClient(editor.picture_pane, &at);
      const DrawingPoint point = PointOf(AreaOf(editor), at);
      const double factor = GET_WHEEL_DELTA_WPARAM(wparam) > 0 ? kStep : 1 / kStep;
      ZoomPane(editor, ZoomBy(editor.picture, factor, point.x, point.y));
      return true;
    }
    default:
      return false;
  }
}

LRESULT PictureMessage(HWND pane, UINT message, WPARAM wparam, LPARAM lparam) {
  if (message == WM_NCCREATE)
    SetWindowLongPtrW(
        pane, 0, reinterpret_cast<LONG_PTR>(reinterpret_cast<const CREATESTRUCTW*>(lparam)->lpCreateParams));
  EditorWindow* editor = EditorOfPane(pane);
  if (!editor || editor->picture_pane != pane) return DefWindowProcW(pane, message, wparam, lparam);
  switch (message) {
    case WM_PAINT:
      PaintPane(*editor);
      return 0;
    case WM_ERASEBKGND:
      return 1;
    case WM_GETDLGCODE:
      return DLGC_WANTARROWS | DLGC_WANTCHARS;
    case WM_KEYDOWN:
      if (TakePaneKey(*editor, wparam)) return 0;
      break;
    case WM_SIZE:
    case WM_SETFOCUS:
    case WM_KILLFOCUS:
      RedrawPane(*editor);
      break;
    default:
      if (TakePaneMouse(*editor, message, wparam, lparam)) return 0;
      break;
  }
  return DefWindowProcW(pane, message, wparam, lparam);
}

}  // namespace

bool RegisterPictureClass(Application& app) {
  return RegisterChildClass(app.instance, kPictureClass, ChildProcedure<PictureMessage>);
}

HWND CreatePicturePane(EditorWindow& editor, int id) {
  return CreateWindowExW(WS_EX_CLIENTEDGE, kPictureClass, L"Band plan and orbit", WS_CHILD | WS_TABSTOP, 0, 0,
                         0, 0, editor.window, reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)),
                         editor.app->instance, &editor);
}

void RefreshPicture(EditorWindow& editor) {
  if (!editor.app->window.picture_height || !editor.picture_pane) return;
  ShowPicture(editor.picture, editor.document, editor.selected, CommandNode(editor),
              {NamesPage(editor.document), editor.app->place, editor.beneath.get()});
  editor.picture_tip.clear();
  RedrawPane(editor);
}

void RefreshPictureSelection(EditorWindow& editor) {
  if (!editor.app->window.picture_height || !editor.picture_pane) return;
  SelectInPicture(editor.picture, editor.document, CommandNode(editor));
  RedrawPane(editor);
}

}  // namespace vexa
