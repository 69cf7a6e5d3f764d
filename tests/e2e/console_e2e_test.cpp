// The expression console through the real program: in, a formula, a
// diagram, out again, and the xboard dialogue goes on.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "engine_process.h"

namespace {

using Lines = std::vector<std::string>;

TEST(E2eConsoleTest, FormulaDiagramExitAndBackToXboard) {
  EngineProcess engine(TALVENA_BIN);
  ASSERT_TRUE(engine.awaits("# Talvena 3.0.23", 5000));
  engine.send("\\console");
  ASSERT_TRUE(engine.awaits("#   help ", 3000)) << "no sample commands";
  engine.send("popcount(pawns & us) * 2 + (1 << 64)");
  EXPECT_EQ(engine.readLine(3000).value_or("<nothing>"), "# 16 (0x10)");
  engine.send("1 / (e4 & d4)");
  EXPECT_EQ(engine.readLine(3000).value_or("<nothing>"), "# error at column 3: division by zero");
  engine.send("board(knight(g1) | e4)");
  Lines diagram;
  for (int i = 0; i < 9; ++i) diagram.push_back(engine.readLine(3000).value_or("<nothing>"));
  EXPECT_EQ(diagram, (Lines{"# 8 . . . . . . . .", "# 7 . . . . . . . .", "# 6 . . . . . . . .", "# 5 . . . . . . . .",
                            "# 4 . . . . x . . .", "# 3 . . . . . x . x", "# 2 . . . . x . . .", "# 1 . . . . . . . .",
                            "#   a b c d e f g h"}));
  engine.send("sql(\"select name from souls where kind = 'current'\")");
  EXPECT_EQ(engine.readUntil("# (1 row)", 3000), (Lines{"# name", "# -------", "# Simple5", "# (1 row)"}));
  engine.send("exit");
  EXPECT_EQ(engine.readLine(3000).value_or("<nothing>"), "# back to xboard");
  engine.send("ping 1");
  EXPECT_EQ(engine.readLine(3000).value_or("<nothing>"), "pong 1");
  engine.quit();
}

}  // namespace
