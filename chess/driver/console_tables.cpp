// The system tables of the console, refilled from the program's state before
// each query that names them.
#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>

#include "base/sql/live_table.h"
#include "chess/book/book.h"
#include "chess/driver/console.h"
#include "chess/engine/engine.h"
#include "chess/engine/soul.h"
#include "chess/tourney/match_stats.h"
#include "chess/tourney/results_file.h"

namespace kbuChess {

using kobubase::SqlColumn;
using kobubase::SqlRow;

namespace {

// Points in half-points as the tournament counts them (white_points, -1 for
// a game without a result), halved here.
const char* const STANDINGS_VIEW =
    "CREATE VIEW IF NOT EXISTS standings AS "
    "SELECT name, COUNT(*) AS games, SUM(points) / 2.0 AS points, "
    "ROUND(100.0 * SUM(points) / (2 * COUNT(*)), 1) AS score, ROUND(100.0 * SUM(points = 1) / COUNT(*), 1) AS draws "
    "FROM (SELECT white AS name, white_points AS points FROM games WHERE white_points >= 0 "
    "UNION ALL SELECT black, 2 - white_points FROM games WHERE white_points >= 0) GROUP BY name "
    "ORDER BY points DESC, name";

// Whether the query names the table as a whole word, in any case.
bool mentions(const std::string& sql, const std::string& name) {
  auto word = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; };
  for (std::size_t at = 0; at + name.size() <= sql.size(); ++at) {
    bool same = true;
    for (std::size_t i = 0; same && i < name.size(); ++i) {
      same = std::tolower(static_cast<unsigned char>(sql[at + i])) == name[i];
    }
    if (same && (at == 0 || !word(sql[at - 1])) && (at + name.size() == sql.size() || !word(sql[at + name.size()]))) {
      return true;
    }
  }
  return false;
}

std::string keyText(u64 key) {
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(key));
  return text;
}

std::vector<SqlColumn> countColumns() {
  return {{"wins", "INTEGER"}, {"losses", "INTEGER"}, {"draws", "INTEGER"}, {"games", "INTEGER"}, {"score", "INTEGER"}};
}

void addCounts(SqlRow& row, const clsBookEntry& entry) {
  row.emplace_back(std::int64_t{entry.wins});
  row.emplace_back(std::int64_t{entry.losses});
  row.emplace_back(std::int64_t{entry.draws});
  row.emplace_back(static_cast<std::int64_t>(entry.games()));
  row.emplace_back(std::int64_t{entry.score()});
}

SqlRow soulRow(const Soul& soul, const char* kind) {
  SqlRow row{soul.name, std::string(kind)};
  for (const i32 value : soul.values) row.emplace_back(std::int64_t{value});
  return row;
}

// book_all: the loaded book's records read in place at every query.
class clsBookAllRows : public kobubase::clsLiveTable {
 public:
  explicit clsBookAllRows(const clsBook& book) : book_(book) {}
  std::size_t rowCount() const override { return book_.count(); }
  kobubase::SqlCell cell(std::size_t row, int column) const override {
    const clsBookEntry entry(book_.at(row));
    switch (column) {
      case 0: return keyText(entry.key);
      case 1: return std::int64_t{entry.wins};
      case 2: return std::int64_t{entry.losses};
      case 3: return std::int64_t{entry.draws};
      case 4: return static_cast<std::int64_t>(entry.games());
      default: return std::int64_t{entry.score()};
    }
  }

 private:
  const clsBook& book_;
};

