#include <gtest/gtest.h>

#include <algorithm>

#include "chess/board/board.h"
#include "chess/book/book.h"
#include "chess/book/book_key.h"

using namespace kbuChess;

namespace {

BookRecord record(u64 key, u32 wins = 0, u32 losses = 0, u32 draws = 0) { return BookRecord{key, wins, losses, draws}; }

}  // namespace

TEST(BookEntry, KeysOrderByHighWordThenLowWordCandidatesByScore) {
  clsBookEntry high(record(0x0000000200000000ull)), low(record(0x00000001FFFFFFFFull));
  EXPECT_TRUE(high.greater(low));
  EXPECT_FALSE(low.greater(high));
  clsBookEntry topBit(record(0x8000000000000000ull)), belowTopBit(record(0x7FFFFFFFFFFFFFFFull));
  EXPECT_TRUE(topBit.greater(belowTopBit));
  EXPECT_TRUE(high.equal(clsBookEntry(record(0x0000000200000000ull, 5, 5, 5))));
  // Candidates compare by score, not by key.
  const clsBookEntryExt allWon(record(1, 2, 0, 0), "e2e4"), halfWon(record(99, 1, 1, 0), "d2d4");
  EXPECT_EQ(allWon.score(), 1000);
  EXPECT_EQ(halfWon.score(), 500);
  EXPECT_TRUE(allWon.greater(halfWon));
  EXPECT_FALSE(halfWon.greater(allWon));
  EXPECT_TRUE(halfWon.equal(clsBookEntryExt(record(7, 0, 0, 3), "g1f3")));
  EXPECT_EQ(clsBookEntry(record(1, 200, 0, 1)).score(), 997);  // (400 + 1) * 500 / 201
  EXPECT_EQ(clsBookEntry(record(1, 3, 1, 0)).played(), 2u);
  EXPECT_EQ(clsBookEntry(record(1)).score(), 0);
}

TEST(Book, FindPlaceAgreesWithLowerBoundForEverySize) {
  for (u64 size = 0; size <= 40; ++size) {
    clsBook book;
    std::vector<u64> keys;
    for (u64 i = 0; i < size; ++i) {
      keys.push_back(i * 10 + (i % 2 ? 0x100000000ull * i : 0));
    }
    std::sort(keys.begin(), keys.end());
    for (u64 key : keys) book.append(record(key));
    for (u64 probe : keys) {
      for (u64 near : {probe - 1, probe, probe + 1}) {
        const auto expected = std::lower_bound(keys.begin(), keys.end(), near) - keys.begin();
        ASSERT_EQ(book.findPlace(near), static_cast<std::size_t>(expected)) << "size " << size << " key " << near;
      }
    }
    EXPECT_EQ(book.findPlace(~u64{0}), book.count());
  }
}

TEST(Book, AddAddManyAndMergeSumEqualKeysAndKeepOrder) {
  clsBook book;
  for (u64 key : {50ull, 10ull, 30ull, 10ull, 0xFFFFFFFF00000000ull, 30ull}) book.add(record(key, 1, 2, 3));
  ASSERT_EQ(book.count(), 4u);
  EXPECT_TRUE(book.isSorted());
  const BookRecord* ten = book.lookup(10);
  ASSERT_NE(ten, nullptr);
  EXPECT_EQ(ten->wins + ten->losses + ten->draws, 12u);
  EXPECT_EQ(book.lookup(11), nullptr);
  EXPECT_EQ(book.at(3).key, 0xFFFFFFFF00000000ull);

  clsBook a, b;
  std::vector<BookRecord> list{record(5, 1), record(3, 0, 1), record(5, 0, 0, 1), record(9, 1)};
  a.addMany(list);
  ASSERT_EQ(a.count(), 3u);
  b.add(record(9, 0, 4));
  b.add(record(1, 2));
  a.merge(b);
  ASSERT_EQ(a.count(), 4u);
  EXPECT_TRUE(a.isSorted());
  EXPECT_EQ(a.lookup(9)->wins, 1u);
  EXPECT_EQ(a.lookup(9)->losses, 4u);
  EXPECT_EQ(a.lookup(5)->draws, 1u);
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
