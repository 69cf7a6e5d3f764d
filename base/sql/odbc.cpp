#include "base/sql/odbc.h"

#include <sql.h>
#include <sqlext.h>

#include <cctype>

namespace kobubase {

namespace {

constexpr SQLLEN TEXT_CHUNK = 4096;
constexpr std::size_t MAX_TEXT = 1 << 24;  // longer cells are cut here

// The handles of one connection, released in reverse order.
struct OdbcHandles {
  SQLHENV env = SQL_NULL_HENV;
  SQLHDBC dbc = SQL_NULL_HDBC;
  bool connected = false;
  ~OdbcHandles() {
    if (connected) SQLDisconnect(dbc);
    if (dbc != SQL_NULL_HDBC) SQLFreeHandle(SQL_HANDLE_DBC, dbc);
    if (env != SQL_NULL_HENV) SQLFreeHandle(SQL_HANDLE_ENV, env);
  }
};

// One statement handle, freed when it goes out of scope.
struct OdbcStatement {
  SQLHSTMT handle = SQL_NULL_HSTMT;
  explicit OdbcStatement(SQLHDBC dbc) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, dbc, &handle))) handle = SQL_NULL_HSTMT;
  }
  ~OdbcStatement() {
    if (handle != SQL_NULL_HSTMT) SQLFreeHandle(SQL_HANDLE_STMT, handle);
  }
};

// The first diagnostic record of a handle: "[state] message".
std::string diagnostic(SQLSMALLINT type, SQLHANDLE handle) {
  SQLCHAR state[8] = {0}, text[1024] = {0};
  SQLINTEGER native = 0;
  SQLSMALLINT length = 0;
  if (!SQL_SUCCEEDED(SQLGetDiagRec(type, handle, 1, state, &native, text, sizeof text, &length))) {
    return "no message from the driver manager";
  }
  return std::string(reinterpret_cast<char*>(text)) + " (" + reinterpret_cast<char*>(state) + ")";
}

bool plainName(const std::string& name) {
  if (name.empty() || std::isdigit(static_cast<unsigned char>(name[0]))) return false;
  for (const char c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c)) && c != '_') return false;
  }
  return true;
}

bool connect(OdbcHandles& odbc, const std::string& source, std::string& error) {
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &odbc.env)) ||
      !SQL_SUCCEEDED(SQLSetEnvAttr(odbc.env, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0)) ||
      !SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_DBC, odbc.env, &odbc.dbc))) {
    error = "the ODBC driver manager did not start";
    return false;
  }
  SQLSetConnectAttr(odbc.dbc, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(10), 0);
  std::string text = source;
  SQLRETURN status;
  if (source.find('=') != std::string::npos) {
    SQLCHAR out[1024];
    SQLSMALLINT outLength = 0;
    status = SQLDriverConnect(odbc.dbc, nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS, out, sizeof out,
                              &outLength, SQL_DRIVER_NOPROMPT);
  } else {
    status = SQLConnect(odbc.dbc, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS, nullptr, 0, nullptr, 0);
  }
  if (!SQL_SUCCEEDED(status)) {
    error = "cannot connect to " + source + ": " + diagnostic(SQL_HANDLE_DBC, odbc.dbc);
    return false;
  }
  odbc.connected = true;
  return true;
}

std::vector<std::string> tableNames(SQLHDBC dbc, std::string& error) {
  std::vector<std::string> names;
  OdbcStatement statement(dbc);
  SQLCHAR types[] = "TABLE";
  if (!SQL_SUCCEEDED(SQLTables(statement.handle, nullptr, 0, nullptr, 0, nullptr, 0, types, SQL_NTS))) {
    error = "cannot list the tables: " + diagnostic(SQL_HANDLE_STMT, statement.handle);
    return names;
  }
  while (SQL_SUCCEEDED(SQLFetch(statement.handle))) {
    SQLCHAR name[512] = {0};
    SQLLEN length = 0;
    if (SQL_SUCCEEDED(SQLGetData(statement.handle, 3, SQL_C_CHAR, name, sizeof name, &length)) && length > 0) {
      names.emplace_back(reinterpret_cast<char*>(name));
    }
  }
  return names;
}

std::string columnType(SQLSMALLINT odbcType) {
  switch (odbcType) {
    case SQL_BIT:
    case SQL_TINYINT:
    case SQL_SMALLINT:
    case SQL_INTEGER:
    case SQL_BIGINT: return "INTEGER";
    case SQL_REAL:
    case SQL_FLOAT:
    case SQL_DOUBLE:
    case SQL_DECIMAL:
    case SQL_NUMERIC: return "REAL";
    default: return "TEXT";
  }
}

