#include "chess/book/pgn_scanner.h"

#include <gtest/gtest.h>

#include <array>

using namespace kbuChess;

namespace {

// Writes every event as one short text: "start 1", "tag Result=1-0", "e4", "end 1-0", the problem line.
struct Recorder : clsPGNListener {
  std::vector<std::string> events;
  std::size_t movesWanted = 1000, moves = 0;

  void onGameStart(std::uint64_t number) override {
    events.push_back("start " + std::to_string(number));
    moves = 0;
  }
  void onTag(std::string_view name, std::string_view value) override {
    events.push_back("tag " + std::string(name) + "=" + std::string(value));
  }
  bool onMove(std::string_view san) override {
    events.emplace_back(san);
    return ++moves < movesWanted;
  }
  void onGameEnd(PgnResult result) override {
    events.push_back(std::string("end ") + std::array{"1-0", "0-1", "1/2-1/2", "*"}[static_cast<int>(result)]);
  }
  void onProblem(const std::string& line) override { events.push_back(line); }
};

std::vector<std::string> events(const std::string& text, std::size_t piece = 0, std::size_t movesWanted = 1000) {
  Recorder recorder;
  recorder.movesWanted = movesWanted;
  clsPGNScanner scanner(recorder);
  if (piece == 0) piece = text.size() + 1;
  for (std::size_t at = 0; at < text.size(); at += piece)
    scanner.feed(text.data() + at, std::min(piece, text.size() - at));
  scanner.finish();
  return recorder.events;
}

// The events joined by " | ".
std::string scan(const std::string& text, std::size_t piece = 0, std::size_t movesWanted = 1000) {
  std::string joined;
  for (const std::string& event : events(text, piece, movesWanted)) joined += (joined.empty() ? "" : " | ") + event;
  return joined;
}

const std::string ANNOTATED =
    "% an escape line with [brackets] and {braces}\n"
    "[Event \"Club \\\"open\\\" [A]\"]\n"
    "[Result \"1-0\"]\n"
    "\n"
    "{ opening } 1. e4 $1 e5!? 2.Nf3 (2. f4 exf4 (2... d5) 3. Nf3) Nc6 ; rest of line ( } [\n"
    "3. Bb5+! a6?? 12... Nf6 {nested ( brace} 0-0 e8Q+ 1-0\n";

}  // namespace

TEST(PgnScanner, SkipsEverythingButTheMainLine) {
  const std::string expected =
      "start 1 | tag Event=Club \"open\" [A] | tag Result=1-0 | e4 | e5 | Nf3 | Nc6 | Bb5+ | a6 | Nf6 | O-O | e8=Q+ | "
      "end 1-0";
  EXPECT_EQ(scan(ANNOTATED), expected);
  for (std::size_t piece : {1, 2, 3, 7, 64}) EXPECT_EQ(scan(ANNOTATED, piece), expected) << piece;
}

TEST(PgnScanner, SplitsGamesAtResultsAndAtTheNextTags) {
  const std::string text =
      "[Result \"0-1\"]\n1. d4 d5 0-1\n"
      "1. c4 1/2-1/2 1. b3 *\n"
      "[Result \"1-0\"]\n1. f4 e5\n"    // no result token: the next tag ends the game
      "[Result \"1/2-1/2\"]\n1. g3\n";  // nor here: the end of the text does
  EXPECT_EQ(scan(text),
            "start 1 | tag Result=0-1 | d4 | d5 | end 0-1 | start 2 | c4 | end 1/2-1/2 | start 3 | b3 | end * | "
            "start 4 | tag Result=1-0 | f4 | e5 | end 1-0 | start 5 | tag Result=1/2-1/2 | g3 | end 1/2-1/2");
}

TEST(PgnScanner, StopsHandingOutMovesWhenAskedUntilTheNextGame) {
  EXPECT_EQ(scan("1. e4 e5 2. Nf3 1-0 1. d4 d5 0-1", 0, 2),
            "start 1 | e4 | e5 | end 1-0 | start 2 | d4 | d5 | end 0-1");
}

TEST(PgnScanner, ReportsUnterminatedPartsAndGoesOn) {
  EXPECT_EQ(scan("1. e4 (1. d4 d5\n[Event \"x\"]\n1. c4 *"),
            "start 1 | e4 | # game 1: unterminated variation | end * | start 2 | tag Event=x | c4 | end *");
  EXPECT_EQ(scan("1. e4 { never closed 1-0\n"), "start 1 | e4 | # game 1: unterminated comment | end *");
  EXPECT_EQ(scan("[Event \"cut\n1. e4 *"), "start 1 | # game 1: malformed tag pair | e4 | end *");
  EXPECT_EQ(scan("1. e4 e5 2. Nf"), "start 1 | e4 | e5 | Nf | end *");
}

TEST(PgnScanner, LongLinesAndTokensAreCutNotStored) {
  std::string text = "[Event \"" + std::string(100000, 'v') + "\"]\n1. e4 " + std::string(10 << 20, 'a') + " *\n";
  const std::vector<std::string> seen = events(text, clsPGNScanner::READ_BUFFER_BYTES);
  ASSERT_EQ(seen.size(), 5u);
  EXPECT_EQ(seen[1].size(), 4 + 6 + clsPGNScanner::TAG_VALUE_CHARS);
  EXPECT_EQ(seen[3], std::string(clsPGNScanner::TOKEN_CHARS, 'a'));
}
