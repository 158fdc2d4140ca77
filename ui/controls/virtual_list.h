// A list control of a form that asks for what it shows, so that lists of any length stand at once: texts,
// pictures, ticks. A click on a row's box and the space key change its tick, and with it those of all
// selected rows. Ctrl+A selects all rows where many can be selected.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "ui/controls/form.h"

namespace vexa {

struct VirtualList {
  int id = 0;
  std::function<std::string(size_t row, int column)> text;
  std::function<int(size_t row)> picture;                          // empty: none
  std::function<bool(size_t row)> ticked;                          // empty: no boxes
  std::function<void(const Form&, size_t row, bool ticked)> tick;  // the rows are drawn anew afterwards
  std::function<void(const Form&)> ticked_rows;                    // one or many of them have got their ticks
  std::function<void(const Form&, size_t row)> highlight;          // the highlighted row has changed
  int name_column = 0;                                             // where typed letters look

  size_t count = 0;
  std::optional<size_t> highlighted;
};

struct VirtualColumn {
  const char* title;
  int width;  // at 96 dots an inch; 0 for the last one: what is left
};

// Call when the form opens. `pictures` may be nullptr.
void SetUpList(const Form& form, const VirtualList& list, const std::vector<VirtualColumn>& columns,
               HIMAGELIST pictures);
// Gives the last column what the others leave of the list's width.
void FitLastColumn(HWND list);
// Shows `count` rows with `highlighted` in sight; does not call `highlight`.
void ShowRows(const Form& form, VirtualList& list, size_t count, std::optional<size_t> highlighted);
// Draws the rows in sight anew, whose texts have changed.
void RedrawRows(const Form& form, const VirtualList& list);
// The answer to a notification of this list; nothing when it is another control's.
std::optional<LRESULT> ListNotification(const Form& form, VirtualList& list, NMHDR& header);

}  // namespace vexa