// One cell of the current row, read as the column's kind.
SqlCell readCell(SQLHSTMT statement, SQLUSMALLINT column, const std::string& type) {
  SQLLEN indicator = 0;
  if (type == "INTEGER") {
    SQLBIGINT n = 0;
    if (!SQL_SUCCEEDED(SQLGetData(statement, column, SQL_C_SBIGINT, &n, 0, &indicator)) || indicator == SQL_NULL_DATA) {
      return nullptr;
    }
    return static_cast<std::int64_t>(n);
  }
  if (type == "REAL") {
    double d = 0;
    if (!SQL_SUCCEEDED(SQLGetData(statement, column, SQL_C_DOUBLE, &d, 0, &indicator)) || indicator == SQL_NULL_DATA) {
      return nullptr;
    }
    return d;
  }
  std::string text;
  char chunk[TEXT_CHUNK];
  for (;;) {  // long texts come in pieces, each ended by a zero byte
    const SQLRETURN status = SQLGetData(statement, column, SQL_C_CHAR, chunk, sizeof chunk, &indicator);
    if (!SQL_SUCCEEDED(status)) break;
    if (indicator == SQL_NULL_DATA) return nullptr;
    const bool more = status == SQL_SUCCESS_WITH_INFO;
    text += more ? std::string(chunk, sizeof chunk - 1) : std::string(chunk);
    if (!more || text.size() > MAX_TEXT) break;
  }
  return text;
}

bool copyTable(clsDatabase& db, SQLHDBC dbc, const std::string& table, const std::string& target,
               std::string& message) {
  OdbcStatement statement(dbc);
  std::string select = "SELECT * FROM " + quoteIdentifier(table);
  if (!SQL_SUCCEEDED(SQLExecDirect(statement.handle, reinterpret_cast<SQLCHAR*>(select.data()), SQL_NTS))) {
    message = "cannot read table " + table + ": " + diagnostic(SQL_HANDLE_STMT, statement.handle);
    return false;
  }
  SQLSMALLINT count = 0;
  SQLNumResultCols(statement.handle, &count);
  std::vector<SqlColumn> columns;
  for (SQLUSMALLINT i = 1; i <= count; ++i) {
    SQLCHAR name[256] = {0};
    SQLSMALLINT nameLength = 0, type = 0, digits = 0, nullable = 0;
    SQLULEN size = 0;
    SQLDescribeCol(statement.handle, i, name, sizeof name, &nameLength, &type, &size, &digits, &nullable);
    columns.push_back(SqlColumn{reinterpret_cast<char*>(name), columnType(type)});
  }
  std::int64_t rows = 0;
  std::string error;
  const bool copied = db.replaceTable(
      target, columns,
      [&](SqlRow& row) {
        if (!SQL_SUCCEEDED(SQLFetch(statement.handle))) return false;
        for (SQLUSMALLINT i = 1; i <= count; ++i) row.push_back(readCell(statement.handle, i, columns[i - 1].type));
        ++rows;
        return true;
      },
      error);
  message = copied ? "table " + table + " copied as " + target + " (" + std::to_string(rows) +
                         (rows == 1 ? " row)" : " rows)")
                   : "cannot copy table " + table + ": " + error;
  return copied;
}

}  // namespace

bool attachOdbc(clsDatabase& db, const std::string& source, const std::string& prefix,
                std::vector<std::string>& messages) {
  if (!plainName(prefix)) {
    messages.push_back("odbc: the name '" + prefix + "' must be letters, digits and '_'");
    return false;
  }
  OdbcHandles odbc;
  std::string error;
  if (!connect(odbc, source, error)) {
    messages.push_back("odbc: " + error);
    return false;
  }
  const std::vector<std::string> tables = tableNames(odbc.dbc, error);
  if (!error.empty() || tables.empty()) {
    messages.push_back("odbc: " + (error.empty() ? "no tables in " + source : error));
    return false;
  }
  int copied = 0;
  for (const std::string& table : tables) {
    std::string message;
    copied += copyTable(db, odbc.dbc, table, prefix + "_" + table, message) ? 1 : 0;
    messages.push_back("odbc: " + message);
  }
  return copied > 0;
}

}  // namespace kobubase
