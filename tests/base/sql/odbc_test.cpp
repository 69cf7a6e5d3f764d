// The ODBC connector against Debian's SQLite ODBC driver: a database file
// written here is attached by connection string and by a data source name
// from an odbc.ini of the test's own, then joined with a local table.
#include "base/sql/odbc.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

// The SQLite ODBC driver leaks the few bytes of the settings it reads for a
// data source name on every connect; that is its own leak, not ours. Its code
// has no frame pointers, so the leak checker needs the slow unwinder to see
// the driver in the allocation's stack.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libsqlite3odbc.so\n";
}
extern "C" const char* __asan_default_options() {
  return "fast_unwind_on_malloc=0";
}

namespace {

using kobubase::clsDatabase;
using kobubase::tableLines;
using Lines = std::vector<std::string>;

class OdbcTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    ASSERT_TRUE(std::filesystem::exists(SQLITE_ODBC_DRIVER)) << "install Debian's libsqliteodbc";
    // Kept loaded, so that the leak checker can still name the driver at exit.
    dlopen(SQLITE_ODBC_DRIVER, RTLD_NOW | RTLD_NODELETE);
    char pattern[] = "/tmp/talvena_odbc_XXXXXX";
    ASSERT_NE(mkdtemp(pattern), nullptr);
    folder_ = pattern;
    file_ = folder_ + "/engines.db";
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(file_.c_str(), &db), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(db,
                           "CREATE TABLE players(name TEXT, elo INTEGER, speed REAL);"
                           "INSERT INTO players VALUES ('fairymax', 1900, 1.25), ('Mass161', 1500, NULL);"
                           "CREATE TABLE notes(text TEXT); INSERT INTO notes VALUES ('it''s a note');",
                           nullptr, nullptr, nullptr),
              SQLITE_OK);
    sqlite3_close(db);
    std::ofstream(folder_ + "/odbc.ini") << "[talvena_test]\nDriver=" SQLITE_ODBC_DRIVER "\nDatabase=" << file_ << "\n";
    setenv("ODBCINI", (folder_ + "/odbc.ini").c_str(), 1);
    setenv("ODBCSYSINI", folder_.c_str(), 1);
  }
  static void TearDownTestSuite() { std::filesystem::remove_all(folder_); }

  static std::string folder_, file_;
  clsDatabase db_;
};

std::string OdbcTest::folder_, OdbcTest::file_;

TEST_F(OdbcTest, ConnectionStringCopiesEveryTableForJoins) {
  Lines messages;
  ASSERT_TRUE(kobubase::attachOdbc(db_, "DRIVER=" SQLITE_ODBC_DRIVER ";Database=" + file_, "ext", messages));
  EXPECT_EQ(messages, (Lines{"odbc: table players copied as ext_players (2 rows)",
                             "odbc: table notes copied as ext_notes (1 row)"}));
  db_.query("CREATE TABLE local(name TEXT, games INTEGER); INSERT INTO local VALUES ('Mass161', 12)");
  EXPECT_EQ(tableLines(db_.query("SELECT p.name, p.elo, p.speed, l.games FROM ext_players p "
                                 "LEFT JOIN local l ON l.name = p.name ORDER BY p.elo")),
            (Lines{"name       elo  speed  games", "--------  ----  -----  -----", "Mass161   1500   NULL     12",
                   "fairymax  1900   1.25   NULL", "(2 rows)"}));
  EXPECT_EQ(tableLines(db_.query("SELECT typeof(elo), typeof(speed) FROM ext_players LIMIT 1")),
            (Lines{"typeof(elo)  typeof(speed)", "-----------  -------------", "integer      real", "(1 row)"}));
  EXPECT_EQ(tableLines(db_.query("SELECT text FROM ext_notes")),
            (Lines{"text", "-----------", "it's a note", "(1 row)"}));
}

TEST_F(OdbcTest, DataSourceNameFromTheIniFileAndAttachingAgainRefreshes) {
  Lines messages;
  ASSERT_TRUE(kobubase::attachOdbc(db_, "talvena_test", "dsn", messages)) << messages[0];
  ASSERT_TRUE(kobubase::attachOdbc(db_, "talvena_test", "dsn", messages));
  EXPECT_EQ(tableLines(db_.query("SELECT count(*) FROM dsn_players")),
            (Lines{"count(*)", "--------", "       2", "(1 row)"}));
}

TEST_F(OdbcTest, MissingSourcesAndBadNamesAreOneClearLine) {
  Lines messages;
  EXPECT_FALSE(kobubase::attachOdbc(db_, "no_such_dsn", "x", messages));
  EXPECT_EQ(messages, Lines{"odbc: cannot connect to no_such_dsn: [unixODBC][Driver Manager]Data source name not found "
                            "and no default driver specified (IM002)"});
  messages.clear();
  EXPECT_FALSE(kobubase::attachOdbc(db_, "talvena_test", "bad name", messages));
  EXPECT_EQ(messages, Lines{"odbc: the name 'bad name' must be letters, digits and '_'"});
}

}  // namespace
