// SQLite's virtual-table callbacks for live tables. Each table is its own
// module with an eponymous table of the same name, so it exists in every
// schema without a CREATE statement. Scans run from the first row to the
// last; a WHERE clause filters what the scan returns.
#include "base/sql/live_table.h"

#include <sqlite3.h>

#include <memory>

namespace kobubase {

namespace {

struct LiveModuleData {
  std::string declaration;  // "CREATE TABLE x(...)" as the module declares it
  std::unique_ptr<clsLiveTable> source;
};

struct LiveVtab : sqlite3_vtab {
  const clsLiveTable* source = nullptr;
};

struct LiveCursor : sqlite3_vtab_cursor {
  std::size_t row = 0;
};

const clsLiveTable& sourceOf(sqlite3_vtab_cursor* cursor) {
  return *static_cast<LiveVtab*>(cursor->pVtab)->source;
}

int liveConnect(sqlite3* db, void* aux, int, const char* const*, sqlite3_vtab** table, char**) {
  const auto* data = static_cast<const LiveModuleData*>(aux);
  const int rc = sqlite3_declare_vtab(db, data->declaration.c_str());
  if (rc != SQLITE_OK) return rc;
  auto* vtab = new LiveVtab{};
  vtab->source = data->source.get();
  *table = vtab;
  return SQLITE_OK;
}

int liveDisconnect(sqlite3_vtab* table) {
  delete static_cast<LiveVtab*>(table);
  return SQLITE_OK;
}

int liveBestIndex(sqlite3_vtab* table, sqlite3_index_info* info) {
  const auto rows = static_cast<double>(static_cast<LiveVtab*>(table)->source->rowCount());
  info->estimatedCost = rows + 1;
  info->estimatedRows = static_cast<sqlite3_int64>(rows);
  return SQLITE_OK;
}

int liveOpen(sqlite3_vtab*, sqlite3_vtab_cursor** cursor) {
  *cursor = new LiveCursor{};
  return SQLITE_OK;
}

int liveClose(sqlite3_vtab_cursor* cursor) {
  delete static_cast<LiveCursor*>(cursor);
  return SQLITE_OK;
}

int liveFilter(sqlite3_vtab_cursor* cursor, int, const char*, int, sqlite3_value**) {
  static_cast<LiveCursor*>(cursor)->row = 0;
  return SQLITE_OK;
}

int liveNext(sqlite3_vtab_cursor* cursor) {
  ++static_cast<LiveCursor*>(cursor)->row;
  return SQLITE_OK;
}

int liveEof(sqlite3_vtab_cursor* cursor) {
  return static_cast<LiveCursor*>(cursor)->row >= sourceOf(cursor).rowCount();
}

int liveColumn(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column) {
  const SqlCell cell = sourceOf(cursor).cell(static_cast<LiveCursor*>(cursor)->row, column);
  if (const auto* n = std::get_if<std::int64_t>(&cell)) {
    sqlite3_result_int64(context, *n);
  } else if (const auto* d = std::get_if<double>(&cell)) {
    sqlite3_result_double(context, *d);
  } else if (const auto* s = std::get_if<std::string>(&cell)) {
    sqlite3_result_text(context, s->data(), static_cast<int>(s->size()), SQLITE_TRANSIENT);
  } else {
    sqlite3_result_null(context);
  }
  return SQLITE_OK;
}

int liveRowid(sqlite3_vtab_cursor* cursor, sqlite3_int64* rowid) {
  *rowid = static_cast<sqlite3_int64>(static_cast<LiveCursor*>(cursor)->row);
  return SQLITE_OK;
}

// Present so that writes reach the authorizer, which refuses them with the
// same message as for every other system table.
int liveUpdate(sqlite3_vtab* table, int, sqlite3_value**, sqlite3_int64*) {
  table->zErrMsg = sqlite3_mprintf("not authorized");
  return SQLITE_AUTH;
}

const sqlite3_module& liveModule() {
  static const sqlite3_module module = [] {
    sqlite3_module m{};
    m.xConnect = liveConnect;  // no xCreate: the table is eponymous only
    m.xBestIndex = liveBestIndex;
    m.xDisconnect = liveDisconnect;
    m.xDestroy = liveDisconnect;
    m.xOpen = liveOpen;
    m.xClose = liveClose;
    m.xFilter = liveFilter;
    m.xNext = liveNext;
    m.xEof = liveEof;
    m.xColumn = liveColumn;
    m.xRowid = liveRowid;
    m.xUpdate = liveUpdate;
    return m;
  }();
  return module;
}

}  // namespace

bool clsDatabase::addLiveTable(const std::string& name, const std::vector<SqlColumn>& columns,
                               std::unique_ptr<clsLiveTable> source, std::string& error) {
  if (!db_ || columns.empty() || !source) {
    error = !db_ ? "no database" : "a live table needs columns and a source";
    return false;
  }
  auto data = std::make_unique<LiveModuleData>();
  data->declaration = "CREATE TABLE x(";
  for (std::size_t i = 0; i < columns.size(); ++i) {
    data->declaration += (i ? ", " : "") + quoteIdentifier(columns[i].name) + " " + columns[i].type;
  }
  data->declaration += ")";
  data->source = std::move(source);
  // SQLite owns the module data from here and frees it with the module, also on failure.
  const int rc = sqlite3_create_module_v2(db_, name.c_str(), &liveModule(), data.release(),
                                          [](void* aux) { delete static_cast<LiveModuleData*>(aux); });
  if (rc != SQLITE_OK) error = sqlite3_errmsg(db_);
  return rc == SQLITE_OK;
}

}  // namespace kobubase
