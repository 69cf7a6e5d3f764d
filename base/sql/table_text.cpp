// The aligned text form of a query result.
#include <cstdio>

#include "base/sql/database.h"

namespace kobubase {

std::string cellText(const SqlCell& cell) {
  if (const auto* n = std::get_if<std::int64_t>(&cell)) return std::to_string(*n);
  if (const auto* d = std::get_if<double>(&cell)) {
    char text[64];
    std::snprintf(text, sizeof text, "%.6g", *d);
    return text;
  }
  if (const auto* s = std::get_if<std::string>(&cell)) return *s;
  return "NULL";
}

std::vector<std::string> tableLines(const SqlResult& result, std::size_t maxRows) {
  if (!result.ok) return {"error: " + result.error};
  if (result.columns.empty()) return {std::to_string(result.changes).insert(0, 1, '(') + " rows changed)"};
  std::size_t shown = result.rows.size() < maxRows ? result.rows.size() : maxRows;
  std::vector<std::size_t> width;
  for (const std::string& name : result.columns) width.push_back(name.size());
  std::vector<std::vector<std::string>> texts(shown);
  bool cellsCut = false;
  std::size_t bytes = 0;
  for (std::size_t r = 0; r < shown; ++r) {
    if (bytes > MAX_SHOWN_BYTES) {
      shown = r;
      texts.resize(shown);
      break;
    }
    for (std::size_t c = 0; c < result.columns.size(); ++c) {
      std::string text = c < result.rows[r].size() ? cellText(result.rows[r][c]) : "";
      if (text.size() > MAX_SHOWN_CELL) {
        text.resize(MAX_SHOWN_CELL);
        text += "...";
        cellsCut = true;
      }
      bytes += text.size() + 2;
      for (char& ch : text) {
        if (ch == '\n' || ch == '\r' || ch == '\t') ch = ' ';  // one row, one line
      }
      if (text.size() > width[c]) width[c] = text.size();
      texts[r].push_back(std::move(text));
    }
  }
  // A column without text cells holds numbers: it and its header align right.
  std::vector<bool> numeric(result.columns.size(), true);
  for (std::size_t r = 0; r < shown; ++r) {
    for (std::size_t c = 0; c < result.rows[r].size() && c < numeric.size(); ++c) {
      if (std::holds_alternative<std::string>(result.rows[r][c])) numeric[c] = false;
    }
  }
  auto line = [&](const std::vector<std::string>& cells) {
    std::string text;
    for (std::size_t c = 0; c < cells.size(); ++c) {
      const std::string pad(width[c] - cells[c].size(), ' ');
      if (c) text += "  ";
      text += numeric[c] ? pad + cells[c] : cells[c] + pad;
    }
    return text.erase(text.find_last_not_of(' ') + 1);
  };
  std::vector<std::string> lines{line(result.columns)};
  std::string rule;
  for (std::size_t c = 0; c < width.size(); ++c) rule += (c ? "  " : "") + std::string(width[c], '-');
  lines.push_back(rule);
  for (std::size_t r = 0; r < shown; ++r) lines.push_back(line(texts[r]));
  const std::size_t total = result.rows.size() + static_cast<std::size_t>(result.dropped);
  std::string count = std::to_string(total).insert(0, 1, '(') + (total == 1 ? " row" : " rows");
  if (shown < total) count += ", " + std::to_string(shown) + " shown";
  if (result.cut) count += ", rows beyond " + std::to_string(clsDatabase::MAX_RESULT_BYTES >> 20) + " MiB not kept";
  if (shown < result.rows.size() && shown < maxRows) {
    count += ", output cut at " + std::to_string(MAX_SHOWN_BYTES >> 20) + " MiB";
  }
  if (cellsCut) count += ", texts cut at " + std::to_string(MAX_SHOWN_CELL) + " characters";
  lines.push_back(count + ")");
  return lines;
}

}  // namespace kobubase
