#pragma once
// Opening positions from an EPD file: one position a line, the first four
// FEN fields (board, side to move, castling, en passant) followed by
// operations, which are ignored except "hmvc N" and "fmvn N" (the move
// clocks; 0 and 1 without them). Lines in FEN form, with the two clocks as
// fields five and six, are read too. Blank lines and lines starting with "#"
// are skipped. A castling right whose king or rook is not on its home square,
// and an en-passant square that no double step can have made, are dropped.
#include <string>
#include <string_view>
#include <vector>

#include "base/output.h"
#include "chess/tourney/openings.h"

namespace kbuChess {

// The positions of EPD text as openings without moves. A line that is no
// playable position (bad fields, a side without exactly one king, a pawn on
// the first or last rank, the side not to move in check, no legal move) is
// skipped with "# openings: line N skipped: WHY".
std::vector<Opening> readEpdPositions(std::string_view text, kobubase::clsOutBuffer& out);

}  // namespace kbuChess
