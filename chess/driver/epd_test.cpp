// "\epd": the engine tests itself on a file of EPD positions, one search of a
// fixed time per position, and counts the positions where it finds the best
// move ("bm") that the file gives.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "chess/driver/talvena.h"

namespace kbuChess {

using kobubase::readInteger;
using kobubase::wordAt;

namespace {

constexpr std::int64_t DefaultEpdMs = 60000;
// The default file keeps its historical Windows path deliberately, as the
// command's own reply names it; give a file to run a test here.
constexpr const char* DefaultEpdFile = "D:\\A\\KOBU\\KobuChess\\TestPositions\\arasan19.epd";

// The non-empty lines of a text file; false with errno set when it cannot be read.
bool readLines(const std::string& path, std::vector<std::string>& lines) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  std::string line;
  for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
    if (c != '\n') {
      line += static_cast<char>(c);
      continue;
    }
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!line.empty()) lines.push_back(line);
    line.clear();
  }
  if (!line.empty()) lines.push_back(line);
  std::fclose(file);
  return true;
}

}  // namespace

int clsTalvena::cmdEpd(const std::string& rest) {
  std::int64_t ms = kobubase::readClamped(wordAt(rest, 0), 0, MAX_CLOCK_MS);
  if (ms <= 0) ms = DefaultEpdMs;
  std::string file(wordAt(rest, 1));
  if (file.empty()) file = DefaultEpdFile;
  print("# time " + std::to_string(ms) + " ms - file " + file);
  EpdRun run;
  if (!readLines(file, run.lines)) {
    print(kobubase::errorLine(errno));
    return CMD_PRINTED;
  }
  epd_ = std::move(run);
  state_.level.baseMs = ms;
  state_.playMode = MODE_EPD_TEST;
  startNextEpdPosition();
  return CMD_PRINTED;
}

void clsTalvena::startNextEpdPosition() {
  while (epd_.next < epd_.lines.size()) {
    const std::string& line = epd_.lines[epd_.next++];
    setPosition(line);
    epd_.operations = view_.epdOperations();
    print("# testing: " + line);
    think();
    return;
  }
  const int percent = epd_.tested ? epd_.solved * 100 / epd_.tested : 0;
  print("# test results: " + std::to_string(epd_.solved) + "/" + std::to_string(epd_.tested) + " " +
        std::to_string(percent) + "%");
  state_.playMode = MODE_FORCE;
}

// Compares the move with every move of the position's "bm" operation (SAN).
void clsTalvena::scoreEpdMove(const Move& move) {
  bool solved = false;
  for (const std::string& operation : epd_.operations) {
    if (operation.rfind("bm ", 0) != 0) continue;
    for (int i = 1; !wordAt(operation, i).empty(); ++i) {
      clsBoard& board = positionView();
      board.generateLegal();
      const Move* best = board.readSANMove(wordAt(operation, i));
      if (best && move.isMove() && best->sameMove(move)) solved = true;
    }
  }
  ++epd_.tested;
  std::string line = "# move " + clsBoard::moveText(move.isMove() ? &move : nullptr, false);
  if (solved) {
    ++epd_.solved;
    line += " ok ---> score : " + std::to_string(move.searchScore);
  } else {
    line += " bad!";
  }
  print(line);
  startNextEpdPosition();
}

}  // namespace kbuChess
