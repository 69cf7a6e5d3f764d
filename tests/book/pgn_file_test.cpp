#include "chess/book/pgn_file.h"

#include <gtest/gtest.h>

#include <random>

#include "book_test_util.h"
#include "chess/board/board.h"
#include "chess/book/book_key.h"
#include "tests/common/pgn_extract.h"

using namespace kbuChess;

namespace {

// The counts "wins/losses/draws" of the position after the coordinate moves from the start.
std::string countsAfter(const clsBook& book, std::initializer_list<const char*> moves) {
  clsBoard board;
  for (const char* move : moves) EXPECT_TRUE(board.readCoordinateMove(move)) << move;
  const BookRecord* r = book.lookup(bookKey(board.position()));
  return r ? std::to_string(r->wins) + "/" + std::to_string(r->losses) + "/" + std::to_string(r->draws) : "missing";
}

class PgnFile : public ::testing::Test {
 protected:
  bookTest::Quiet out;
  bookTest::TempFolder folder;
};

std::vector<std::string> ourGames(const std::string& pgn, kobubase::clsOutBuffer& out) {
  std::vector<std::string> games;
  clsPGNFile reader(out, 100000);
  reader.gameObserver = [&](std::uint64_t, const std::vector<Move>& moves, PgnResult) {
    std::string text;
    for (const Move& move : moves) {
      std::string coordinate = clsBoard::moveText(&move, false);
      if (coordinate.size() == 6) coordinate.erase(4, 1);  // e7e8=q as e7e8q
      text += (text.empty() ? "" : " ") + coordinate;
    }
    games.push_back(text);
  };
  EXPECT_TRUE(reader.readFile(pgn));
  return games;
}

void expectSameGames(const std::string& pgn) {
  bookTest::TempFolder folder;
  bookTest::Quiet out;
  const std::vector<std::string> reference = testFiles::gameMoves(pgn, folder.file("pgn-extract.txt")).games;
  const std::vector<std::string> ours = ourGames(pgn, out);
  ASSERT_FALSE(reference.empty()) << "pgn-extract read no game of " << pgn;
  ASSERT_EQ(ours.size(), reference.size()) << pgn;
  for (std::size_t i = 0; i < ours.size(); ++i) ASSERT_EQ(ours[i], reference[i]) << "game " << i + 1 << " of " << pgn;
  for (const std::string& line : out.lines()) EXPECT_EQ(line.find("illegal"), std::string::npos) << line;
}

}  // namespace

TEST_F(PgnFile, CountsFollowTheSideToMoveOfEachPosition) {
  clsPGNFile reader(out, 20);
  reader.readText("[Result \"1-0\"]\n1. e4 e5 2. Nf3 1-0\n\n1. e4 e5 2. Nf3 Nc6 1/2-1/2\n1. e4 c5 0-1\n1. e4 *");
  EXPECT_EQ(countsAfter(reader.book(), {"e2e4"}), "1/1/2");          // Black to move: lost game 1, won game 3
  EXPECT_EQ(countsAfter(reader.book(), {"e2e4", "e7e5"}), "1/0/1");  // White to move: won game 1
  EXPECT_EQ(countsAfter(reader.book(), {"e2e4", "e7e5", "g1f3"}), "0/1/1");
  EXPECT_EQ(countsAfter(reader.book(), {"e2e4", "e7e5", "g1f3", "b8c6"}), "0/0/1");
  EXPECT_EQ(countsAfter(reader.book(), {"e2e4", "c7c5"}), "0/1/0");
  EXPECT_EQ(reader.book().count(), 5u);
  EXPECT_EQ(reader.games(), 4u);
  EXPECT_TRUE(out.lines().empty());
}

TEST_F(PgnFile, AnIllegalMoveKeepsThePliesBeforeItAndTheNextGame) {
  clsPGNFile reader(out, 20);
  reader.readText("1. e4 e5 2. Ke3 Nf6 1-0\n\n1. d4 1-0\n");
  EXPECT_EQ(out.lines(),
            (std::vector<std::string>{"# game 1: illegal move \"Ke3\" at ply 3, the 2 plies before it are kept"}));
  EXPECT_EQ(reader.book().count(), 3u);
  EXPECT_EQ(countsAfter(reader.book(), {"d2d4"}), "0/1/0");
}

TEST_F(PgnFile, OnlyTheFirstPliesAndNoSetUpGamesAreStored) {
  clsPGNFile reader(out, 2);
  reader.readText(
      "1. e4 e5 2. Nf3 Nc6 3. Bb5 a6 1/2-1/2\n"
      "[SetUp \"1\"]\n[FEN \"8/8/8/8/8/8/8/K1k5 w - - 0 1\"]\n1. Kb1 1-0\n");
  EXPECT_EQ(reader.book().count(), 2u);
  EXPECT_EQ(reader.games(), 2u);
}

TEST_F(PgnFile, FileReadingReportsProgressAndMissingFiles) {
  const std::string path = folder.file("games.pgn");
  bookTest::writeText(path, "1. e4 e5 1-0\n1. d4 d5 0-1\n");
  clsPGNFile reader(out, 20);
  EXPECT_TRUE(reader.readFile(path));
  const std::vector<std::string> lines = out.lines();
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0], "# game 1 - 46% done   \r# game 2 - 96% done   \r# pgn file loaded     ");
  EXPECT_FALSE(reader.readFile(folder.file("none.pgn")));
  EXPECT_EQ(out.lines(), (std::vector<std::string>{"# error 2: No such file or directory"}));
}

TEST_F(PgnFile, FenListSumsEqualPositions) {
  clsPGNFile reader(out, 2, clsPGNFile::TYPE_FEN);
  reader.readText("1. e4 e5 1-0\n1. e4 c5 0-1\n");
  const std::string path = folder.file("fens.txt");
  ASSERT_TRUE(reader.saveFENs(path, 0));
  EXPECT_EQ(bookTest::readText(path),
            "rnbqkbnr/pp1ppppp/8/2p5/4P3/8/PPPP1PPP/RNBQKBNR w KQkq c6 0 1 0\r\n"
            "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq e6 1 0 0\r\n"
            "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 1 1 0\r\n");
  EXPECT_TRUE(reader.fens().empty());
}

TEST_F(PgnFile, BadInputGivesMessagesNotCrashes) {
  std::mt19937 random(11);
  std::string noise(1 << 18, '\0');
  for (char& c : noise) c = static_cast<char>(random());
  clsPGNFile reader(out, 20);
  reader.readText(noise + "}\n[Event \"after the noise\"]\n1. e4 1-0\n");
  for (const std::string& line : out.lines()) EXPECT_EQ(line.substr(0, 2), "# ") << line;
  EXPECT_EQ(countsAfter(reader.book(), {"e2e4"}), "0/1/0");
}

// Debian's ECO file and the sample games the project ships (401 games of
// real openings, with promotions, castling both ways and en-passant captures).
TEST(PgnExtract, SameMovesOnTheEcoFileAndTheSampleGames) {
  expectSameGames("/usr/share/pgn-extract/eco.pgn");
  expectSameGames(SAMPLE_PGN);
}
