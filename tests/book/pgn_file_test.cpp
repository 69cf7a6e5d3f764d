#include <gtest/gtest.h>

#include <random>

#include "book_test_util.h"
#include "chess/board/board.h"
#include "chess/book/book_key.h"
#include "chess/book/pgn_file.h"

using namespace kbuChess;

namespace {

// Book keys of the positions after each of the coordinate moves from the start.
std::vector<u64> keysAlong(std::initializer_list<const char*> moves) {
  clsBoard board;
  std::vector<u64> keys;
  for (const char* move : moves) {
    EXPECT_TRUE(board.readCoordinateMove(move)) << move;
    keys.push_back(bookKey(board.position()));
  }
  return keys;
}

std::string counts(const clsBook& book, u64 key) {
  const BookRecord* r = book.lookup(key);
  if (r == nullptr) return "missing";
  return std::to_string(r->wins) + "/" + std::to_string(r->losses) + "/" + std::to_string(r->draws);
}

class PgnFile : public ::testing::Test {
 protected:
  bookTest::Quiet out;
  bookTest::TempFolder folder;
};

}  // namespace

TEST_F(PgnFile, CountsFollowTheSideToMoveOfEachPosition) {
  clsPGNFile reader(out, 20);
  reader.readText("[Result \"1-0\"]\n1. e4 e5 2. Nf3 1-0\n\n1. e4 e5 2. Nf3 Nc6 1/2-1/2\n1. e4 c5 0-1\n1. e4 *");
  const std::vector<u64> keys = keysAlong({"e2e4", "e7e5", "g1f3", "b8c6"});
  EXPECT_EQ(counts(reader.book(), keys[0]), "1/1/2");  // Black to move: lost game 1, won game 3
  EXPECT_EQ(counts(reader.book(), keys[1]), "1/0/1");  // White to move after 1...e5: won game 1
  EXPECT_EQ(counts(reader.book(), keys[2]), "0/1/1");
  EXPECT_EQ(counts(reader.book(), keys[3]), "0/0/1");
  EXPECT_EQ(counts(reader.book(), keysAlong({"e2e4", "c7c5"})[1]), "0/1/0");
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
  EXPECT_EQ(counts(reader.book(), keysAlong({"d2d4"})[0]), "0/1/0");
}

TEST_F(PgnFile, OnlyTheFirstPliesAndNoSetUpGamesAreStored) {
  clsPGNFile reader(out, 2);
  reader.readText("1. e4 e5 2. Nf3 Nc6 3. Bb5 a6 1/2-1/2\n"
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
  EXPECT_EQ(bookTest::parts(lines[0]), (std::vector<std::string>{"# game 1 - 46% done", "# game 2 - 96% done", "# pgn file loaded"}));
  EXPECT_EQ(bookTest::onScreen(lines[0]), "# pgn file loaded");
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
  EXPECT_EQ(counts(reader.book(), keysAlong({"e2e4"})[0]), "0/1/0");
}
