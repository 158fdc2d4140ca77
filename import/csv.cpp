#include "import/csv.h"

#include <algorithm>

#include "import/sdb_builder.h"

namespace vexa {

namespace {

// Of the first line, outside quotes: what parts its cells.
char SeparatorOf(std::string_view text) {
  bool quoted = false;
  for (const char c : text) {
    if (c == '"') quoted = !quoted;
    if (quoted) continue;
    if (c == ',' || c == ';' || c == '\t') return c;
    if (c == '\n') break;
  }
  return ',';
}

struct Reader {
  std::string_view text;
  char separator = ',';
  size_t at = 0, line = 1;

  bool Ended() const { return at >= text.size(); }
  bool AtLineEnd() const {
    return Ended() || text[at] == '\n' || (text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n');
  }

  std::string TakeQuoted(size_t row_line) {
    std::string cell;
    for (++at; !Ended(); ++at) {
      if (text[at] == '\n') ++line;
      if (text[at] != '"') {
        cell += text[at];
      } else if (at + 1 < text.size() && text[at + 1] == '"') {
        cell += text[at++];
      } else {
        ++at;
        if (!AtLineEnd() && text[at] != separator)
          throw Misfit{"line " + std::to_string(row_line), "has text behind a quoted cell"};
        return cell;
      }
    }
    throw Misfit{"line " + std::to_string(row_line), "has a quoted cell without end"};
  }

  std::string TakeCell(size_t row_line) {
    if (!Ended() && text[at] == '"') return TakeQuoted(row_line);
    std::string cell;
    for (; !AtLineEnd() && text[at] != separator; ++at) cell += text[at];
    return cell;
  }

  CsvRow TakeRow() {
    CsvRow row{line, {}};
    row.cells.push_back(TakeCell(row.line));
    while (!AtLineEnd()) {
      ++at;  // the separator
      row.cells.push_back(TakeCell(row.line));
    }
    if (!Ended()) {
      at += text[at] == '\r' ? 2 : 1;
      ++line;
    }
    return row;
  }
};

}  // namespace

std::vector<CsvRow> ParseCsv(std::string_view text) {
  constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  Reader reader{text, SeparatorOf(text)};
  std::vector<CsvRow> rows;
  while (!reader.Ended()) {
    CsvRow row = reader.TakeRow();
    if (row.cells.size() > 1 || !row.cells[0].empty()) rows.push_back(std::move(row));
  }
  return rows;
}

void AppendCsvRow(std::string& text, const std::vector<std::string>& cells) {
  for (size_t i = 0; i < cells.size(); ++i) {
    if (i != 0) text += ',';
    if (cells[i].find_first_of(",\"\r\n") == std::string::npos) {
      text += cells[i];
      continue;
    }
    text += '"';
    for (const char c : cells[i]) text.append(c == '"' ? 2 : 1, c);
    text += '"';
  }
  text += "\r\n";
}

}  // namespace vexa
