// "\learn" and "\learnt" over the real program: the lines they print and the
// soul file they leave. The usage text is the dispatch tests' concern, the
// argument rules and the breeding the learning tests'.
#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>

#include "tests/e2e/engine_process.h"
#include "tests/tourney/tourney_test_util.h"

namespace {

using tourney_test::Lines;

const std::regex GenerationLine(
    R"(# generation (\d+): best (\S+) (\d+(?:\.5)?)/6, spread \d+(?:\.5)?\.\.\3, 12 games in \d+\.\d\d\d s)");

// "\learnt" plays one more generation on the same file with the same settings.
TEST(LearnCommand, OneGenerationThenOneMore) {
  const tourney_test::TempFolder folder;
  const std::string path = folder.file("e2e.souls");
  EngineProcess talvena(TALVENA_BIN);
  ASSERT_TRUE(talvena.awaits("# Talvena 3.0.23", 5000));
  talvena.send("ping 0");
  ASSERT_TRUE(talvena.awaits("pong 0", 5000));  // past the rest of the banner
  const struct {
    std::string command, souls, start;
  } steps[] = {{"\\learn " + path + " 1 4 10 20", "4", " not found, starting from the presets"},
               {"\\learnt", "as in the file", " holds generation 1, continuing"}};
  for (int generation = 1; generation <= 2; ++generation) {
    const auto& step = steps[generation - 1];
    talvena.send(step.command);
    const Lines lines = talvena.readUntil("# learning done", 120000);
    ASSERT_EQ(lines.size(), 4u) << step.command;
    EXPECT_TRUE(std::regex_match(lines[0], std::regex("# learning: file " + path + ", generations 1, souls " +
                                                      step.souls + ", ms per move 10, max moves 20, threads \\d+")))
        << lines[0];
    EXPECT_EQ(lines[1], "# soul file " + path + step.start);
    std::smatch match;
    ASSERT_TRUE(std::regex_match(lines[2], match, GenerationLine)) << lines[2];
    EXPECT_EQ(match[1], std::to_string(generation));

    Lines file;
    std::istringstream in(tourney_test::readText(path));
    for (std::string line; std::getline(in, line);) file.push_back(line);
    ASSERT_EQ(file.size(), 5u * generation);
    const std::string& best = file[file.size() - 4];
    EXPECT_TRUE(std::regex_match(file[file.size() - 5], std::regex("# generation " + std::to_string(generation) +
                                                                   " games 12 scores( \\d+){4}")));
    EXPECT_EQ(lines[3], "# learning done, best soul " + best);
    EXPECT_EQ(best.substr(0, best.find('=')), match[2].str());
  }
  talvena.send("quit");
  EXPECT_EQ(talvena.waitExit(5000), 0);
}

}  // namespace
