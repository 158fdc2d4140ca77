// What the console says about an upload: a status code gives a fixed block of text in the colour of its
// class.
#pragma once

#include <functional>
#include <string>

namespace vexa {

enum class ReportColour { kNeutral, kError, kSuccess };  // plain, red, blue

struct LoaderReport {
  std::string text;  // empty for a code outside the table
  ReportColour colour = ReportColour::kNeutral;
};

// The text and the colour of a status code: -6 to -1, 1 to 4, 19 and 23 have one.
LoaderReport LoaderReportOf(int code);

// What is wrong, of the text of a status code that tells of an error; else empty.
std::string LoaderProblemOf(int code);

// Where reports go. While a flag is set nothing is shown.
struct ReportTarget {
  bool download = false;        // a download runs
  bool frame_upload = false;    // an ADB or SDB upload runs
  std::function<void()> focus;  // moves the keyboard focus to the console's log; may be empty
  std::function<void(const std::string& text, ReportColour colour)> append;
};

// Moves the focus to the log and appends the code's text, if it has one. Of `target` only `focus` is called
// while a flag is set.
void ReportLoaderStatus(const ReportTarget& target, int code);

}  // namespace vexa