// "1 game", "3 games".
std::string countText(std::size_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

void clsConsole::refreshTables(const std::string& sql, std::vector<std::string>& problems) {
  std::string error;
  if (mentions(sql, "souls") && !fillSouls(error)) problems.push_back("souls: " + error);
  if (mentions(sql, "book") && !fillBook(error)) problems.push_back("book: " + error);
  if (mentions(sql, "options") && !fillOptions(error)) problems.push_back("options: " + error);
  if (mentions(sql, "games") || mentions(sql, "standings")) {
    if (fillGames(problems) && !database_.exec(STANDINGS_VIEW, error)) problems.push_back("standings: " + error);
  }
}

bool clsConsole::fillSouls(std::string& error) {
  std::vector<SqlColumn> columns{{"name", "TEXT"}, {"kind", "TEXT"}};
  for (int i = 1; i <= SOUL_SIZE; ++i) columns.push_back({std::to_string(i).insert(0, 1, 'v'), "INTEGER"});
  std::vector<SqlRow> rows;
  for (const char* preset : SOUL_PRESETS) rows.push_back(soulRow(parseSoul(preset), "preset"));
  rows.push_back(soulRow(Soul{engine_.soulName(), engine_.soulValues()}, "current"));
  return database_.replaceTable("souls", columns, rows, error);
}

bool clsConsole::fillBook(std::string& error) {
  std::vector<clsBookEntryExt> list;
  book_.listCandidates(engine_, list);
  std::vector<SqlColumn> columns{{"move", "TEXT"}, {"key", "TEXT"}};
  for (SqlColumn& column : countColumns()) columns.push_back(column);
  std::vector<SqlRow> rows;
  for (const clsBookEntryExt& candidate : list) {
    SqlRow row{candidate.move, keyText(candidate.key)};
    addCounts(row, candidate);
    rows.push_back(std::move(row));
  }
  return database_.replaceTable("book", columns, rows, error);
}

void clsConsole::addBookAll() {
  std::vector<SqlColumn> columns{{"key", "TEXT"}};
  for (SqlColumn& column : countColumns()) columns.push_back(column);
  std::string error;
  if (!database_.addLiveTable("book_all", columns, std::make_unique<clsBookAllRows>(book_), error)) {
    engine_.output().print("# error: book_all: " + error);
  }
}

bool clsConsole::fillOptions(std::string& error) {
  std::vector<SqlRow> rows;
  for (const auto& [name, value] : commandLine_.pairs()) rows.push_back({std::string("command line"), name, value});
  for (const auto& [name, value] : engine_.runtimeOptions().pairs())
    rows.push_back({std::string("run-time"), name, value});
  return database_.replaceTable("options", {{"source", "TEXT"}, {"name", "TEXT"}, {"value", "TEXT"}}, rows, error);
}

bool clsConsole::fillGames(std::vector<std::string>& problems) {
  std::vector<std::string> files = resultsFilesOfThisProcess();
  for (const std::string& path : loadedResults_) {
    if (std::find(files.begin(), files.end(), path) == files.end()) files.push_back(path);
  }
  std::vector<SqlRow> rows;
  for (const std::string& path : files) {
    std::vector<GameResultRow> games;
    std::vector<std::string> fileProblems;
    readResultsFile(path, games, fileProblems);
    for (const std::string& problem : fileProblems) problems.push_back("games: " + path + ": " + problem);
    for (const GameResultRow& g : games) {
      rows.push_back({path, std::int64_t{g.round}, std::int64_t{g.game}, g.white, g.black, g.result, g.reason,
                      std::int64_t{g.plies}, g.ms, std::int64_t{whiteHalfPoints(g.result)}});
    }
  }
  const std::vector<SqlColumn> columns{
      {"file", "TEXT"},   {"round", "INTEGER"}, {"game", "INTEGER"},  {"white", "TEXT"}, {"black", "TEXT"},
      {"result", "TEXT"}, {"reason", "TEXT"},   {"plies", "INTEGER"}, {"ms", "INTEGER"}, {"white_points", "INTEGER"}};
  std::string error;
  if (database_.replaceTable("games", columns, rows, error)) return true;
  problems.push_back("games: " + error);
  return false;
}

std::vector<std::string> clsConsole::loadResults(const std::string& path) {
  std::vector<GameResultRow> games;
  std::vector<std::string> problems;
  if (!readResultsFile(path, games, problems)) {
    problems.insert(problems.begin(), "results: cannot load " + path);
    return problems;
  }
  if (std::find(loadedResults_.begin(), loadedResults_.end(), path) == loadedResults_.end()) {
    loadedResults_.push_back(path);
  }
  std::vector<std::string> lines{"results: " + path + " added to games with " + countText(games.size(), "game") +
                                 (problems.empty() ? "" : ", " + countText(problems.size(), "bad line") + " skipped")};
  for (const std::string& problem : problems) lines.push_back("results: " + path + ": " + problem);
  return lines;
}

}  // namespace kbuChess
