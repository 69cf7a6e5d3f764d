// "\learn" over the real program ends promptly on "?", on the end of its
// input and on Ctrl-C, and its soul file then holds whole generations only.
#include <gtest/gtest.h>
#include <signal.h>

#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "tests/common/test_files.h"
#include "tests/e2e/engine_process.h"

namespace {

// Every block of the file is a played generation with one soul per score.
void expectWholeGenerations(const std::string& path) {
  std::istringstream in(testFiles::readText(path));
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  ASSERT_FALSE(lines.empty());
  const std::regex header(R"(# generation (\d+) games 2 scores \d+ \d+)");
  int generations = 0;
  for (std::size_t i = 0; i < lines.size(); i += 3) {
    std::smatch match;
    ASSERT_TRUE(std::regex_match(lines[i], match, header)) << lines[i];
    EXPECT_EQ(match[1], std::to_string(++generations));
    ASSERT_LT(i + 2, lines.size());
    EXPECT_NE(lines[i + 1].find('='), std::string::npos);
    EXPECT_NE(lines[i + 2].find('='), std::string::npos);
  }
}

TEST(LearnInterrupt, QuestionMarkEndOfInputAndCtrlCEndALearningRun) {
  const testFiles::TempFolder folder;
  for (const std::string how : {"?", "end of input", "ctrl-c"}) {
    SCOPED_TRACE(how);
    const std::string path = folder.file(how.substr(0, 1) + ".souls");
    EngineProcess talvena(TALVENA_BIN);
    ASSERT_TRUE(talvena.started());
    talvena.send("\\learn " + path + " 1000 2 10 10");
    ASSERT_TRUE(talvena.awaits("# generation 1:", 120000)) << how;
    if (how == "?") talvena.send("?");
    if (how == "end of input") talvena.closeInput();
    if (how == "ctrl-c") ::kill(talvena.pid(), SIGINT);
    // "# learning stopped in generation N; ..." or, between two generations, "# learning done, ...".
    ASSERT_TRUE(talvena.awaits("# learning ", 120000)) << how;
    if (how == "?") talvena.send("quit");
    talvena.expectFarewell(30000);
    expectWholeGenerations(path);
  }
}

// A refused slice or breed ends -use=learn with exit status 1.
TEST(LearnSlicesE2e, ARefusalEndsWithStatusOne) {
  const std::string missing = testing::TempDir() + "talvena-no-such.souls";
  const std::vector<std::string> lines =
      EngineProcess::run({"-use=learn", missing, "-generation=1", "-shard=0/2"}, 30000, 1);
  ASSERT_GE(lines.size(), 4u);
  EXPECT_EQ(lines[lines.size() - 4], "# learn: soul file " + missing + " not found");
}

}  // namespace
