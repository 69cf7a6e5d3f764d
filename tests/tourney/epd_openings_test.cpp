// Openings from EPD suites: which lines become positions and what a bad line
// prints, and games that start from such a position: the game's own board
// and PGN, the xboard set-up dialogue with and without setboard, and a real
// engine (fairymax, which sets positions in edit mode) playing from one.
#include <gtest/gtest.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <vector>

#include "chess/board/tables.h"
#include "chess/tourney/epd_suite.h"
#include "chess/tourney/pgn_output.h"
#include "chess/tourney/tourney_game.h"
#include "chess/tourney/tourney_learning_games.h"
#include "tests/common/pgn_extract.h"
#include "tests/tourney/tourney_test_util.h"

namespace kbuChess {
namespace {

using tourney_test::KeptOutput;
using tourney_test::Lines;
using tourney_test::readText;
using tourney_test::TempFolder;

const char* const FAIRYMAX = "/usr/games/fairymax";

TEST(EpdOpenings, GoodLinesBecomePositionsAndBadLinesAreNamed) {
  initTables();
  const std::string text =
      "# a comment\n"
      "\n"
      "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 bm e5; id \"open\";\n"
      "4k3/8/8/8/8/8/8/R3K2R w KQkq - hmvc 12; fmvn 40;\r\n"  // k and q have no rook
      "4k3/8/8/3pP3/8/8/8/4K3 w - d6 3 55\n"                  // FEN form
      "  4k3/8/8/8/8/8/8/4K3\tw - e6 hmvc 300;\n"             // no double step made e6
      "4k3/8/8/8/8/8/8/4K3 w -\n"
      "4k3/8/8/8/8/8/8/4K4 w - -\n"
      "4k3/8/8/8/8/8/8 w - -\n"
      "4k3/8/8/8/8/8/8/4X3 w - -\n"
      "8/8/8/8/8/8/8/4K3 w - -\n"
      "P3k3/8/8/8/8/8/8/4K3 w - -\n"
      "4k3/8/8/8/8/8/8/4K3 x - -\n"
      "4k3/8/8/8/8/8/8/4K3 w KK -\n"
      "4k3/8/8/8/8/8/8/4K3 w - e3\n"
      "4k3/8/8/8/8/8/8/4R1K1 w - -\n"
      "7k/5Q2/6K1/8/8/8/8/8 b - -";
  KeptOutput out;
  const std::vector<Opening> positions = readEpdPositions(text, out);
  EXPECT_EQ(positions, (std::vector<Opening>{{"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1", {}},
                                             {"4k3/8/8/8/8/8/8/R3K2R w KQ - 12 40", {}},
                                             {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 3 55", {}},
                                             {"4k3/8/8/8/8/8/8/4K3 w - - 99 1", {}}}));
  EXPECT_EQ(out.takeAll(), (Lines{
                               "# openings: line 7 skipped: fewer than four fields",
                               "# openings: line 8 skipped: the board needs 8 ranks of 8 squares",
                               "# openings: line 9 skipped: the board needs 8 ranks of 8 squares",
                               "# openings: line 10 skipped: the board needs 8 ranks of 8 squares",
                               "# openings: line 11 skipped: each side needs one king",
                               "# openings: line 12 skipped: a pawn on the first or last rank",
                               "# openings: line 13 skipped: the side to move is not w or b",
                               "# openings: line 14 skipped: bad castling field",
                               "# openings: line 15 skipped: bad en passant field",
                               "# openings: line 16 skipped: the side not to move is in check",
                               "# openings: line 17 skipped: no legal move",
                           }));
  EXPECT_EQ(positions[1].text(), "fen 4k3/8/8/8/8/8/8/R3K2R w KQ - 12 40");
  EXPECT_EQ((Opening{"8/8/8/8/8/8/k7/K7 w - - 0 1", {"a1b1"}}).text(), "fen 8/8/8/8/8/8/k7/K7 w - - 0 1 moves a1b1");
}

struct PlayedGame {
  std::string result;  // "result reason"
  int plies = 0;
  std::string pgn;
};

// One game from the position, Simple5 (embedded) as White, its PGN written to the folder.
PlayedGame playFrom(const std::string& fen, const PlayerConfig& black, GameClock clock, const TempFolder& folder) {
  const PlayerConfig white{"A", "", "Simple5", "embedded"};
  clsPlayer whitePlayer(white), blackPlayer(black);
  clsQuietHost host;
  clsTourneyGame game(host, 1, &whitePlayer, &blackPlayer, clock);
  TourneyConfig config;
  config.name = "epd";
  setRoundTags(game.record(), config, 1, 1, 1, white.name, black.name);
  game.setFileBase(folder.file("epd-1-1"));
  game.setOpening(Opening{fen, {}});
  EXPECT_TRUE(game.start());
  game.wait();
  const std::uint32_t code = game.record().result();
  return {resultText(code) + " " + reasonText(code), game.record().plies(), readText(folder.file("epd-1-1.pgn"))};
}

// Black to move with the 50-move counter at 97 and move 60: three plies
// later the game is drawn by the 50-move rule; the PGN says where it began.
TEST(EpdOpenings, EmbeddedGameStartsFromThePosition) {
  initTables();
  const TempFolder folder;
  const std::string fen = "4k3/8/8/8/8/8/8/R3K3 b Q - 97 60";
  const PlayedGame played = playFrom(fen, {"B", "", "Mass161", "embedded"},
                                     GameClock{.gameMs = 10000, .movetimeMs = 50, .adjudication = {}}, folder);
  EXPECT_EQ(played.result, "1/2-1/2 50 moves");
  EXPECT_EQ(played.plies, 3);
  EXPECT_NE(played.pgn.find("[Result \"1/2-1/2\"]\r\n[SetUp \"1\"]\r\n[FEN \"" + fen + "\"]\r\n"), std::string::npos)
      << played.pgn;
  EXPECT_NE(played.pgn.find("\r\n\r\n60... K"), std::string::npos) << played.pgn;
  const testFiles::PgnExtractRun check = testFiles::pgnExtract("-s -r " + folder.file("epd-1-1.pgn"));
  EXPECT_EQ(std::to_string(check.status) + check.said, "0");
}

// An xboard engine to move in the new position is set up in force mode,
// with "setboard" when it announced it, else in edit mode after a first
// move that gives Black the move; a UCI engine gets "position fen". Each
// plays legal moves from there.
TEST(EpdOpenings, EnginesAreSetUpAsTheirProtocolAsks) {
  initTables();
  const std::string fen = "4k3/pppppppp/8/8/8/8/PPPPPPPP/4K3 b - - 0 1";
  const Lines xboard = {"xboard", "protover 2", "new", "force"};
  const Lines xboardGo = {"post", "level 0 0:10 0", "time 1000", "otim 1000", "go"};
  const Lines edit = {"a2a3", "edit", "#",   "Pa2", "Pb2", "Pc2", "Pd2", "Pe2", "Pf2", "Pg2", "Ph2", "Ke1",
                      "c",    "Ke8",  "Pa7", "Pb7", "Pc7", "Pd7", "Pe7", "Pf7", "Pg7", "Ph7", "."};
  const auto join = [](std::vector<Lines> parts) {
    Lines all;
    for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
  };
  const struct {
    const char* options;
    Lines expected;
  } cases[] = {
      {"xboard setboard", join({xboard, {"setboard " + fen}, xboardGo})},
      {"xboard", join({xboard, edit, xboardGo})},
      {"uci", {"uci", "ucinewgame", "position fen " + fen, "isready", "go wtime 10000 btime 10000 winc 0 binc 0"}},
  };
  for (const auto& c : cases) {
    const TempFolder folder;
    const std::string log = folder.file("fake.log");
    const std::string protocol = std::string(c.options).substr(0, std::string(c.options).find(' '));
    const PlayedGame played = playFrom(
        fen, {"fake", FAKE_ENGINE, std::string(c.options) + " log=" + log, protocol},
        GameClock{.gameMs = 10000, .movetimeMs = 20, .maxPlies = 4, .commandPauseMs = 0, .adjudication = {}}, folder);
    EXPECT_EQ(played.result, "1/2-1/2 adjudication") << c.options;
    std::istringstream lines(readText(log));
    Lines received;
    for (std::string line; received.size() < c.expected.size() && std::getline(lines, line);) received.push_back(line);
    EXPECT_EQ(received, c.expected) << c.options;
  }
}

// fairymax announces setboard=0: it is set up in edit mode, with Black to move.
TEST(EpdOpenings, RealEngineStartsFromThePosition) {
  ASSERT_EQ(::access(FAIRYMAX, X_OK), 0) << "fairymax is needed: apt-get install fairymax";
  initTables();
  const TempFolder folder;
  const PlayedGame played =
      playFrom("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1", {"fairymax", FAIRYMAX, "", "xboard"},
               GameClock{.gameMs = 10000, .incrementMs = 100, .maxPlies = 6, .adjudication = {}}, folder);
  EXPECT_EQ(played.result, "1/2-1/2 adjudication") << played.pgn;
  EXPECT_NE(played.pgn.find("\r\n\r\n1... "), std::string::npos) << played.pgn;
}

}  // namespace
}  // namespace kbuChess
