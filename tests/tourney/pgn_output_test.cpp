// PGN text and game files: the round's tags, the exact text, the files, and
// played games read back without a complaint by pgn-extract and by our own
// PGN reader.
#include "chess/tourney/pgn_output.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "chess/book/pgn_file.h"

namespace kbuChess {
namespace {

using Lines = std::vector<std::string>;
using Tags = std::vector<clsGame::Tag>;

const char* const PGN_EXTRACT = "/usr/games/pgn-extract";

class TempFolder {
 public:
  TempFolder() {
    char pattern[] = "/tmp/talvena-pgn-XXXXXX";
    path_ = ::mkdtemp(pattern);
  }
  ~TempFolder() { std::filesystem::remove_all(path_); }
  std::string file(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

std::string readText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}

TourneyConfig blitzConfig() {
  TourneyConfig config;
  config.name = "blitz";
  config.movesPerSecond = 0;
  config.gameMs = 60000;
  config.incrementMs = 500;
  config.pgnHeaders = {{"Site", "Home"}, {"Annotator", "lab"}};
  return config;
}

// A game played through the board as the game loop plays it.
struct PlayedGame {
  clsGame game;
  Lines coordinates;  // as an engine sends them: e2e4, e7e8q
};

// Plays the coordinate moves and ends the game from the board's state.
void playMoves(PlayedGame& played, clsBoard& board, const Lines& moves) {
  board.readFEN(clsBoard::START_FEN);
  played.game.reset();
  played.game.addPosition(repetitionKey(board.position()));
  for (const std::string& move : moves) {
    std::string san;
    ASSERT_TRUE(playCoordinateMove(board, move, san)) << move;
    const int mover = static_cast<int>(board.position().side ^ 1);
    played.game.addMove(san);
    played.coordinates.push_back(move);
    if (played.game.addPosition(repetitionKey(board.position()))) {
      played.game.setResult(rc::DRAW | rc::REPETITION);
      return;
    }
    const std::uint32_t end = gameEndCode(gameEnd(board), mover);
    if (end) {
      played.game.setResult(end);
      return;
    }
  }
}

// Random legal moves from a seed until the game ends or `maxPlies` are played.
Lines randomGameMoves(clsBoard& board, std::uint64_t seed, int maxPlies) {
  board.readFEN(clsBoard::START_FEN);
  Lines moves;
  clsGame scratch;
  scratch.addPosition(repetitionKey(board.position()));
  for (int ply = 0; ply < maxPlies; ++ply) {
    const int count = board.generateLegal();
    if (count == 0) break;
    seed = seed * 6364136223846793005ull + 1442695040888963407ull;
    const Move move = board.frame().first[(seed >> 33) % static_cast<std::uint64_t>(count)];
    std::string text = clsBoard::moveText(&move, false);
    if (text.size() == 6) text.erase(4, 1);  // e7e8=q -> e7e8q
    moves.push_back(text);
    board.playRecord(move);
    if (scratch.addPosition(repetitionKey(board.position())) || gameEnd(board) != GameEnd::None) break;
  }
  return moves;
}

TEST(PgnOutputTest, TimeControlMixesSecondsAndMilliseconds) {
  EXPECT_EQ(timeControlTag(0, 60000, 500), "60+500");
  EXPECT_EQ(timeControlTag(40, 300000, 0), "40/300");
  EXPECT_EQ(timeControlTag(300000, 300000, 0), "300000/300");
  EXPECT_EQ(timeControlTag(0, 10000, 100), "10+100");
  EXPECT_EQ(timeControlTag(0, 1500, 0), "1");
  EXPECT_EQ(softwareTag(), "Talvena 3.0.23 - https://talvena.org");
}

TEST(PgnOutputTest, RoundTagsComeInTheirOrderAndAreRebuiltEachRound) {
  TourneyConfig config = blitzConfig();
  config.pgnHeaders = {{"Annotator", "lab"}, {"Site", "Home"}};
  clsGame game;
  setRoundTags(game, config, 3, 1, 7, "Simple5", "Mass161");
  const Tags round1{{"Event", "blitz"},
                    {"Site", "Home"},
                    {"Date", ""},
                    {"Round", "1"},
                    {"KobuRound", "3:1:7"},
                    {"KobuSoftware", "Talvena 3.0.23 - https://talvena.org"},
                    {"KobuTimeControl", "0:60000:500"},
                    {"TimeControl", "60+500"},
                    {"White", "Simple5"},
                    {"Black", "Mass161"},
                    {"Result", "*"},
                    {"Annotator", "lab"}};
  EXPECT_EQ(game.tags(), round1);
  game.setTag("Forfeit_ms", "60001>60000");
  game.setResult(0x002A);
  setRoundTags(game, config, 3, 2, 7, "Simple5", "Mass161");
  Tags round2 = round1;
  round2[3].second = "2";
  round2[4].second = "3:2:7";
  EXPECT_EQ(game.tags(), round2);

  std::tm day{};
  day.tm_year = 2026 - 1900;
  day.tm_mon = 10;
  day.tm_mday = 23;
  day.tm_hour = 12;
  const std::time_t when = std::mktime(&day);
  EXPECT_EQ(pgnDate(when), "2026.11.23");
  setPlayDate(game, config, when);
  EXPECT_EQ(game.tags()[2], (clsGame::Tag{"Date", "2026.11.23"}));
  // A date from the file's header is kept.
  config.pgnHeaders.emplace_back("Date", "2020.01.01");
  setRoundTags(game, config, 1, 1, 1, "A", "B");
  setPlayDate(game, config, when);
  EXPECT_EQ(game.tag("Date"), "2020.01.01");
}

TEST(PgnOutputTest, TextOfAGameIsExact) {
  auto board = std::make_unique<clsBoard>();
  PlayedGame played;
  setRoundTags(played.game, blitzConfig(), 3, 2, 7, "Simple5", "Fair \"Max\"");
  playMoves(played, *board, {"f2f3", "e7e5", "g2g4", "d8h4"});
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

  // A game that did not end: "*" after the moves whatever the result tag says.
  clsGame open;
  open.setTag("Event", "line\r\nbreak\t");
  open.addMove("e4");
  EXPECT_EQ(pgnText(open), "[Event \"line  break \"]\r\n\r\n1. e4 *\r\n\r\n");
  open.setResult(0x8000);
  EXPECT_EQ(pgnText(open),
            "[Event \"line  break \"]\r\n[Result \"*\"]\r\n[Reason \"game aborted\"]\r\n\r\n1. e4 *\r\n\r\n");
  clsGame empty;
  empty.setResult(0x0600);
  EXPECT_EQ(pgnText(empty), "[Result \"1/2-1/2\"]\r\n[Reason \"50 moves\"]\r\n\r\n1/2-1/2\r\n\r\n");
}

TEST(PgnOutputTest, FilesAreNamedAppendedAndWritten) {
  TourneyConfig config = blitzConfig();
  EXPECT_EQ(gameFileBase(config, 3, 12), "blitz-3-12");
  config.logFolder = "logs";
  EXPECT_EQ(gameFileBase(config, 3, 12), "logs/blitz-3-12");
  config.name = "";
  EXPECT_EQ(gameFileBase(config, 1, 2), "logs/tourney-1-2");

  TempFolder folder;
  const std::string base = folder.file("deep/er/blitz-1-1");
  clsGame game;
  game.setTag("Event", "blitz");
  game.addMove("e4");
  game.setResult(0x0006);
  EXPECT_EQ(writeGameFiles(game, {"first", "second"}, base), Lines{});
  EXPECT_EQ(writeGameFiles(game, {"only"}, base), Lines{});
  EXPECT_EQ(readText(base + ".pgn"), pgnText(game) + pgnText(game));
  EXPECT_EQ(readText(base + ".log"), "only");
  EXPECT_EQ(writeGameFiles(game, {"a", "b", "c"}, base), Lines{});
  EXPECT_EQ(readText(base + ".log"), "a\r\nb\r\nc");

  std::ofstream(folder.file("plain")) << "x";
  EXPECT_EQ(writeGameFiles(game, {"a"}, folder.file("plain/game")),
            (Lines{"# error 20: Not a directory", "# error 20: Not a directory"}));
}

// Random games with every kind of move and end, written as a tournament
// writes them, must be read back move for move by pgn-extract and by our PGN
// reader, and pgn-extract must not warn about anything.
TEST(PgnOutputTest, PlayedGamesAreReadBackByPgnExtractAndOurReader) {
  ASSERT_EQ(::access(PGN_EXTRACT, X_OK), 0) << "pgn-extract is needed: apt-get install pgn-extract";
  auto board = std::make_unique<clsBoard>();
  TempFolder folder;
  const std::string base = folder.file("random-1-1");
  std::vector<PlayedGame> games(41);
  std::string ends;
  for (std::size_t i = 0; i < games.size(); ++i) {
    TourneyConfig config = blitzConfig();
    config.name = "random";
    setRoundTags(games[i].game, config, 1, 1, static_cast<int>(i + 1), "Simple5", "Mass161");
    setPlayDate(games[i].game, config, std::time(nullptr));
    Lines moves = randomGameMoves(*board, i * 7919 + 13, 400);
    if (i == 0) {  // knights out and back until the position after g1f3 stands a fourth time
      moves.clear();
      for (int cycle = 0; cycle < 4; ++cycle) moves.insert(moves.end(), {"g1f3", "g8f6", "f3g1", "f6g8"});
    }
    playMoves(games[i], *board, moves);
    if (games[i].game.undecided()) games[i].game.setResult(rc::ADJUDICATION | rc::DRAW);
    ends += reasonText(games[i].game.result()) + ",";
    ASSERT_EQ(writeGameFiles(games[i].game, {}, base), Lines{});
  }
  // The seeds give games ending in each way the board can end them.
  for (const char* end : {"mate,", "stalemate,", "insufficient material,", "triple repetition,", "adjudication,"})
    EXPECT_NE(ends.find(end), std::string::npos) << end << " in " << ends;

  const std::string uci = folder.file("uci.txt"), errors = folder.file("errors.txt");
  const std::string command =
      std::string(PGN_EXTRACT) + " -s -Wuci --notags --noresults -w100000 -o " + uci + " " + base + ".pgn 2> " + errors;
  ASSERT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(readText(errors), "");
  std::istringstream lines(readText(uci));
  std::size_t index = 0;
  for (std::string line; std::getline(lines, line);) {
    while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.pop_back();
    for (char& c : line) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));  // e7e8Q
    if (line.empty()) continue;
    ASSERT_LT(index, games.size());
    std::string expected;
    for (const std::string& move : games[index].coordinates) expected += (expected.empty() ? "" : " ") + move;
    EXPECT_EQ(line, expected) << "game " << index + 1;
    ++index;
  }
  EXPECT_EQ(index, games.size());

  kobubase::clsOutBuffer out;
  out.setEcho(false);
  out.setKeep(true);
  clsPGNFile reader(out, 1000);
  std::vector<std::vector<Move>> read;
  reader.gameObserver = [&read](std::uint64_t, const std::vector<Move>& moves, PgnResult) { read.push_back(moves); };
  ASSERT_TRUE(reader.readFile(base + ".pgn"));
  for (const std::string& line : out.takeAll())
    EXPECT_TRUE(line == "# pgn file loaded" || line.find("% done") != std::string::npos) << line;
  ASSERT_EQ(read.size(), games.size());
  for (std::size_t g = 0; g < games.size(); ++g) {
    ASSERT_EQ(read[g].size(), games[g].coordinates.size()) << "game " << g + 1;
    for (std::size_t m = 0; m < read[g].size(); ++m) {
      std::string text = clsBoard::moveText(&read[g][m], false);
      if (text.size() == 6) text.erase(4, 1);
      EXPECT_EQ(text, games[g].coordinates[m]) << "game " << g + 1 << " ply " << m + 1;
    }
  }
}

}  // namespace
}  // namespace kbuChess
