#include <gtest/gtest.h>

#include <cstring>

#include "base/random.h"
#include "book_test_util.h"
#include "chess/book/book.h"
#include "chess/book/book_commands.h"
#include "chess/book/pgn_file.h"

using namespace kbuChess;

namespace {

std::vector<clsBookEntryExt> oneGameEach(int count) {
  std::vector<clsBookEntryExt> list;
  for (int i = 0; i < count; ++i) list.emplace_back(BookRecord{static_cast<u64>(i), 1, 0, 0}, std::to_string(i));
  return list;
}

class BookProbe : public ::testing::Test {
 protected:
  BookProbe() {
    // The book counts for the side to move in each stored position; candidates
    // count for the side choosing them: after 1.e4, e5 won 1 of 3 games for
    // Black (score 333), c5 won its game (1000), e6 was drawn (500).
    clsPGNFile reader(out, 4);
    reader.readText("1. e4 e5 1-0\n1. e4 e5 1-0\n1. e4 e5 0-1\n1. e4 c5 0-1\n1. e4 e6 1/2-1/2\n1. d4 0-1\n");
    book.merge(reader.book());
  }
  bookTest::Quiet out;
  clsBook book;
  clsBoard engine;
};

}  // namespace

TEST_F(BookProbe, BkAndListBookShowTheCandidatesSortedByScore) {
  commandBk(book, engine, out);
  EXPECT_EQ(out.lines(), (std::vector<std::string>{" best book move: e2e4\n\n"}));  // e4 500, d4 0
  ASSERT_TRUE(engine.readCoordinateMove("e2e4"));
  const Position before = engine.position();
  const PlyFrame* frameBefore = engine.currentFrame();
  commandListBook(book, engine, out);  // sorted by score, and the board left as found
  EXPECT_EQ(std::memcmp(&before, &engine.position(), sizeof before), 0);
  EXPECT_EQ(engine.currentFrame(), frameBefore);
  EXPECT_EQ(out.lines(), (std::vector<std::string>{"# e7e5  wins 1 losses 2 draws 0 score 333",
                                                   "# e7e6  wins 0 losses 0 draws 1 score 500",
                                                   "# c7c5  wins 1 losses 0 draws 0 score 1000 <--- best entry"}));
  ASSERT_TRUE(engine.readCoordinateMove("e7e6"));
  commandBk(book, engine, out);
  commandListBook(book, engine, out);
  EXPECT_EQ(out.lines(), (std::vector<std::string>{" no book moves found\n\n", "# no book moves found"}));
}

TEST_F(BookProbe, BookMoveChoosesACandidate) {
  Move chosen{};
  ASSERT_TRUE(engine.readCoordinateMove("d2d4"));
  EXPECT_FALSE(book.bookMove(engine, chosen));
  engine.readFEN(clsBoard::START_FEN);
  kobubase::seedRandom(1, 2);
  ASSERT_TRUE(book.bookMove(engine, chosen));
  const std::string text = clsBoard::moveText(&chosen, false);
  EXPECT_TRUE(text == "e2e4" || text == "d2d4") << text;
}

TEST(BookChoice, RareCandidatesAreCut) {
  std::vector<clsBookEntryExt> list = oneGameEach(1);
  EXPECT_EQ(clsBook::cutRareCandidates(list), 1u);
  list = oneGameEach(20);  // each 1/20 = 0.05
  EXPECT_EQ(clsBook::cutRareCandidates(list), 20u);
  list = oneGameEach(60);  // each about 0.0167
  EXPECT_EQ(clsBook::cutRareCandidates(list), 0u);
  list = {clsBookEntryExt(BookRecord{1, 5000, 0, 5000}, "common"), clsBookEntryExt(BookRecord{2, 1, 0, 0}, "rare")};
  ASSERT_EQ(clsBook::cutRareCandidates(list), 1u);  // 1/101 is below 0.02
  EXPECT_EQ(list[0].move, "common");
}
