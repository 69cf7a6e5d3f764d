#pragma once
// clsDatabase is the table layer of the console: one in-memory SQLite
// database that holds the system tables the program fills on demand, the
// tables copied from ODBC sources, and whatever the user creates with SQL.
// Queries are guarded: a query running longer than QUERY_LIMIT_MS is
// interrupted, so no statement can leave the console stuck.
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

struct sqlite3;

namespace kobubase {

class clsLiveTable;

// One cell: NULL, integer, real or text.
using SqlCell = std::variant<std::nullptr_t, std::int64_t, double, std::string>;
using SqlRow = std::vector<SqlCell>;

struct SqlColumn {
  std::string name;
  std::string type;  // "INTEGER", "REAL" or "TEXT"
};

// The rows of the last statement of a query, or the error that stopped it.
struct SqlResult {
  bool ok = true;
  std::string error;
  std::vector<std::string> columns;
  std::vector<SqlRow> rows;
  std::int64_t changes = 0;  // rows written by the statements
  std::int64_t dropped = 0;  // rows beyond MAX_RESULT_ROWS or MAX_RESULT_BYTES, counted only
  bool cut = false;          // rows were dropped for their size
};

class clsDatabase {
 public:
  static constexpr int QUERY_LIMIT_MS = 20000;
  // Rows kept of one result; the rest is counted but not held.
  static constexpr std::size_t MAX_RESULT_ROWS = 100000;
  // Bytes of cells kept of one result (texts, and 8 a number).
  static constexpr std::size_t MAX_RESULT_BYTES = std::size_t{16} << 20;

  clsDatabase();
  ~clsDatabase();
  clsDatabase(const clsDatabase&) = delete;
  clsDatabase& operator=(const clsDatabase&) = delete;

  bool ok() const { return db_ != nullptr; }
  // Tables that queries may read but not change, drop or alter (the
  // owner's system tables); replaceTable still fills them.
  void setReadOnlyTables(std::vector<std::string> names) { readOnly_ = std::move(names); }
  // How long one query may run before it is interrupted.
  void setQueryLimitMs(int ms) { queryLimitMs_ = ms; }
  // Runs every statement of the text; the result holds the rows of the last
  // statement that returned rows, or the first error.
  SqlResult query(const std::string& sql);
  // Runs statements that return nothing; false with SQLite's message.
  bool exec(const std::string& sql, std::string& error);
  // Drops the table if present and fills a new one from the rows that
  // nextRow hands out until it returns false; all in one transaction.
  bool replaceTable(const std::string& name, const std::vector<SqlColumn>& columns,
                    const std::function<bool(SqlRow&)>& nextRow, std::string& error);
  // The same from rows held in memory.
  bool replaceTable(const std::string& name, const std::vector<SqlColumn>& columns, const std::vector<SqlRow>& rows,
                    std::string& error);
  // Makes the source a table of this name that every query reads in place
  // (see live_table.h); the database keeps the source until it closes.
  bool addLiveTable(const std::string& name, const std::vector<SqlColumn>& columns,
                    std::unique_ptr<clsLiveTable> source, std::string& error);
  sqlite3* handle() { return db_; }

 private:
  bool fillTable(const std::string& name, const std::vector<SqlColumn>& columns, const std::string& create,
                 const std::string& insert, const std::function<bool(SqlRow&)>& nextRow, std::string& error);
  static int authorize(void* self, int action, const char* a, const char* b, const char*, const char*);

  sqlite3* db_ = nullptr;
  int queryLimitMs_ = QUERY_LIMIT_MS;
  std::vector<std::string> readOnly_;
  bool filling_ = false;  // replaceTable at work: the read-only rule does not apply
};

// "name" in double quotes with inner quotes doubled, safe as an SQL identifier.
std::string quoteIdentifier(const std::string& name);
// The result as an aligned table: a header line, a rule of dashes, the rows
// (numbers right-aligned, text left-aligned, NULL as "NULL") and a count line
// "(N rows)". At most maxRows rows and MAX_SHOWN_BYTES of them are shown, a
// cell's text is cut at MAX_SHOWN_CELL characters; the count line says how
// many rows exist and what was cut.
// An error result gives the one line "error: " and SQLite's message.
inline constexpr std::size_t MAX_SHOWN_BYTES = std::size_t{1} << 20;
inline constexpr std::size_t MAX_SHOWN_CELL = 1000;
std::vector<std::string> tableLines(const SqlResult& result, std::size_t maxRows = 200);
// A cell as text: integers in decimal, reals with up to six significant digits.
std::string cellText(const SqlCell& cell);

}  // namespace kobubase
