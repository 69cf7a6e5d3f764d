#pragma once
// Ending a game early on the players' own scores, when the event asks for it.
//
// After every move the game hands over the mover's score (its last thinking
// line, from its own side) or nothing. A side's runs count its consecutive
// moves with a score inside the draw window and beyond the resign threshold;
// a move without a score ends its runs, so engines that print no scores are
// never adjudicated.
//   draw:   both sides' last drawMoves scores within +-drawScore, and the
//           game at least drawAfter moves long;
//   resign: one side's last resignMoves scores at or below -resignScore and
//           the other's as many at or above +resignScore: the first loses.
#include <cstdint>
#include <optional>

namespace kbuChess {

struct AdjudicationRules {
  bool enabled = false;
  int drawMoves = 8;
  int drawScore = 10;
  int drawAfter = 40;
  int resignMoves = 4;
  int resignScore = 800;
};

class clsScoreAdjudicator {
 public:
  explicit clsScoreAdjudicator(const AdjudicationRules& rules) : rules_(rules) {}
  void reset();
  // After `mover`'s move (0 White, 1 Black) with the game now `plies` long:
  // the result code that ends the game, or 0.
  std::uint32_t afterMove(int mover, std::optional<int> score, int plies);

 private:
  struct Runs {
    int draw = 0;
    int losing = 0;
    int winning = 0;
  };
  AdjudicationRules rules_;
  Runs runs_[2];
};

}  // namespace kbuChess
