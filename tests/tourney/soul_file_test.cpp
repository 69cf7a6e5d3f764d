#include "chess/tourney/soul_file.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <tuple>

#include "tests/tourney/tourney_test_util.h"

namespace kbuChess {
namespace {

const std::string A = "A=1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21";
const std::string B = "B=-1 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 2147483647";
const std::string C = "G2-1=70 20 10 60 20 14 50 20 50 40 10 60 0 30 90 30 10 0 10 5 10";

TEST(SoulFile, TextAndDiskRoundTripByteForByte) {
  const std::string text = "# generation 1 games 6 scores 6 4 2\n" + A + "\n" + B + "\n" + C +
                           "\n# generation 2 games 2 scores 3 1\n" + C + "\n" + A + "\n";
  const SoulFile file = parseSoulFile(text, "mem");
  EXPECT_TRUE(file.problems.empty());
  ASSERT_EQ(file.generations.size(), 2u);
  const SoulGeneration& first = file.generations[0];
  EXPECT_EQ(std::make_tuple(file.lastNumber(), first.games, first.scores, first.souls[1].name, first.souls[1].values[0],
                            first.souls[1].values[20], file.last().souls[0].name),
            std::make_tuple(2, 6, std::vector<int>{6, 4, 2}, "B", -1, 2147483647, "G2-1"));
  EXPECT_EQ(soulFileText(file), text);

  const tourney_test::TempFolder folder;
  const std::string path = folder.file("roundtrip.souls");
  std::string error;
  ASSERT_TRUE(writeSoulFile(path, file, error)) << error;
  EXPECT_EQ(tourney_test::readText(path), text);
  EXPECT_FALSE(std::ifstream(path + ".tmp").good()) << "the temporary file must be renamed away";
  SoulFile again;
  EXPECT_TRUE(readSoulFile(path, again));
  EXPECT_EQ(soulFileText(again), text);
}

TEST(SoulFile, UnplayedSoulsAndCarriageReturnsAndFreeComments) {
  const SoulFile file = parseSoulFile("# my souls\r\n" + A + "\r\n\r\n" + B + "\n", "hand");
  EXPECT_TRUE(file.problems.empty() && file.last().scores.empty());
  EXPECT_EQ(std::make_pair(file.generations.size(), file.lastNumber()), std::make_pair(std::size_t{1}, 0));
  EXPECT_EQ(soulFileText(file), A + "\n" + B + "\n");
}

TEST(SoulFile, BadLinesAreNamedAndTheGoodSoulsKept) {
  const std::string twenty = "B=1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20";
  const std::string text = "# generation 1 games 12 scores 5 4 2 1\n" + A + "\n" + twenty + "\n" + C +
                           "\nD=1 2 x 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21\n"
                           "# generation 2 games 2 scores 3\n" +
                           A + "\n" + C +
                           "\n# generation two\n"
                           "Bad Name=1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21\n"
                           "=1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21\n"
                           "E=1 2  4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21\n"
                           "E=1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 22\n" +
                           B + "\n";
  const SoulFile file = parseSoulFile(text, "s.souls");
  EXPECT_EQ(file.problems, (std::vector<std::string>{
                               "# soul file s.souls line 3: a soul needs 21 values, found 20",
                               "# soul file s.souls line 5: value 3 is not a number: \"x\"",
                               "# soul file s.souls line 6: generation 2 lists 1 scores for 2 souls",
                               "# soul file s.souls line 9: not a generation line (# generation N games G scores "
                               "S1 ... Sn)",
                               "# soul file s.souls line 10: not a soul (NAME=v1 ... v21)",
                               "# soul file s.souls line 11: not a soul (NAME=v1 ... v21)",
                               "# soul file s.souls line 12: value 3 is not a number: \"\"",
                               "# soul file s.souls line 13: a soul needs 21 values, found 22",
                           }));
  ASSERT_EQ(file.generations.size(), 3u);
  // Scores stay with their lines when a line between them is refused.
  EXPECT_EQ(file.generations[0].scores, (std::vector<int>{5, 2}));
  EXPECT_EQ(file.generations[0].souls[1].name, "G2-1");
  EXPECT_EQ(file.generations[1].scores, (std::vector<int>{3, 0}));
  // After the unreadable generation line, an unplayed list holds the one good soul left.
  ASSERT_EQ(file.generations[2].souls.size(), 1u);
  EXPECT_EQ(std::to_string(file.generations[2].number) + file.generations[2].souls[0].name, "0B");
}

TEST(SoulFile, SystemErrorsAreReportedAsLines) {
  SoulFile file;
  EXPECT_FALSE(readSoulFile("/nonexistent-folder/x.souls", file));
  EXPECT_EQ(file.problems,
            (std::vector<std::string>{"# error 2: No such file or directory reading /nonexistent-folder/x.souls"}));
  std::string error;
  EXPECT_FALSE(writeSoulFile("/nonexistent-folder/x.souls", file, error));
  EXPECT_EQ(error, "# error 2: No such file or directory writing /nonexistent-folder/x.souls");
}

TEST(SoulFile, SoulLinesAreStrict) {
  Soul soul;
  std::string why;
  EXPECT_TRUE(readSoul("N=+1 -2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21", SoulReading::STRICT, soul, why));
  EXPECT_EQ(soulText(soul), "N=1 -2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21");
  EXPECT_FALSE(
      readSoul("N=1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 2147483648", SoulReading::STRICT, soul, why));
  EXPECT_EQ(why, "value 21 is not a number: \"2147483648\"");
  EXPECT_FALSE(readSoul("N=1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19 20 21 ", SoulReading::STRICT, soul, why));
  EXPECT_EQ(why, "a soul needs 21 values, found 22");
}

}  // namespace
}  // namespace kbuChess
