// Adjudication on the engines' own scores: draws, resignations, and no
// verdict for engines that print no scores.
#include "chess/tourney/score_adjudication.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "chess/tourney/game_record.h"

namespace kbuChess {
namespace {

constexpr int NONE = -1000000;  // a move without a score

// Plays the scores, White's first, one per ply after startPly; answers the
// code that ended the game and the ply (1-based) it came on, or {0, 0}.
std::pair<std::uint32_t, int> adjudicate(const AdjudicationRules& rules, const std::vector<int>& scores,
                                         int startPly = 0) {
  clsScoreAdjudicator adjudicator(rules);
  for (std::size_t i = 0; i < scores.size(); ++i) {
    const std::optional<int> score = scores[i] == NONE ? std::nullopt : std::optional<int>(scores[i]);
    const int ply = startPly + static_cast<int>(i) + 1;
    if (const std::uint32_t code = adjudicator.afterMove(static_cast<int>(i % 2), score, ply)) return {code, ply};
  }
  return {0, 0};
}

TEST(ScoreAdjudicationTest, DrawsResignationsAndSilentEngines) {
  AdjudicationRules rules;
  rules.enabled = true;
  rules.drawMoves = 2;
  rules.drawScore = 10;
  rules.drawAfter = 3;
  rules.resignMoves = 2;
  rules.resignScore = 800;
  const std::uint32_t draw = rc::DRAW | rc::ADJUDICATION | rc::SCORE_DRAW;
  const std::uint32_t whiteResigns = lossCode(WHITE, rc::ADJUDICATION | rc::SCORE_RESIGN);
  const std::uint32_t blackResigns = lossCode(BLACK, rc::ADJUDICATION | rc::SCORE_RESIGN);
  const struct {
    std::vector<int> scores;
    int startPly;
    std::pair<std::uint32_t, int> verdict;
  } cases[] = {
      {{5, -5, 10, -10}, 0, {0, 0}},              // two moves each in the window, but the game is short
      {{5, -5, 10, -10, 0, 0}, 0, {draw, 6}},     // third full move: drawn
      {{5, -5, 11, -10, 0, 0, 0}, 0, {draw, 7}},  // White's run starts again after 11
      {{5, -5, 11, -10, 0, 99}, 0, {0, 0}},
      {{0, 0, 0, 0}, 10, {draw, 14}},
      {{0, NONE, 0, NONE, 0, NONE}, 10, {0, 0}},  // Black prints no scores: no verdict
      {{-800, 800, -900, 900}, 0, {whiteResigns, 4}},
      {{900, -800, 900, -800}, 0, {blackResigns, 4}},
      {{-800, 799, -900, 900}, 0, {0, 0}},  // both sides must agree, as many moves each
      {{-800, 800, NONE, 900, -900, 900}, 0, {0, 0}},
  };
  for (const auto& c : cases) EXPECT_EQ(adjudicate(rules, c.scores, c.startPly), c.verdict) << c.scores.size();
  rules.enabled = false;
  EXPECT_EQ(adjudicate(rules, {-900, 900, -900, 900, -900, 900}), std::make_pair(0u, 0));
}

}  // namespace
}  // namespace kbuChess
