// Probing the book in play: the candidates of a position are its legal moves
// whose resulting positions the book holds.
#include <algorithm>
#include <cmath>

#include "base/random.h"
#include "chess/book/book.h"
#include "chess/book/book_key.h"

namespace kbuChess {

int clsBook::listCandidates(clsBoard& board, std::vector<clsBookEntryExt>& list) const {
  list.clear();
  PlyFrame& frame = board.frame();
  const Position before = board.position();
  const Position savedBefore = frame.saved;
  board.generateLegal();
  for (const Move* move = frame.first; move < frame.end; ++move) {
    if (!move->isMove()) continue;
    // Made as a played move (en-passant square included) so that the key is
    // the one the book builder stored; frames and move clocks stay untouched.
    board.makePlayed(*move);
    const BookRecord* found = lookup(bookKey(board.position()));
    board.position() = before;
    if (found != nullptr) {
      // The book counts for the side to move after the candidate; the side
      // choosing it wins what that side loses.
      const BookRecord forChooser{found->key, found->losses, found->wins, found->draws};
      list.emplace_back(forChooser, clsBoard::moveText(move, false));
    }
  }
  frame.saved = savedBefore;
  std::sort(list.begin(), list.end(),
            [](const clsBookEntryExt& a, const clsBookEntryExt& b) { return b.greater(a); });
  return static_cast<int>(list.size());
}

std::size_t clsBook::cutRareCandidates(std::vector<clsBookEntryExt>& list) {
  double total = 0;
  for (const clsBookEntryExt& candidate : list) total += std::sqrt(static_cast<double>(candidate.games()));
  for (std::size_t i = list.size(); i-- > 0;) {
    if (std::sqrt(static_cast<double>(list[i].games())) / total < MIN_WEIGHT_SHARE) {
      list.erase(list.begin() + static_cast<std::ptrdiff_t>(i));
    }
  }
  return list.size();
}

// The weights only decide which candidates stay; among those the choice is uniform.
bool clsBook::bookMove(clsBoard& board, Move& chosen) {
  std::vector<clsBookEntryExt> list;
  if (listCandidates(board, list) == 0 || cutRareCandidates(list) == 0) return false;
  const clsBookEntryExt& pick = list[kobubase::randomAbs32() % list.size()];
  const PlyFrame& frame = board.frame();
  for (const Move* move = frame.first; move < frame.end; ++move) {
    if (move->isMove() && clsBoard::moveText(move, false) == pick.move) {
      chosen = *move;
      return true;
    }
  }
  return false;
}

}  // namespace kbuChess
