// The end of a played game on the board, the repetition key and the move step
// of a game loop (coordinate text in, SAN out).
#include "chess/board/game_state.h"

#include "tests/board/board_fixture.h"

namespace kbuChess::testing {
namespace {

class GameStateTest : public BoardTest {
 protected:
  // Plays coordinate moves on the board; returns their SAN joined by blanks,
  // or "illegal <move>" at the first one refused.
  std::string playLine(std::initializer_list<const char*> moves) {
    std::string line;
    for (const char* move : moves) {
      std::string san;
      if (!playCoordinateMove(board, move, san)) return "illegal " + std::string(move);
      line += (line.empty() ? "" : " ") + san;
    }
    return line;
  }
  u64 keyOf(const char* fen) {
    board.readFEN(fen);
    return repetitionKey(board.position());
  }
};

TEST_F(GameStateTest, EndsComeFromTheLegalMovesTheClockAndTheMaterial) {
  const std::pair<const char*, GameEnd> cases[] = {
      {"rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq - 1 3", GameEnd::Mate},
      {"7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", GameEnd::Stalemate},
      {"7k/4Q3/6K1/8/8/8/8/8 b - - 0 1", GameEnd::None},           // the king can step to g8
      {"8/8/8/4k3/8/8/R7/4K3 w - - 100 80", GameEnd::FiftyMoves},  // a clock of 99 is tested below
      {"8/8/8/4k3/8/8/8/4KN2 w - - 0 1", GameEnd::InsufficientMaterial},
      {"5b2/8/8/4k3/8/8/8/2B1K3 w - - 0 1", GameEnd::InsufficientMaterial},  // c1 and f8 are both dark
      {"5b2/8/8/4k3/8/8/8/4KB2 w - - 0 1", GameEnd::None},
      {"8/8/8/4k3/8/8/8/3NKN2 w - - 0 1", GameEnd::None},  // two knights can mate
      {"8/8/8/4k3/8/8/8/R3K3 w - - 0 1", GameEnd::None},
  };
  for (const auto& [fen, end] : cases) {
    board.readFEN(fen);
    EXPECT_EQ(gameEnd(board), end) << fen;
  }
  // The hundredth quiet ply mates: mate wins over the count.
  board.readFEN("6k1/5ppp/8/8/8/8/8/R5K1 w - - 99 1");
  EXPECT_EQ(playLine({"a1a8"}), "Ra8#");
  EXPECT_EQ(board.halfMoveClock(), 100);
  EXPECT_EQ(gameEnd(board), GameEnd::Mate);
}

TEST_F(GameStateTest, PlayedMovesKeepTheHalfMoveClock) {
  board.readFEN("4k3/8/8/3p4/8/8/4P3/R3K3 w - - 7 40");
  const struct {
    const char* move;
    const char* san;
    int clock;
  } steps[] = {{"a1a2", "Ra2", 8}, {"e8f7", "Kf7", 9}, {"e2e4", "e4", 0},
               {"f7e6", "Ke6", 1}, {"a2a3", "Ra3", 2}, {"d5e4", "dxe4", 0}};
  for (const auto& step : steps) {
    EXPECT_EQ(playLine({step.move}), step.san);
    EXPECT_EQ(board.halfMoveClock(), step.clock) << step.move;
  }
  EXPECT_EQ(board.fullMoveNumber(), 43);
}

TEST_F(GameStateTest, RepetitionKeySeesPositionsNotTheirHistory) {
  const u64 start = keyOf(clsBoard::START_FEN);
  EXPECT_EQ(playLine({"g1f3", "g8f6", "f3g1", "f6g8"}), "Nf3 Nf6 Ng1 Ng8");
  EXPECT_EQ(repetitionKey(board.position()), start);
  // Another board drawing fresh hash tables leaves the key as it was.
  auto other = std::make_unique<clsBoard>();
  EXPECT_EQ(repetitionKey(board.position()), start);
  // Side to move and castling rights matter.
  EXPECT_NE(keyOf("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1"), start);
  EXPECT_NE(keyOf("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w Kkq - 0 1"), start);
  // An en-passant square counts only when a pawn can take there.
  EXPECT_EQ(keyOf("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1"),
            keyOf("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1"));
  EXPECT_NE(keyOf("rnbqkbnr/ppp1pppp/8/8/3pP3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1"),
            keyOf("rnbqkbnr/ppp1pppp/8/8/3pP3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1"));
}

TEST_F(GameStateTest, RefusedMovesLeaveThePosition) {
  board.readFEN(clsBoard::START_FEN);
  std::string san = "unchanged";
  for (const char* text : {"e2e5", "", "e7e5", "0000", "e1g1", "zz"}) {
    EXPECT_FALSE(playCoordinateMove(board, text, san)) << text;
  }
  EXPECT_EQ(san, "unchanged");
  EXPECT_EQ(board.fen(), "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -");
  board.readFEN("k7/4P3/8/8/8/8/8/4K3 w - - 0 1");
  EXPECT_EQ(playLine({"e7e8"}), "illegal e7e8");  // promotion needs its letter
}

}  // namespace
}  // namespace kbuChess::testing
