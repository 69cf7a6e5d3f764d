#pragma once
// The opening book as a player sees it: something that may choose the move
// of a position before any search. The book implements it; the engine asks
// it first when it starts to think.
#include "chess/board/board.h"

namespace kbuChess {

class clsBookProbe {
 public:
  virtual ~clsBookProbe() = default;
  // Chooses a book move for the board's position; false when the book has
  // none. The board is left with the same position.
  virtual bool bookMove(clsBoard& board, Move& chosen) = 0;
};

}  // namespace kbuChess
