// The backslash commands: the author's console beside the xboard dialogue.
#include <cstdio>

#include "chess/book/book_commands.h"
#include "chess/driver/talvena.h"
#include "chess/tourney/tourney.h"

namespace kbuChess {

using kobubase::readInteger;
using kobubase::wordAt;

namespace {

// The first line of a readable file (at most 64 KiB of it), or false.
bool firstLineOfFile(const std::string& path, std::string& line) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return false;
  std::string buffer(65536, '\0');
  const bool read = std::fgets(buffer.data(), static_cast<int>(buffer.size()), file) != nullptr;
  std::fclose(file);
  if (!read) return false;
  line = buffer.c_str();
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
  return true;
}

// True when the text has at least `count` blank-separated words, each a number above 0.
bool positiveNumbers(const std::string& text, int first, int count) {
  for (int i = first; i < first + count; ++i) {
    if (readInteger(wordAt(text, i)) <= 0) return false;
  }
  return true;
}

}  // namespace

void clsTalvena::loadSoul(const std::string& text) {
  haltSearch();
  std::string soul = text;
  std::string line;
  if (firstLineOfFile(text, line)) soul = line;
  if (soul.find('=') != std::string::npos) {
    engine_.applySoulText(soul);
  } else {
    engine_.selectSoul(soul);
  }
}

int clsTalvena::cmdDebugBoard(const std::string& rest) {
  haltSearch();
  state_.debugDisplay = !state_.debugDisplay;
  engine_.printBoard();
  if (!rest.empty() && rest[0] == 'm') printMoveList();
  return CMD_PRINTED;
}

int clsTalvena::cmdDbg(const std::string& rest) {
  engine_.debugSetting = static_cast<int>(readInteger(rest));
  execute("setboard 1k6/7R/1K6/8/8/8/8/8 b");
  execute("post");
  execute("go");
  return CMD_HANDLED;
}

int clsTalvena::cmdLoadSoul(const std::string& rest) {
  if (rest.empty()) {
    print("# loadsoul soul_text_or_file");
    return CMD_PRINTED;
  }
  loadSoul(rest);
  print("# new soul: " + rest);
  return CMD_PRINTED;
}

int clsTalvena::cmdSoul(const std::string& rest) {
  if (!rest.empty()) loadSoul(rest);
  print("# soul " + engine_.soulName() + "=" + engine_.soulValuesText());
  return CMD_PRINTED;
}

int clsTalvena::cmdMoves(const std::string&) {
  haltSearch();
  printMoveList();
  return CMD_PRINTED;
}

// "# __moves__ N" and then each legal move of the position in the long and
// the coordinate form, in generation order.
void clsTalvena::printMoveList() {
  engine_.resetFrames();
  const int count = engine_.generateLegal();
  print("# __moves__ " + std::to_string(count < 0 ? 0 : count));
  for (int i = 0; i < count; ++i) {
    const Move* move = engine_.frame().first + i;
    print("# " + clsBoard::moveText(move, true) + " " + clsBoard::moveText(move, false));
  }
  engine_.resetFrames();
}

int clsTalvena::cmdTourney(const std::string& rest) {
  haltSearch();
  return commandTourney(rest, *this);
}

int clsTalvena::cmdLoadBook(const std::string& rest) {
  haltSearch();
  return commandLoadBook(book_, rest, *this);
}

int clsTalvena::cmdSaveBook(const std::string& rest) { return commandSaveBook(book_, rest, *this); }

int clsTalvena::cmdListBook(const std::string&) {
  haltSearch();
  return commandListBook(book_, engine_, *this);
}

int clsTalvena::cmdMergeBooks(const std::string& rest) { return commandMergeBooks(rest, *this); }

int clsTalvena::cmdBuildBooks(const std::string& rest) { return commandBuildBooks(rest, *this); }

int clsTalvena::cmdCvBooks(const std::string& rest) { return commandCvBooks(rest, *this); }

// Soul learning is not part of this build; the commands keep their names and
// usage lines so that scripts get a clear answer.
int clsTalvena::cmdLearn(const std::string& rest) {
  if (wordAt(rest, 0).empty() || !positiveNumbers(rest, 1, 4)) {
    print("# learn file generations engines_count ms_per_move max_moves");
  } else {
    print("# learning is not available in this build");
  }
  return CMD_PRINTED;
}

int clsTalvena::cmdLearnt(const std::string&) {
  print("# learning is not available in this build");
  return CMD_PRINTED;
}

int clsTalvena::cmdPlay(const std::string& rest) {
  if (wordAt(rest, 2).empty()) {
    print("# \\play ms_per_move max_moves file.pgn [soulA soulB]");
  } else {
    print("# \\play is not available in this build");
  }
  return CMD_PRINTED;
}

}  // namespace kbuChess
