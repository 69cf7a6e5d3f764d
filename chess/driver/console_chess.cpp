// The console's chess functions: attack sets from the board's tables, the
// squares between and through two squares, and the game's position.
#include "chess/board/tables.h"
#include "chess/driver/console.h"
#include "chess/board/board.h"

namespace kbuChess {

using kobubase::clsArgs;
using kobubase::Value;

namespace {

// A slider's targets along the directions first..last: each ray up to and
// including its first occupied square.
u64 sliderTargets(int square, u64 occupied, int first, int last) {
  u64 targets = 0;
  for (int d = first; d <= last; ++d) {
    u64 ray = tables.rays[d][square];
    const u64 blockers = ray & occupied;
    if (blockers) ray &= ~tables.rays[d][squareIndex(nearest(blockers, d))];
    targets |= ray;
  }
  return targets;
}

int opposite(int direction) {
  return direction + (isIncreasing(direction) ? 1 : -1);
}

// The direction from a toward b, or 0 when they share no rank, file or diagonal.
int directionBetween(int a, int b) {
  for (int d = 1; d <= 8; ++d) {
    if (tables.rays[d][a] & squareMask(b)) return d;
  }
  return 0;
}

// The occupied mask: the optional argument, else the game's position.
u64 occupiedArg(const clsArgs& a, std::size_t i, const clsBoard& board) {
  return a.size() > i ? a.integer(i) : board.position().occupied;
}

void addAttackFunctions(kobubase::clsInterpreter& in, const clsBoard& board) {
  in.addFunction("knight", 1, 1, "knight(sq)",
                 [](const clsArgs& a) { return Value::integer(tables.knightAttacks[a.square(0)]); });
  in.addFunction("king", 1, 1, "king(sq)",
                 [](const clsArgs& a) { return Value::integer(tables.kingAttacks[a.square(0)]); });
  in.addFunction("pawn", 2, 2, "pawn(sq, 0 white|1 black)",
                 [](const clsArgs& a) { return Value::integer(tables.pawnAttacks[a.below(1, 2)][a.square(0)]); });
  in.addFunction("bishop", 1, 2, "bishop(sq[, occupied])", [&board](const clsArgs& a) {
    return Value::integer(sliderTargets(a.square(0), occupiedArg(a, 1, board), 5, 8));
  });
  in.addFunction("rook", 1, 2, "rook(sq[, occupied])", [&board](const clsArgs& a) {
    return Value::integer(sliderTargets(a.square(0), occupiedArg(a, 1, board), 1, 4));
  });
  in.addFunction("queen", 1, 2, "queen(sq[, occupied])", [&board](const clsArgs& a) {
    return Value::integer(sliderTargets(a.square(0), occupiedArg(a, 1, board), 1, 8));
  });
  in.addFunction("between", 2, 2, "between(a, b)", [](const clsArgs& a) {
    const int from = a.square(0), to = a.square(1), d = directionBetween(from, to);
    return Value::integer(d ? tables.rays[d][from] & tables.rays[opposite(d)][to] : 0);
  });
  in.addFunction("line", 2, 2, "line(a, b)", [](const clsArgs& a) {
    const int from = a.square(0), to = a.square(1), d = directionBetween(from, to);
    return Value::integer(d ? tables.rays[d][from] | tables.rays[opposite(d)][from] | squareMask(from) : 0);
  });
}

}  // namespace

void addChessFunctions(kobubase::clsInterpreter& in, const clsBoard& board) {
  addAttackFunctions(in, board);
  in.addFunction("fen", 0, 0, "fen()", [&board](const clsArgs&) { return Value::string(board.fen()); });
  static const struct {
    const char* name;
    int index;
  } MASKS[] = {{"us", US},          {"them", THEM},  {"pawns", PAWN},   {"knights", KNIGHT},
               {"bishops", BISHOP}, {"rooks", ROOK}, {"queens", QUEEN}, {"kings", KING}};
  for (const auto& mask : MASKS) {
    in.addNamedValue(mask.name, mask.name,
                     [&board, index = mask.index] { return Value::integer(board.position().masks[index]); });
  }
  in.addNamedValue("occupied", "occupied", [&board] { return Value::integer(board.position().occupied); });
  in.addNamedValue("white", "white", [&board] { return Value::integer(board.position().colour(WHITE)); });
  in.addNamedValue("black", "black", [&board] { return Value::integer(board.position().colour(BLACK)); });
}

}  // namespace kbuChess
