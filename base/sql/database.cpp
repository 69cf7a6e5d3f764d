#include "base/sql/database.h"

#include <sqlite3.h>

#include <chrono>

namespace kobubase {

namespace {

// Called by SQLite every few thousand steps; a non-zero answer interrupts.
int progressCheck(void* deadline) {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count() > *static_cast<std::int64_t*>(deadline);
}

SqlCell columnCell(sqlite3_stmt* statement, int i) {
  switch (sqlite3_column_type(statement, i)) {
    case SQLITE_INTEGER: return static_cast<std::int64_t>(sqlite3_column_int64(statement, i));
    case SQLITE_FLOAT: return sqlite3_column_double(statement, i);
    case SQLITE_NULL: return nullptr;
    default: {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
      return std::string(text ? text : "", static_cast<std::size_t>(sqlite3_column_bytes(statement, i)));
    }
  }
}

std::size_t rowBytes(const SqlRow& row) {
  std::size_t bytes = 0;
  for (const SqlCell& cell : row) {
    const auto* text = std::get_if<std::string>(&cell);
    bytes += text ? text->size() : 8;
  }
  return bytes;
}

bool bindCell(sqlite3_stmt* statement, int i, const SqlCell& cell) {
  if (const auto* n = std::get_if<std::int64_t>(&cell)) return sqlite3_bind_int64(statement, i, *n) == SQLITE_OK;
  if (const auto* d = std::get_if<double>(&cell)) return sqlite3_bind_double(statement, i, *d) == SQLITE_OK;
  if (const auto* s = std::get_if<std::string>(&cell)) {
    return sqlite3_bind_text(statement, i, s->data(), static_cast<int>(s->size()), SQLITE_TRANSIENT) == SQLITE_OK;
  }
  return sqlite3_bind_null(statement, i) == SQLITE_OK;
}

std::int64_t nowMs() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

}  // namespace

clsDatabase::clsDatabase() {
  if (sqlite3_open(":memory:", &db_) != SQLITE_OK) {
    sqlite3_close(db_);
    db_ = nullptr;
    return;
  }
  // Defensive: no query can write the schema itself (writable_schema) and break every table.
  sqlite3_db_config(db_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_set_authorizer(db_, authorize, this);
}

// Refuses writes to the read-only tables, and new tables or views of their
// names: SQLite then fails the statement with "not authorized".
int clsDatabase::authorize(void* self, int action, const char* a, const char* b, const char*, const char*) {
  const auto* db = static_cast<const clsDatabase*>(self);
  if (db->filling_) return SQLITE_OK;
  const char* table = nullptr;
  switch (action) {
    case SQLITE_INSERT:
    case SQLITE_UPDATE:
    case SQLITE_DELETE:
    case SQLITE_DROP_TABLE:
    // A table or view of a system table's name would hide it.
    case SQLITE_CREATE_TABLE:
    case SQLITE_CREATE_TEMP_TABLE:
    case SQLITE_CREATE_VIEW:
    case SQLITE_CREATE_TEMP_VIEW:
    case SQLITE_CREATE_VTABLE:
    case SQLITE_CREATE_INDEX: table = action == SQLITE_CREATE_INDEX ? b : a; break;
    case SQLITE_ALTER_TABLE: table = b; break;
    default: return SQLITE_OK;
  }
  if (!table) return SQLITE_OK;
  for (const std::string& name : db->readOnly_) {
    if (sqlite3_stricmp(name.c_str(), table) == 0) return SQLITE_DENY;
  }
  return SQLITE_OK;
}

clsDatabase::~clsDatabase() {
  sqlite3_close(db_);
}

SqlResult clsDatabase::query(const std::string& sql) {
  SqlResult result;
  if (!db_) return SqlResult{false, "no database", {}, {}, 0, 0};
  std::int64_t deadline = nowMs() + queryLimitMs_;
  sqlite3_progress_handler(db_, 10000, progressCheck, &deadline);
  const char* tail = sql.c_str();
  const int before = sqlite3_total_changes(db_);
  while (tail && *tail) {
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v2(db_, tail, -1, &statement, &tail) != SQLITE_OK) {
      result = SqlResult{false, sqlite3_errmsg(db_), {}, {}, 0, 0};
      break;
    }
    if (!statement) continue;  // blanks or a comment
    const int columns = sqlite3_column_count(statement);
    if (columns > 0) {
      result.columns.clear();
      result.rows.clear();
      result.dropped = 0;
      for (int i = 0; i < columns; ++i) result.columns.emplace_back(sqlite3_column_name(statement, i));
    }
    int step;
    std::size_t bytes = 0;
    while ((step = sqlite3_step(statement)) == SQLITE_ROW) {
      if (result.rows.size() < MAX_RESULT_ROWS && !result.cut) {
        SqlRow row;
        for (int i = 0; i < columns; ++i) row.push_back(columnCell(statement, i));
        bytes += rowBytes(row);
        result.cut = bytes > MAX_RESULT_BYTES;
        if (!result.cut) {
          result.rows.push_back(std::move(row));
          continue;
        }
      }
      ++result.dropped;
    }
    if (step != SQLITE_DONE) result = SqlResult{false, sqlite3_errmsg(db_), {}, {}, 0, 0};
    sqlite3_finalize(statement);
    if (!result.ok) break;
  }
  sqlite3_progress_handler(db_, 0, nullptr, nullptr);
  result.changes = sqlite3_total_changes(db_) - before;
  return result;
}

bool clsDatabase::exec(const std::string& sql, std::string& error) {
  const SqlResult result = query(sql);
  if (!result.ok) error = result.error;
  return result.ok;
}

bool clsDatabase::replaceTable(const std::string& name, const std::vector<SqlColumn>& columns,
                               const std::function<bool(SqlRow&)>& nextRow, std::string& error) {
  if (columns.empty()) {
    error = "a table needs a column";
    return false;
  }
  std::string create = "CREATE TABLE " + quoteIdentifier(name) + " (";
  std::string insert = "INSERT INTO " + quoteIdentifier(name) + " VALUES (";
  for (std::size_t i = 0; i < columns.size(); ++i) {
    create += (i ? ", " : "") + quoteIdentifier(columns[i].name) + " " + columns[i].type;
    insert += i ? ", ?" : "?";
  }
  filling_ = true;
  const bool good = fillTable(name, columns, create + ")", insert + ")", nextRow, error);
  filling_ = false;
  return good;
}

bool clsDatabase::fillTable(const std::string& name, const std::vector<SqlColumn>& columns, const std::string& create,
                            const std::string& insert, const std::function<bool(SqlRow&)>& nextRow,
                            std::string& error) {
  if (!exec("BEGIN; DROP TABLE IF EXISTS " + quoteIdentifier(name) + "; " + create + ";", error)) {
    std::string ignored;
    exec("ROLLBACK", ignored);
    return false;
  }
  sqlite3_stmt* statement = nullptr;
  bool good = sqlite3_prepare_v2(db_, insert.c_str(), -1, &statement, nullptr) == SQLITE_OK;
  SqlRow row;
  const SqlCell null{nullptr};
  while (good && nextRow(row)) {
    for (std::size_t i = 0; good && i < columns.size(); ++i) {
      good = bindCell(statement, static_cast<int>(i) + 1, i < row.size() ? row[i] : null);  // no copy of the cell
    }
    good = good && sqlite3_step(statement) == SQLITE_DONE;
    sqlite3_reset(statement);
    row.clear();
  }
  if (!good) error = sqlite3_errmsg(db_);
  sqlite3_finalize(statement);
  std::string ignored;
  return exec(good ? "COMMIT" : "ROLLBACK", good ? error : ignored) && good;
}

bool clsDatabase::replaceTable(const std::string& name, const std::vector<SqlColumn>& columns,
                               const std::vector<SqlRow>& rows, std::string& error) {
  std::size_t next = 0;
  return replaceTable(
      name, columns,
      [&](SqlRow& row) {
        if (next == rows.size()) return false;
        row = rows[next++];
        return true;
      },
      error);
}

std::string quoteIdentifier(const std::string& name) {
  std::string text = "\"";
  for (const char c : name) {
    if (c == '"') text += '"';
    text += c;
  }
  return text + "\"";
}

}  // namespace kobubase
