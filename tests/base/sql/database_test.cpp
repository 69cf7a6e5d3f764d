// The console's table layer: queries, their aligned text, errors, tables
// filled from rows, and the guard against queries that never end.
#include "base/sql/database.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using kobubase::clsDatabase;
using kobubase::SqlRow;
using kobubase::tableLines;
using Lines = std::vector<std::string>;

TEST(DatabaseTest, QueryResultsAsAlignedTables) {
  clsDatabase db;
  ASSERT_TRUE(db.ok());
  EXPECT_EQ(tableLines(db.query("CREATE TABLE t(name TEXT, n INTEGER, r REAL); "
                                "INSERT INTO t VALUES ('alpha', 5, 1.5), ('b', 12345, NULL), ('c\td', -7, 0.1)")),
            Lines{"(3 rows changed)"});
  EXPECT_EQ(tableLines(db.query("SELECT * FROM t ORDER BY n")),
            (Lines{"name       n     r", "-----  -----  ----", "c d       -7   0.1", "alpha      5   1.5",
                   "b      12345  NULL", "(3 rows)"}));
  EXPECT_EQ(tableLines(db.query("SELECT n FROM t ORDER BY n"), 2),
            (Lines{" n", "--", "-7", " 5", "(3 rows, 2 shown)"}));
  EXPECT_EQ(tableLines(db.query("SELECT * FROM t WHERE n > 99999")), (Lines{"name  n  r", "----  -  -", "(0 rows)"}));
}

TEST(DatabaseTest, ErrorsCarrySqliteMessagesAndStopTheRest) {
  clsDatabase db;
  EXPECT_EQ(tableLines(db.query("SELECT * FROM missing")), Lines{"error: no such table: missing"});
  EXPECT_EQ(tableLines(db.query("CREATE TABLE a(x); INSERT INTO nope VALUES (1); INSERT INTO a VALUES (1)")),
            Lines{"error: no such table: nope"});
  EXPECT_EQ(tableLines(db.query("SELECT count(*) FROM a")), (Lines{"count(*)", "--------", "       0", "(1 row)"}));
  std::string error;
  EXPECT_FALSE(db.exec("DROP TABLE nosuch", error));
  EXPECT_EQ(error, "no such table: nosuch");
  EXPECT_EQ(tableLines(db.query("")), Lines{"(0 rows changed)"});
}

TEST(DatabaseTest, TablesAreReplacedFromRows) {
  clsDatabase db;
  std::string error;
  const std::vector<SqlRow> rows{{std::string("x"), std::int64_t{1}}, {nullptr, std::int64_t{-2}}};
  ASSERT_TRUE(db.replaceTable("odd \"name\"", {{"s", "TEXT"}, {"n", "INTEGER"}}, rows, error)) << error;
  EXPECT_EQ(tableLines(db.query("SELECT s, n FROM \"odd \"\"name\"\"\" ORDER BY n")),
            (Lines{"s      n", "----  --", "NULL  -2", "x      1", "(2 rows)"}));
  int next = 0;
  ASSERT_TRUE(db.replaceTable(
      "odd \"name\"", {{"v", "REAL"}},
      [&next](SqlRow& row) {
        if (next == 1000) return false;
        row.emplace_back(next++ * 0.5);
        return true;
      },
      error));
  EXPECT_EQ(tableLines(db.query("SELECT count(*), sum(v) FROM \"odd \"\"name\"\"\"")),
            (Lines{"count(*)  sum(v)", "--------  ------", "    1000  249750", "(1 row)"}));
  EXPECT_FALSE(db.replaceTable("empty", {}, rows, error));
  EXPECT_EQ(error, "a table needs a column");
}

TEST(DatabaseTest, LongResultsAreCountedButNotHeldAndEndlessQueriesInterrupted) {
  clsDatabase db;
  const kobubase::SqlResult big =
      db.query("WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c WHERE x < 100005) SELECT x FROM c");
  ASSERT_TRUE(big.ok) << big.error;
  EXPECT_EQ(big.rows.size(), clsDatabase::MAX_RESULT_ROWS);
  EXPECT_EQ(big.dropped, 5);
  EXPECT_EQ(tableLines(big, 1).back(), "(100005 rows, 1 shown)");
  db.setQueryLimitMs(100);
  EXPECT_EQ(
      tableLines(db.query("WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT count(*) FROM c")),
      Lines{"error: interrupted"});
  EXPECT_EQ(tableLines(db.query("SELECT 6 * 7 AS answer")), (Lines{"answer", "------", "    42", "(1 row)"}));
}

TEST(DatabaseTest, ReadOnlyTablesRefuseChangesButAreStillReplaced) {
  clsDatabase db;
  std::string error;
  ASSERT_TRUE(db.replaceTable("sys", {{"n", "INTEGER"}}, std::vector<SqlRow>{{std::int64_t{1}}}, error));
  db.setReadOnlyTables({"sys"});
  for (const char* change : {"INSERT INTO sys VALUES (2)", "UPDATE sys SET n = 3", "DELETE FROM SYS", "DROP TABLE sys",
                             "ALTER TABLE sys ADD COLUMN m", "CREATE INDEX i ON sys(n)"}) {
    EXPECT_EQ(tableLines(db.query(change)), Lines{"error: not authorized"}) << change;
  }
  EXPECT_EQ(tableLines(db.query("CREATE TABLE mine AS SELECT n * 10 AS n FROM sys; SELECT * FROM mine")),
            (Lines{" n", "--", "10", "(1 row)"}));
  ASSERT_TRUE(db.replaceTable("sys", {{"n", "INTEGER"}}, std::vector<SqlRow>{{std::int64_t{4}}}, error));
  EXPECT_EQ(tableLines(db.query("SELECT n FROM sys")), (Lines{"n", "-", "4", "(1 row)"}));
}

// 40 rows of a million characters: 16 MiB of them are kept, 1000 characters
// a cell are shown, and the count line says both.
TEST(DatabaseTest, BigResultsAreCutAndSaySo) {
  clsDatabase db;
  const kobubase::SqlResult big = db.query(
      "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c WHERE x < 40) "
      "SELECT x, hex(zeroblob(500000)) AS h FROM c");
  ASSERT_TRUE(big.ok) << big.error;
  EXPECT_EQ(big.rows.size(), 16u);
  EXPECT_EQ(big.dropped, 24);
  const Lines lines = tableLines(big);
  ASSERT_EQ(lines.size(), 19u);
  EXPECT_EQ(lines[2], " 1  " + std::string(1000, '0') + "...");
  EXPECT_EQ(lines.back(), "(40 rows, 16 shown, rows beyond 16 MiB not kept, texts cut at 1000 characters)");
}

TEST(DatabaseTest, TheSchemaCannotBeWritten) {
  clsDatabase db;
  EXPECT_EQ(tableLines(db.query("CREATE TABLE t(n INTEGER); INSERT INTO t VALUES (1)")), Lines{"(1 rows changed)"});
  EXPECT_EQ(tableLines(db.query("PRAGMA writable_schema=ON; UPDATE sqlite_master SET sql = 'junk' WHERE name = 't'")),
            Lines{"error: table sqlite_master may not be modified"});
  EXPECT_EQ(tableLines(db.query("SELECT n FROM t")), (Lines{"n", "-", "1", "(1 row)"}));
}

}  // namespace
