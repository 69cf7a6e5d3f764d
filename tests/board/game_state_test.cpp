// The end of a played game on the board, the repetition key and the move step
// of a game loop (coordinate text in, SAN out).
#include "chess/board/game_state.h"

#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

class GameStateTest : public BoardTest {
 protected:
  GameEnd endOf(const std::string& fen) {
    board.readFEN(fen);
    return gameEnd(board);
  }
  // Plays coordinate moves from `fen`; returns their SAN joined by blanks, or
  // "illegal <move>" at the first one refused.
  std::string playLine(const std::string& fen, std::initializer_list<const char*> moves) {
    board.readFEN(fen);
    std::string line;
    for (const char* move : moves) {
      std::string san;
      if (!playCoordinateMove(board, move, san)) return "illegal " + std::string(move);
      line += (line.empty() ? "" : " ") + san;
    }
    return line;
  }
};

TEST_F(GameStateTest, MateAndStalemateComeFromTheLegalMoves) {
  EXPECT_EQ(endOf("rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3"), GameEnd::Mate);
  EXPECT_EQ(endOf("7k/5Q2/6K1/8/8/8/8/8 b - - 0 1"), GameEnd::Stalemate);
  // Same picture with Black's king able to step to g8: play goes on.
  EXPECT_EQ(endOf("7k/4Q3/6K1/8/8/8/8/8 b - - 0 1"), GameEnd::None);
  EXPECT_EQ(endOf(clsBoard::START_FEN), GameEnd::None);
}

TEST_F(GameStateTest, FiftyMovesCountHundredPliesAndMateComesFirst) {
  EXPECT_EQ(endOf("8/8/8/4k3/8/8/R7/4K3 w - - 99 80"), GameEnd::None);
  EXPECT_EQ(endOf("8/8/8/4k3/8/8/R7/4K3 w - - 100 80"), GameEnd::FiftyMoves);
  // The hundredth quiet ply mates: mate wins over the count.
  EXPECT_EQ(playLine("6k1/5ppp/8/8/8/8/8/R5K1 w - - 99 1", {"a1a8"}), "Ra8#");
  EXPECT_EQ(board.halfMoveClock(), 100);
  EXPECT_EQ(gameEnd(board), GameEnd::Mate);
}

TEST_F(GameStateTest, PlayedMovesKeepTheHalfMoveClock) {
  board.readFEN("4k3/8/8/3p4/8/8/4P3/R3K3 w - - 7 40");
  std::string san;
  ASSERT_TRUE(playCoordinateMove(board, "a1a2", san));
  EXPECT_EQ(board.halfMoveClock(), 8);
  ASSERT_TRUE(playCoordinateMove(board, "e8f7", san));
  EXPECT_EQ(board.halfMoveClock(), 9);
  EXPECT_EQ(board.fullMoveNumber(), 41);
  ASSERT_TRUE(playCoordinateMove(board, "e2e4", san));  // pawn move
  EXPECT_EQ(board.halfMoveClock(), 0);
  ASSERT_TRUE(playCoordinateMove(board, "f7e6", san));
  ASSERT_TRUE(playCoordinateMove(board, "a2a3", san));
  EXPECT_EQ(board.halfMoveClock(), 2);
  ASSERT_TRUE(playCoordinateMove(board, "d5e4", san));  // capture
  EXPECT_EQ(san, "dxe4");
  EXPECT_EQ(board.halfMoveClock(), 0);
}

TEST_F(GameStateTest, InsufficientMaterialFollowsTheListedCases) {
  EXPECT_EQ(endOf("8/8/8/4k3/8/8/8/4K3 w - - 0 1"), GameEnd::InsufficientMaterial);
  EXPECT_EQ(endOf("8/8/8/4k3/8/8/8/4KN2 w - - 0 1"), GameEnd::InsufficientMaterial);
  EXPECT_EQ(endOf("8/8/8/4k3/8/8/8/4KB2 b - - 0 1"), GameEnd::InsufficientMaterial);
  EXPECT_EQ(endOf("8/8/2n5/4k3/8/8/8/4K3 w - - 0 1"), GameEnd::InsufficientMaterial);
  // Bishops on c1 and f8 are both on dark squares; f1 is light.
  EXPECT_EQ(endOf("5b2/8/8/4k3/8/8/8/2B1K3 w - - 0 1"), GameEnd::InsufficientMaterial);
  EXPECT_EQ(endOf("5b2/8/8/4k3/8/8/8/4KB2 w - - 0 1"), GameEnd::None);
  EXPECT_EQ(endOf("8/8/2n5/4k3/8/8/8/4KN2 w - - 0 1"), GameEnd::None);
  EXPECT_EQ(endOf("8/8/8/4k3/8/8/8/3NKN2 w - - 0 1"), GameEnd::None);
  EXPECT_EQ(endOf("8/8/8/4k3/8/8/4P3/4K3 w - - 0 1"), GameEnd::None);
  EXPECT_EQ(endOf("8/8/8/4k3/8/8/8/R3K3 w - - 0 1"), GameEnd::None);
  EXPECT_EQ(endOf("8/8/8/4k3/8/8/8/3QK3 w - - 0 1"), GameEnd::None);
}

TEST_F(GameStateTest, RepetitionKeySeesPositionsNotTheirHistory) {
  board.readFEN(clsBoard::START_FEN);
  const u64 start = repetitionKey(board.position());
  EXPECT_EQ(playLine(clsBoard::START_FEN, {"g1f3", "g8f6", "f3g1", "f6g8"}), "Nf3 Nf6 Ng1 Ng8");
  EXPECT_EQ(repetitionKey(board.position()), start);
  // Another board drawing fresh hash tables leaves the key as it was.
  auto other = std::make_unique<clsBoard>();
  EXPECT_EQ(repetitionKey(board.position()), start);
  // Side to move and castling rights matter.
  board.readFEN("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1");
  EXPECT_NE(repetitionKey(board.position()), start);
  board.readFEN("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w Kkq - 0 1");
  EXPECT_NE(repetitionKey(board.position()), start);
  // An en-passant square counts only when a pawn can take there.
  auto key = [this](const char* fen) {
    board.readFEN(fen);
    return repetitionKey(board.position());
  };
  EXPECT_EQ(key("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1"),
            key("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1"));
  EXPECT_NE(key("rnbqkbnr/ppp1pppp/8/8/3pP3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1"),
            key("rnbqkbnr/ppp1pppp/8/8/3pP3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1"));
}

TEST_F(GameStateTest, RefusedMovesLeaveThePosition) {
  board.readFEN(clsBoard::START_FEN);
  std::string san = "unchanged";
  for (const char* text : {"e2e5", "", "e7e5", "0000", "e1g1", "zz"}) {
    EXPECT_FALSE(playCoordinateMove(board, text, san)) << text;
  }
  EXPECT_EQ(san, "unchanged");
  EXPECT_EQ(board.fen(), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -");
  // Promotion needs its letter.
  EXPECT_EQ(playLine("k7/4P3/8/8/8/8/8/4K3 w - - 0 1", {"e7e8"}), "illegal e7e8");
}

}  // namespace
}  // namespace kbuChess::testing
