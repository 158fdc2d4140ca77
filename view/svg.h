// Texts and drawings as HTML and SVG.
#pragma once

#include <string>
#include <string_view>

#include "view/drawing.h"

namespace vexa {

// Appends UTF-8 text so that it is text within an element or a quoted attribute. Tabs and line ends become
// blanks; other control characters, which a page may not hold, and bytes that are no UTF-8, U+FFFD.
void AppendMarkup(std::string& page, std::string_view text);

// Appends the drawing as an <svg> element for the inside of a page. A paint is a class: "e" edge, "r" range,
// "g" faint, "f0" to "f7" FEC, "l0" to "l15" LNB, "t0" to "t6" steps, "b" beneath, none for plain; "x" is the
// hatching over a faulty shape. With a `link` the shapes of an item lead to it, followed by the item's
// number, and the element has the drawing's size.
void AppendSvg(std::string& page, const Drawing& drawing, const char* link = nullptr);

}  // namespace vexa
