// "\learn" and "\learnt" over the real program. The usage text is the
// dispatch tests' concern, the argument rules the learning tests'.
#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "chess/engine/soul.h"
#include "tests/e2e/engine_process.h"
#include "tests/tourney/tourney_test_util.h"

namespace {

using tourney_test::Lines;

Lines fileLines(const std::string& path) {
  Lines lines;
  std::istringstream in(tourney_test::readText(path));
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

const std::regex GenerationLine(
    R"(# generation (\d+): best (\S+) (\d+(?:\.5)?)/6, spread \d+(?:\.5)?\.\.\3, 12 games in \d+\.\d\d\d s)");

TEST(LearnCommand, OneGenerationThenOneMore) {
  const tourney_test::TempFolder folder;
  const std::string path = folder.file("e2e.souls");
  EngineProcess talvena(TALVENA_BIN);
  ASSERT_TRUE(talvena.started());
  talvena.readUntil("# Talvena 3.0.23", 5000);
  ASSERT_TRUE(talvena.found());
  talvena.send("ping 0");
  talvena.readUntil("pong 0", 5000);  // past the rest of the banner

  talvena.send("\\learn " + path + " 1 4 10 20");
  Lines lines = talvena.readUntil("# learning done", 120000);
  ASSERT_TRUE(talvena.found());
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_TRUE(std::regex_match(lines[0], std::regex("# learning: file " + path +
                                                    ", generations 1, souls 4, ms per move 10, max moves 20, "
                                                    "threads [0-9]+")))
      << lines[0];
  EXPECT_EQ(lines[1], "# soul file " + path + " not found, starting from the presets");
  std::smatch match;
  ASSERT_TRUE(std::regex_match(lines[2], match, GenerationLine)) << lines[2];
  EXPECT_EQ(match[1], "1");

  Lines file = fileLines(path);
  ASSERT_EQ(file.size(), 5u);
  std::smatch header;
  ASSERT_TRUE(
      std::regex_match(file[0], header, std::regex(R"(# generation 1 games 12 scores (\d+) (\d+) (\d+) (\d+))")))
      << file[0];
  EXPECT_EQ(std::stoi(header[1]) + std::stoi(header[2]) + std::stoi(header[3]) + std::stoi(header[4]), 24);
  EXPECT_EQ(lines[3], "# learning done, best soul " + file[1]);
  EXPECT_EQ(file[1].substr(0, file[1].find('=')), match[2].str());
  const std::set<std::string> souls(file.begin() + 1, file.end());
  EXPECT_EQ(souls, (std::set<std::string>{kbuChess::SOUL_PRESETS[0], kbuChess::SOUL_PRESETS[1],
                                          kbuChess::SOUL_PRESETS[2], kbuChess::SOUL_PRESETS[3]}));

  // "\learnt" plays one more generation on the same file with the same settings.
  talvena.send("\\learnt");
  lines = talvena.readUntil("# learning done", 120000);
  ASSERT_TRUE(talvena.found());
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[1], "# soul file " + path + " holds generation 1, continuing");
  ASSERT_TRUE(std::regex_match(lines[2], match, GenerationLine)) << lines[2];
  EXPECT_EQ(match[1], "2");
  file = fileLines(path);
  ASSERT_EQ(file.size(), 10u);
  EXPECT_TRUE(std::regex_match(file[5], std::regex(R"(# generation 2 games 12 scores( \d+){4})"))) << file[5];
  const std::set<std::string> survivors{file[1], file[2]};
  EXPECT_EQ(survivors.count(file[6]) + survivors.count(file[7]) + survivors.count(file[8]) + survivors.count(file[9]),
            2u);

  talvena.send("quit");
  EXPECT_EQ(talvena.waitExit(5000), 0);
}

}  // namespace
