// PGN text and game files: the round's tags, the exact text, the files, and
// played games read back without a complaint by pgn-extract and by our own
// PGN reader.
#include "chess/tourney/pgn_output.h"

#include <gtest/gtest.h>

#include <fstream>
#include <tuple>

#include "chess/book/pgn_file.h"
#include "tests/common/pgn_extract.h"
#include "tests/tourney/tourney_test_util.h"

namespace kbuChess {
namespace {

using tourney_test::Lines;
using tourney_test::readText;

TourneyConfig blitzConfig() {
  TourneyConfig config;
  config.name = "blitz";
  config.gameMs = 60000;
  config.incrementMs = 500;
  config.pgnHeaders = {{"Annotator", "lab"}, {"Site", "Home"}};
  return config;
}

// A game as the game loop records it, with the moves as an engine sends them (e2e4, e7e8q).
struct PlayedGame {
  clsGame game;
  Lines coordinates;
};

// Plays the moves given, or random legal ones from the seed when none are,
// into a game holding the round's tags, until the board or the repetition
// rule ends it; 400 plies are adjudicated a draw.
PlayedGame playGame(clsBoard& board, const clsGame& tagged, const Lines& moves, std::uint64_t seed = 0) {
  PlayedGame played{tagged, {}};
  board.readFEN(clsBoard::START_FEN);
  played.game.addPosition(repetitionKey(board.position()));
  for (std::size_t ply = 0; moves.empty() ? ply < 400 : ply < moves.size(); ++ply) {
    std::string move = moves.empty() ? "" : moves[ply], san;
    if (moves.empty()) {
      const int count = board.generateLegal();
      seed = seed * 6364136223846793005ull + 1442695040888963407ull;
      move = clsBoard::moveText(&board.frame().first[(seed >> 33) % static_cast<std::uint64_t>(count)], false);
      if (move.size() == 6) move.erase(4, 1);  // e7e8=q -> e7e8q
    }
    EXPECT_TRUE(playCoordinateMove(board, move, san)) << move;
    played.game.addMove(san);
    played.coordinates.push_back(move);
    const std::uint32_t end = played.game.addPosition(repetitionKey(board.position()))
                                  ? rc::DRAW | rc::REPETITION
                                  : gameEndCode(gameEnd(board), static_cast<int>(board.position().side ^ 1));
    if (end) {
      played.game.setResult(end);
      break;
    }
  }
  if (played.game.undecided()) played.game.setResult(rc::ADJUDICATION | rc::DRAW);
  return played;
}

TEST(PgnOutputTest, TimeControlMixesSecondsAndMilliseconds) {
  EXPECT_EQ((Lines{timeControlTag(0, 60000, 500), timeControlTag(40, 300000, 0), timeControlTag(0, 1500, 0)}),
            (Lines{"60+500", "40/300", "1"}));
}

// The round's tags come in their fixed order whatever the order of the
// file's header tags, and are rebuilt for each round without the last
// game's result and extra tags.
TEST(PgnOutputTest, TextOfAGameIsExact) {
  auto board = std::make_unique<clsBoard>();
  const TourneyConfig config = blitzConfig();
  clsGame fresh;
  setRoundTags(fresh, config, 3, 2, 7, "Simple5", "Fair \"Max\"");
  PlayedGame played = playGame(*board, fresh, {"f2f3", "e7e5", "g2g4", "d8h4"});
  EXPECT_EQ(played.game.result(), 0x001Au);
  EXPECT_EQ(pgnText(played.game),
            "[Event \"blitz\"]\r\n"
            "[Site \"Home\"]\r\n"
            "[Date \"\"]\r\n"
            "[Round \"2\"]\r\n"
            "[KobuRound \"3:2:7\"]\r\n"
            "[KobuSoftware \"Talvena 3.0.23 - https://talvena.org\"]\r\n"
            "[KobuTimeControl \"0:60000:500\"]\r\n"
            "[TimeControl \"60+500\"]\r\n"
            "[White \"Simple5\"]\r\n"
            "[Black \"Fair \"\"Max\"\"\"]\r\n"
            "[Result \"0-1\"]\r\n"
            "[Annotator \"lab\"]\r\n"
            "[Reason \"mate\"]\r\n"
            "\r\n"
            "1. f3 e5 2. g4 Qh4# 0-1\r\n"
            "\r\n");
  played.game.setTag("Forfeit_ms", "60001>60000");
  setRoundTags(played.game, config, 3, 2, 7, "Simple5", "Fair \"Max\"");
  EXPECT_EQ(played.game.tags(), fresh.tags());

  // A game that did not end: "*" after the moves whatever the result tag says.
  clsGame open;
  open.setTag("Event", "line\r\nbreak\t");
  open.addMove("e4");
  EXPECT_EQ(pgnText(open), "[Event \"line  break \"]\r\n\r\n1. e4 *\r\n\r\n");
  open.setResult(0x8000);
  EXPECT_EQ(pgnText(open),
            "[Event \"line  break \"]\r\n[Result \"*\"]\r\n[Reason \"game aborted\"]\r\n\r\n1. e4 *\r\n\r\n");
  // A backslash is escaped, a quote doubled: no value ends its own string.
  clsGame named;
  named.setTag("White", "Q\"uote\\");
  EXPECT_EQ(pgnText(named), "[White \"Q\"\"uote\\\\\"]\r\n\r\n*\r\n\r\n");
  clsGame empty;
  empty.setResult(0x0600);
  EXPECT_EQ(pgnText(empty), "[Result \"1/2-1/2\"]\r\n[Reason \"50 moves\"]\r\n\r\n1/2-1/2\r\n\r\n");
}

TEST(PgnOutputTest, DateIsTheDayOfPlayUnlessTheFileGivesOne) {
  TourneyConfig config = blitzConfig();
  clsGame game;
  setRoundTags(game, config, 1, 1, 1, "A", "B");
  std::tm day{};
  std::tie(day.tm_year, day.tm_mon, day.tm_mday, day.tm_hour) = std::make_tuple(2026 - 1900, 10, 23, 12);
  const std::time_t when = std::mktime(&day);
  setPlayDate(game, config, when);
  EXPECT_EQ(game.tags()[2], (clsGame::Tag{"Date", "2026.11.23"}));
  config.pgnHeaders.emplace_back("Date", "2020.01.01");
  setRoundTags(game, config, 1, 1, 1, "A", "B");
  setPlayDate(game, config, when);
  EXPECT_EQ(game.tag("Date"), "2020.01.01");
}

TEST(PgnOutputTest, FilesAreNamedAppendedAndWritten) {
  TourneyConfig config = blitzConfig();
  EXPECT_EQ(gameFileBase(config, 3, 12), "blitz-3-12");
  config.logFolder = "logs";
  config.name = "";
  EXPECT_EQ(gameFileBase(config, 1, 2), "logs/tourney-1-2");

  tourney_test::TempFolder folder;
  const std::string base = folder.file("deep/er/blitz-1-1");
  clsGame game;
  game.setTag("Event", "blitz");
  game.addMove("e4");
  game.setResult(0x0006);
  EXPECT_EQ(writeGameFiles(game, {"first"}, base), Lines{});
  EXPECT_EQ(writeGameFiles(game, {"a", "b", "c"}, base), Lines{});
  EXPECT_EQ(readText(base + ".pgn"), pgnText(game) + pgnText(game));
  EXPECT_EQ(readText(base + ".log"), "a\r\nb\r\nc");

  std::ofstream(folder.file("plain")) << "x";
  EXPECT_EQ(writeGameFiles(game, {"a"}, folder.file("plain/game")),
            (Lines{"# error 20: Not a directory", "# error 20: Not a directory"}));
}

// Random games with every kind of move and end, written as a tournament
// writes them, must be read back move for move by pgn-extract and by our PGN
// reader, and pgn-extract must not warn about anything.
TEST(PgnOutputTest, PlayedGamesAreReadBackByPgnExtractAndOurReader) {
  auto board = std::make_unique<clsBoard>();
  tourney_test::TempFolder folder;
  const std::string base = folder.file("random-1-1");
  std::vector<PlayedGame> games;
  std::string ends;
  TourneyConfig config = blitzConfig();
  config.name = "random";
  // Knights out and back until the position after g1f3 stands a fourth time.
  Lines knights;
  for (int cycle = 0; cycle < 4; ++cycle) knights.insert(knights.end(), {"g1f3", "g8f6", "f3g1", "f6g8"});
  for (std::uint64_t i = 0; i < 41; ++i) {
    clsGame tagged;
    setRoundTags(tagged, config, 1, 1, static_cast<int>(i + 1), "Simple5", "Mass161");
    setPlayDate(tagged, config, std::time(nullptr));
    games.push_back(playGame(*board, tagged, i == 0 ? knights : Lines{}, i * 7919 + 13));
    ends += reasonText(games[i].game.result()) + ",";
    ASSERT_EQ(writeGameFiles(games[i].game, {}, base), Lines{});
  }
  // The seeds give games ending in each way the board can end them.
  for (const char* end : {"mate,", "stalemate,", "insufficient material,", "triple repetition,", "adjudication,"})
    EXPECT_NE(ends.find(end), std::string::npos) << end << " in " << ends;

  const testFiles::PgnExtractRun reference = testFiles::gameMoves(base + ".pgn", folder.file("moves.txt"));
  ASSERT_EQ(reference.status, 0);
  EXPECT_EQ(reference.said, "");
  ASSERT_EQ(reference.games.size(), games.size());
  for (std::size_t g = 0; g < games.size(); ++g) {
    std::string expected;
    for (const std::string& move : games[g].coordinates) expected += (expected.empty() ? "" : " ") + move;
    EXPECT_EQ(reference.games[g], expected) << "game " << g + 1;
  }

  // Our reader, which reads as pgn-extract does (book tests), takes every ply of every game.
  kobubase::clsOutBuffer out;
  out.setEcho(false);
  clsPGNFile reader(out, 1000);
  std::size_t plies = 0, read = 0;
  reader.gameObserver = [&read](std::uint64_t, const std::vector<Move>& moves, PgnResult) { read += moves.size(); };
  ASSERT_TRUE(reader.readFile(base + ".pgn"));
  for (const PlayedGame& game : games) plies += game.coordinates.size();
  EXPECT_EQ(std::make_pair(reader.games(), read), std::make_pair(std::uint64_t{41}, plies));
}

}  // namespace
}  // namespace kbuChess
