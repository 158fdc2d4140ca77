#include "serial/reports.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

namespace vexa {

namespace {

struct ReportRow {
  int code;
  ReportColour colour;
  std::array<const char*, 6> pieces;
};

constexpr ReportRow kReports[] = {
    {-6,
     ReportColour::kError,
     {"\n<========== Error ( -6 ) ==========>\n", "   Problem : Magic ID not found\n",
      "   Solution: Regenerate UART File\n"}},
    {-5,
     ReportColour::kError,
     {"\n<========== Error ( -5 ) ==========>\n", "   Problem : No response from TARGET\n",
      "\t      \tUART File has irrelavant JOB ID\n", "   Solution    :   Check UART Cable\n",
      "\t\tRetransmitting UART File after Restarting the Tartget\n",
      "\t\tChoose Correct UART file for TARGET\n"}},
    {-4,
     ReportColour::kError,
     {"\n<========== Error ( -4 ) ==========>\n", "   Problem : No response from TARGET\n",
      "   Solution: Make sure Target Loader is running properly\n",
      "\t   Connect your Serial Cabel Properly\n", "\t   Port Settings are not Correct \n",
      "\t   Retransmit UART File\n"}},
    {-3,
     ReportColour::kError,
     {"\n<========== Error ( -3 ) ==========>\n", "   Problem : Invalid HeaderEnd\n",
      "   Solution: Regenerate UART File\n"}},
    {-2,
     ReportColour::kError,
     {"\n<========== Error ( -2 ) ==========>\n",
      "   Problem : Packet size greater than 3000.  Upload does't support it\n",
      "   Solution: Regenerate UART File\n"}},
    {-1,
     ReportColour::kError,
     {"\n<========== Error ( -1 ) ==========>\n", "   Problem : Invalid HeaderStart\n",
      "   Solution: Regenerate UART File\n"}},
    {1, ReportColour::kSuccess, {"\r\n<========== Upload Success ==========>\r\n"}},
    {2, ReportColour::kSuccess, {"\r\n<========== Download script upload Success ==========>\r\n"}},
    {3, ReportColour::kSuccess, {"\r\n<========== Download Success ==========>\r\n"}},
    {4,
     ReportColour::kError,
     {"\n<========== Error ( 4 ) ==========>\n",
      "   Problem : You are trying to download same version of software\n",
      "   Solution: Retransmit UART File after Erasing Software Signature which is in EEPROM.\n"}},
    {19,
     ReportColour::kError,
     {"\n<========== Error ( 19 ) ==========>\n",
      "   Problem : Target Waiting for some other control(s)/data(s) from HOST\n",
      "   Solution: Retransmit UART File after Restarting the TARGET\n"}},
    {23,
     ReportColour::kError,
     {"\n<========== Terminated by user ==========>\n",
      "   Please Switch Off the Board and then Transmit\n"}},
};

}  // namespace

LoaderReport LoaderReportOf(int code) {
  const auto* row = std::find_if(std::begin(kReports), std::end(kReports),
                                 [code](const ReportRow& candidate) { return candidate.code == code; });
  LoaderReport report;
  if (row == std::end(kReports)) return report;
  report.colour = row->colour;
  for (const char* piece : row->pieces) {
    if (piece) report.text += piece;
  }
  return report;
}

std::string LoaderProblemOf(int code) {
  constexpr std::string_view kBegin = "Problem : ";
  const std::string text = LoaderReportOf(code).text;
  const size_t begin = text.find(kBegin);
  if (begin == text.npos) return {};
  return text.substr(begin + kBegin.size(), text.find('\n', begin) - begin - kBegin.size());
}

void ReportLoaderStatus(const ReportTarget& target, int code) {
  const LoaderReport report = LoaderReportOf(code);
  if (target.focus) target.focus();
  if (target.download || target.frame_upload || report.text.empty() || !target.append) return;
  target.append(report.text, report.colour);
}

}  // namespace vexa
