#include "chess/driver/console.h"

#include <cctype>

#include "base/sql/odbc.h"
#include "base/text.h"
#include "chess/book/book.h"

namespace kbuChess {

using kobubase::clsArgs;
using kobubase::Value;
using kobubase::trimmed;

namespace {

std::string joinLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += (text.empty() ? "" : "\n") + line;
  return text;
}

// Removes one pair of surrounding double quotes, so paths may hold blanks.
std::string unquoted(std::string text) {
  text = trimmed(text);
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') return text.substr(1, text.size() - 2);
  return text;
}

// The position of " AS " (any case) that separates the source from the name, or npos.
std::size_t findAs(const std::string& text) {
  for (std::size_t at = text.size(); at-- > 0;) {
    if (at + 4 <= text.size() && text[at] == ' ' && text[at + 3] == ' ' &&
        std::tolower(static_cast<unsigned char>(text[at + 1])) == 'a' &&
        std::tolower(static_cast<unsigned char>(text[at + 2])) == 's') {
      return at;
    }
  }
  return std::string::npos;
}

}  // namespace

clsConsole::clsConsole(clsEngine& engine, const clsBoard& position, clsBook& book,
                       const kobubase::clsOptions& commandLine)
    : engine_(engine), book_(book), commandLine_(commandLine) {
  kobubase::addGenericFunctions(interpreter_);
  addChessFunctions(interpreter_, position);
  addTableFunctions();
  addBookAll();
  database_.setReadOnlyTables({"souls", "book", "book_all", "options", "games"});
}

std::vector<std::string> clsConsole::welcomeLines() {
  return {
      "expression console: 64-bit masks, strings, booleans; exit returns to xboard, quit ends the program",
      "  popcount(pawns & us)               own pawns",
      "  board(knight(g1) | rook(a1))       attack sets as a diagram",
      "  x = e4 | d4                        a variable; vars lists them",
      "  between(a1, h8) == (b2 | c3 | d4 | e5 | f6 | g7)    true",
      "  sql(\"select name, v1 from souls\")  the tables souls, book, book_all, options, games, standings",
      "  help                               every function",
  };
}

std::vector<std::string> clsConsole::line(const std::string& text) {
  return interpreter_.execute(text);
}

void clsConsole::addTableFunctions() {
  interpreter_.addFunction("sql", 1, 1, "sql(query)",
                           [this](const clsArgs& a) { return Value::string(joinLines(query(a.string(0)))); });
  interpreter_.addFunction("results", 1, 1, "results(path)",
                           [this](const clsArgs& a) { return Value::string(joinLines(loadResults(a.string(0)))); });
}

std::vector<std::string> clsConsole::sqlCommand(const std::string& args) {
  const std::string text = trimmed(args);
  if (text.empty()) {
    return {"sql QUERY", "sql results PATH   adds an earlier run's results file to the games table",
            "tables: souls book book_all options games standings"};
  }
  if (text.rfind("results ", 0) == 0) return loadResults(unquoted(text.substr(8)));
  return query(text);
}

std::vector<std::string> clsConsole::query(const std::string& sql) {
  std::vector<std::string> lines;
  refreshTables(sql, lines);
  for (std::string& line : kobubase::tableLines(database_.query(sql))) lines.push_back(std::move(line));
  return lines;
}

std::vector<std::string> clsConsole::odbcCommand(const std::string& args) {
  const std::string text = trimmed(args);
  const std::size_t as = findAs(text);
  if (text.rfind("attach ", 0) != 0 || as == std::string::npos || as < 7) {
    return {"odbc attach DSN AS name", "odbc attach DRIVER=driver.so;Database=file AS name",
            "copies each table T of the source into the table name_T"};
  }
  std::vector<std::string> lines;
  kobubase::attachOdbc(database_, unquoted(text.substr(7, as - 7)), trimmed(text.substr(as + 4)), lines);
  return lines;
}

}  // namespace kbuChess
