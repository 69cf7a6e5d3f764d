// The system tables of the console, refilled from the program's state before
// each query that names them.
#include <algorithm>
#include <cctype>
#include <cstdio>

#include "chess/book/book.h"
#include "chess/driver/console.h"
#include "chess/engine/engine.h"
#include "chess/engine/soul.h"
#include "chess/tourney/results_file.h"

namespace kbuChess {

using kobubase::SqlColumn;
using kobubase::SqlRow;

namespace {

// Points of a finished game for White: 2 a win, 1 a draw, 0 a loss (halved in SQL).
const char* const STANDINGS_VIEW =
    "CREATE VIEW IF NOT EXISTS standings AS "
    "SELECT name, COUNT(*) AS games, SUM(points) / 2.0 AS points, "
    "ROUND(100.0 * SUM(points) / (2 * COUNT(*)), 1) AS score, ROUND(100.0 * SUM(points = 1) / COUNT(*), 1) AS draws "
    "FROM (SELECT white AS name, CASE result WHEN '1-0' THEN 2 WHEN '1/2-1/2' THEN 1 ELSE 0 END AS points "
    "FROM games WHERE result <> '*' "
    "UNION ALL SELECT black, CASE result WHEN '0-1' THEN 2 WHEN '1/2-1/2' THEN 1 ELSE 0 END "
    "FROM games WHERE result <> '*') GROUP BY name ORDER BY points DESC, name";

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

// Every record mixed in order; a changed count or key changes the digest.
std::uint64_t bookDigest(const clsBook& book) {
  std::uint64_t digest = 0x9E3779B97F4A7C15ull ^ book.count();
  for (const BookRecord& r : book.records()) {
    digest = (digest ^ r.key) * 0x100000001B3ull;
    digest = (digest ^ (std::uint64_t{r.wins} << 40 ^ std::uint64_t{r.losses} << 20 ^ r.draws)) * 0x100000001B3ull;
  }
  return digest | 1;  // never 0, which stands for "not filled"
}

// "1 game", "3 games".
std::string countText(std::size_t count, const char* noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

}  // namespace

void clsConsole::refreshTables(const std::string& sql, std::vector<std::string>& problems) {
  std::string error;
  if (mentions(sql, "souls") && !fillSouls(error)) problems.push_back("souls: " + error);
  if (mentions(sql, "book") && !fillBook(error)) problems.push_back("book: " + error);
  if (mentions(sql, "book_all") && !fillBookAll(error)) problems.push_back("book_all: " + error);
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

bool clsConsole::fillBookAll(std::string& error) {
  const std::uint64_t digest = bookDigest(book_);
  if (digest == bookAllDigest_) return true;
  std::vector<SqlColumn> columns{{"key", "TEXT"}};
  for (SqlColumn& column : countColumns()) columns.push_back(column);
  std::size_t next = 0;
  bookAllDigest_ = 0;
  const bool filled = database_.replaceTable(
      "book_all", columns,
      [&](SqlRow& row) {
        if (next == book_.count()) return false;
        const clsBookEntry entry(book_.at(next++));
        row.emplace_back(keyText(entry.key));
        addCounts(row, entry);
        return true;
      },
      error);
  if (filled) bookAllDigest_ = digest;
  return filled;
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
                      std::int64_t{g.plies}, g.ms});
    }
  }
  const std::vector<SqlColumn> columns{{"file", "TEXT"},   {"round", "INTEGER"}, {"game", "INTEGER"},
                                       {"white", "TEXT"},  {"black", "TEXT"},    {"result", "TEXT"},
                                       {"reason", "TEXT"}, {"plies", "INTEGER"}, {"ms", "INTEGER"}};
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
  std::vector<std::string> lines{
      "results: " + path + " added to games with " + countText(games.size(), "game") +
      (problems.empty() ? "" : ", " + countText(problems.size(), "bad line") + " skipped")};
  for (const std::string& problem : problems) lines.push_back("results: " + path + ": " + problem);
  return lines;
}

}  // namespace kbuChess
