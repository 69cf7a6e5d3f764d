// Our PGN reader against pgn-extract, an independent reader from Debian: for
// every game that pgn-extract writes out, we must read the same moves.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

#include "base/text.h"
#include "book_test_util.h"
#include "chess/book/pgn_file.h"

using namespace kbuChess;

namespace {

const std::string PGN_EXTRACT = "/usr/games/pgn-extract";
const std::string ECO_FILE = "/usr/share/pgn-extract/eco.pgn";

// Installs Debian's pgn-extract when missing and allowed; false when it is
// unavailable, which fails the tests: they must not pass without it.
bool havePgnExtract() {
  static const bool found = [] {
    if (::access(PGN_EXTRACT.c_str(), X_OK) != 0 && ::geteuid() == 0) {
      std::system("apt-get install -y pgn-extract > /dev/null 2>&1");
    }
    return ::access(PGN_EXTRACT.c_str(), X_OK) == 0 && ::access(ECO_FILE.c_str(), R_OK) == 0;
  }();
  return found;
}

// One text per game: its moves in coordinate form, e.g. "e2e4 e7e5 e7e8q".
std::vector<std::string> referenceGames(const std::string& pgn, const bookTest::TempFolder& folder) {
  const std::string out = folder.file("reference.txt");
  std::system((PGN_EXTRACT + " -s -Wuci --notags -C -V -N --noresults -w100000 -o " + out + " " + pgn +
               " > /dev/null 2>&1").c_str());
  std::vector<std::string> games;
  std::istringstream lines(bookTest::readText(out));
  for (std::string line; std::getline(lines, line);) {
    line = bookTest::withoutTrailingBlanks(line);
    // Promotions come as e7e8Q: the letter is made lower case as ours.
    for (char& c : line) c = static_cast<char>(std::tolower(c));
    if (!line.empty()) games.push_back(line);
  }
  return games;
}

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
  const std::vector<std::string> reference = referenceGames(pgn, folder);
  const std::vector<std::string> ours = ourGames(pgn, out);
  ASSERT_FALSE(reference.empty());
  ASSERT_EQ(ours.size(), reference.size()) << pgn;
  for (std::size_t i = 0; i < ours.size(); ++i) ASSERT_EQ(ours[i], reference[i]) << "game " << i + 1 << " of " << pgn;
  for (const std::string& line : out.lines()) EXPECT_EQ(line.find("illegal"), std::string::npos) << line;
}

}  // namespace

TEST(PgnExtract, SameMovesOnTheEcoFile) {
  ASSERT_TRUE(havePgnExtract());
  expectSameGames(ECO_FILE);
}

// TALVENA_COMPARE_GAMES=20000 compares the whole file (a few seconds).
TEST(PgnExtract, SameMovesOnThreeThousandSelfPlayGames) {
  ASSERT_TRUE(havePgnExtract());
  const char* wanted = std::getenv("TALVENA_COMPARE_GAMES");
  const int limit = wanted != nullptr ? static_cast<int>(kobubase::readClamped(wanted, 1, 100000)) : 3000;
  std::ifstream in(SELFPLAY_PGN);
  ASSERT_TRUE(in.good()) << SELFPLAY_PGN;
  bookTest::TempFolder folder;
  const std::string part = folder.file("part.pgn");
  std::ofstream partFile(part);
  int games = 0;
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("[Event ", 0) == 0 && ++games > limit) break;
    partFile << line << '\n';
  }
  partFile.close();
  expectSameGames(part);
}
