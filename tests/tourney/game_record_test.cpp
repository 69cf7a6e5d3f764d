// The game record: result codes and their texts, the codes the game loop
// derives from engine answers and board states, points, tags, move text and
// the repetition rule.
#include "chess/tourney/game_record.h"

#include <gtest/gtest.h>

#include <tuple>

namespace kbuChess {
namespace {

// One row per rule: a code's result text, reason text and half-points ("-"
// when the game counts for no one). Undecided wins over everything, a draw
// over a decision, a decision over an abort; the first reason in the order
// of precedence names the game. The board's ends, forfeits and crashes are
// named in the games that end so (PGN and whole-run tests).
TEST(GameRecordTest, EachCodeGivesItsTextsAndPoints) {
  const std::pair<std::uint32_t, const char*> cases[] = {
      {0x0001, "? ? -"},
      {0x0016, "1-0 mate 2:0"},
      {0x001A, "0-1 mate 0:2"},
      {0x0046, "1-0 resign 2:0"},
      {0x0082, "1-0 adjudication 2:0"},
      {0x10280, "1/2-1/2 adjudication: draw 1:1"},
      {0x2008A, "0-1 adjudication: resign 0:2"},
      {0x40006, "1-0 engine not ready 2:0"},
      {0x010A, "0-1 illegal move 0:2"},
      {0x8000, "* game aborted -"},
      {0x0000, "  -"},
      {0x0217, "? ? -"},
      {0x8202, "1/2-1/2 game aborted -"},
      {0x800A, "0-1 game aborted -"},
      {0x4130, " mate -"},
      {0x0004, "  -"},
  };
  for (const auto& [code, expected] : cases) {
    const GamePoints p = gamePoints(code);
    EXPECT_EQ(resultText(code) + " " + reasonText(code) + " " +
                  (p.decided ? std::to_string(p.white) + ":" + std::to_string(p.black) : "-"),
              expected)
        << std::hex << code;
  }
}

TEST(GameRecordTest, CodesForClaimsLossesAndBoardEnds) {
  const std::pair<const char*, std::uint32_t> claims[] = {
      {"1/2-1/2", 0x0200}, {"1-0", 0x0006}, {"0-1", 0x000A}, {"?", 0x0001}, {"*", 0x8000}, {"1-0 ", 0}, {"", 0}};
  for (const auto& [text, code] : claims) EXPECT_EQ(claimCode(text), code) << text;
  EXPECT_EQ(std::vector<std::uint32_t>({lossCode(WHITE, rc::FORFEIT), lossCode(BLACK, rc::ENGINE_CRASHED),
                                        illegalMoveCode(BLACK), resignCode(WHITE), resignCode(BLACK)}),
            std::vector<std::uint32_t>({0x002A, 0x4006, 0x0102, 0x0046, 0x004A}));
  // A resignation is scored for the side that resigned; wins claimed on one's
  // own move are ignored, and so are words that only contain a result.
  const std::tuple<const char*, Colour, std::uint32_t> claimed[] = {{"1/2-1/2 {draw by repetition}", WHITE, 0x0200},
                                                                    {"{agreed} 1/2-1/2", BLACK, 0x0200},
                                                                    {"0-1 {White resigns}", WHITE, 0x004A},
                                                                    {"1-0 {Black resigns}", BLACK, 0x0042},
                                                                    {"1-0 {White mates}", WHITE, 0},
                                                                    {"0-1 {Black mates}", BLACK, 0},
                                                                    {"1/2-1/2x", WHITE, 0},
                                                                    {"", BLACK, 0}};
  for (const auto& [text, side, code] : claimed) EXPECT_EQ(claimedResultCode(text, side), code) << text;
  EXPECT_EQ(std::vector<std::uint32_t>({gameEndCode(GameEnd::Mate, WHITE), gameEndCode(GameEnd::Mate, BLACK),
                                        gameEndCode(GameEnd::Stalemate, BLACK), gameEndCode(GameEnd::FiftyMoves, WHITE),
                                        gameEndCode(GameEnd::InsufficientMaterial, WHITE),
                                        gameEndCode(GameEnd::None, WHITE)}),
            std::vector<std::uint32_t>({0x0016, 0x001A, 0x1200, 0x0600, 0x2200, 0}));
}

using Tags = std::vector<clsGame::Tag>;

TEST(GameRecordTest, TagsKeepInsertionOrderAndResultTagsReplaceInPlace) {
  clsGame game;
  EXPECT_TRUE(game.undecided());
  game.setTag("Event", "blitz");
  game.setTag("Result", "*");
  game.setTag("White", "A");
  game.setTag("Event", "rapid");
  EXPECT_EQ(game.tags(), (Tags{{"Event", "rapid"}, {"Result", "*"}, {"White", "A"}}));
  EXPECT_EQ(game.tag("White") + game.tag("Black"), "A");
  EXPECT_FALSE(game.hasTag("Black"));

  // A forfeit: the game's tag first, then the result in place and the reason last.
  game.setTag("Forfeit_ms", "1001>1000");
  game.setResult(0x002A);
  EXPECT_FALSE(game.undecided());
  EXPECT_EQ(
      game.tags(),
      (Tags{
          {"Event", "rapid"}, {"Result", "0-1"}, {"White", "A"}, {"Forfeit_ms", "1001>1000"}, {"Reason", "forfeit"}}));
  game.setResult(0x8000);
  EXPECT_EQ(game.tag("Result") + game.tag("Reason") + std::to_string(game.tags().size()), "*game aborted5");
}

TEST(GameRecordTest, MoveTextNumbersWhiteMovesAndResetKeepsTheTags) {
  clsGame game;
  game.setTag("Round", "2");
  for (const char* move : {"e4", "e5", "Nf3"}) game.addMove(move);
  EXPECT_EQ(game.moveText() + std::to_string(game.plies()), "1. e4 e5 2. Nf3 3");
  game.addPosition(7);
  game.setResult(0x0A00);

  game.reset();
  EXPECT_EQ(game.moveText() + std::to_string(game.plies() + game.positions().size()), "0");
  EXPECT_EQ(game.result(), 0x0001u);
  EXPECT_EQ(game.tags(), (Tags{{"Round", "2"}, {"Result", "1/2-1/2"}, {"Reason", "triple repetition"}}));
  game.addMove("d4");
  EXPECT_EQ(game.moveText(), "1. d4 ");
}

// The repetition rule counts earlier entries from index 1 on: a position ends
// the game when it stands for the fourth time, the first entry (the start
// position) only on its fifth occurrence.
TEST(GameRecordTest, RepetitionSkipsTheFirstEntry) {
  clsGame game;
  // Knights out and back: start S, then a, b, c, S, a, b, c, ...
  const std::uint64_t cycle[] = {100, 1, 2, 3};
  int firstRepeat = -1;
  for (int i = 0; i < 20 && firstRepeat < 0; ++i)
    if (game.addPosition(cycle[i % 4])) firstRepeat = i;
  // Position a stands at 1, 5, 9 and 13: its fourth time ends the game, while
  // S (at 0, 4, 8, 12) has been counted only at 4 and 8.
  EXPECT_EQ(firstRepeat, 13);

  clsGame same;
  const bool expected[] = {false, false, false, false, true, true};
  for (bool repeat : expected) EXPECT_EQ(same.addPosition(42), repeat);
  EXPECT_EQ(same.positions().size(), 6u);
}

}  // namespace
}  // namespace kbuChess
