#include "chess/book/book.h"

#include <gtest/gtest.h>

#include <cstring>

#include "base/random.h"
#include "book_test_util.h"
#include "chess/board/board.h"
#include "chess/book/book_commands.h"
#include "chess/book/book_key.h"
#include "chess/book/pgn_file.h"

using namespace kbuChess;

namespace {

BookRecord record(u64 key, u32 wins = 0, u32 losses = 0, u32 draws = 0) {
  return BookRecord{key, wins, losses, draws};
}

std::vector<clsBookEntryExt> oneGameEach(int count) {
  std::vector<clsBookEntryExt> list;
  for (int i = 0; i < count; ++i) list.emplace_back(record(static_cast<u64>(i), 1), std::to_string(i));
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

TEST(BookEntry, KeysOrderByHighWordThenLowWordScoresRoundDown) {
  const clsBookEntry high(record(0x0000000200000000ull)), low(record(0x00000001FFFFFFFFull)), top(record(1ull << 63));
  EXPECT_TRUE(high.greater(low) && !low.greater(high) && top.greater(high));
  EXPECT_TRUE(low.greater(clsBookEntry(record(0x0000000100000000ull))));
  EXPECT_TRUE(high.equal(clsBookEntry(record(0x0000000200000000ull, 5, 5, 5))));
  EXPECT_EQ(clsBookEntry(record(1, 200, 0, 1)).score(), 997);  // (400 + 1) * 500 / 201
  EXPECT_EQ(clsBookEntry(record(1)).score(), 0);
}

TEST(Book, AddAndAddManySumEqualKeysAndKeepOrder) {
  clsBook book;
  for (u64 key : {50ull, 10ull, 30ull, 10ull, 0xFFFFFFFF00000000ull, 30ull}) book.add(record(key, 1, 2, 3));
  ASSERT_EQ(book.count(), 4u);
  EXPECT_TRUE(book.isSorted());
  const BookRecord* ten = book.lookup(10);
  ASSERT_NE(ten, nullptr);
  EXPECT_EQ(ten->wins + ten->losses + ten->draws, 12u);
  EXPECT_EQ(book.lookup(11), nullptr);
  EXPECT_EQ(book.at(3).key, 0xFFFFFFFF00000000ull);

  // Merging books is checked through the merge command.
  clsBook many;
  std::vector<BookRecord> list{record(5, 1), record(3, 0, 1), record(5, 0, 0, 1), record(9, 1)};
  many.addMany(list);
  ASSERT_EQ(many.count(), 3u);
  EXPECT_TRUE(many.isSorted());
  EXPECT_EQ(many.lookup(5)->wins + many.lookup(5)->draws, 2u);
}

TEST(BookKey, IsFixedAcrossRunsAndFollowsTheWholeState) {
  clsBoard board;
  board.readFEN(clsBoard::START_FEN);
  // The start position's key is part of the file format: it must never change.
  EXPECT_EQ(bookKey(board.position()), 0x9F1EB9923BA0402Full);

  auto keyAfter = [&](std::initializer_list<const char*> moves) {
    board.readFEN(clsBoard::START_FEN);
    for (const char* move : moves) EXPECT_TRUE(board.readCoordinateMove(move)) << move;
    return bookKey(board.position());
  };
  EXPECT_EQ(keyAfter({"g1f3", "g8f6", "b1c3"}), keyAfter({"b1c3", "g8f6", "g1f3"}));
  // Same placement, different side to move.
  EXPECT_NE(keyAfter({"g1f3", "g8f6", "f3g1", "f6g8"}), keyAfter({"g1f3", "g8f6", "f3g1"}));
  // Same placement after the king went out and back: castling rights differ.
  EXPECT_NE(keyAfter({"e2e4", "e7e5", "e1e2", "e8e7", "e2e1", "e7e8"}), keyAfter({"e2e4", "e7e5"}));
  // An en-passant square makes a difference.
  const u64 withPassant = keyAfter({"e2e4"});
  board.readFEN("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1");
  EXPECT_NE(bookKey(board.position()), withPassant);
  board.readFEN("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1");
  EXPECT_EQ(bookKey(board.position()), withPassant);
}

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
