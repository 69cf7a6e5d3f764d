#pragma once
// Figures of a match computed from its result rows, the one place where
// results become points: the live standings, a resumed run, merged files,
// the learning ranking and the console's SQL standings view (through its
// white_points column) all count through here.
//
// Games are paired: the two games of a pairing in one round (the same
// opening, colours swapped) are a pair, scored from the first player's side
// as 0, 1/4, 1/2, 3/4 or 1 of the pair's two points. The five pentanomial
// cells count the pairs by that score: LL, LD, DD+WL, WD, WW. A game whose
// partner is missing (a run that was interrupted) counts in W-L-D but in no
// cell.
//
// Elo over pairs: the mean pair score m and its variance v over the pairs
// give elo(m) = -400 log10(1/m - 1) with the 95% interval elo(m +- 1.96
// sqrt(v / pairs)), and LOS = Phi((m - 1/2) / sqrt(v / pairs)).
//
// The sequential test (SPRT) in normalized Elo: with the per-game deviation
// sigma = sqrt(2 v) the hypotheses are the means m_k = 1/2 + sigma * nelo_k
// / (800 / ln 10), and the log-likelihood ratio of the normal approximation
// is LLR = pairs * (m1 - m0) * (2 m - m0 - m1) / (2 v), as the large public
// testing frameworks compute it. Empty cells count as 0.001 of a pair so
// that a lopsided start has a variance. H0 is accepted at or below
// ln(beta / (1 - alpha)), H1 at or above ln((1 - beta) / alpha).
#include <array>
#include <string>
#include <vector>

#include "chess/tourney/player.h"
#include "chess/tourney/results_file.h"

namespace kbuChess {

// Half-points a result gives White: 2, 1 or 0; -1 for "*" (no result).
int whiteHalfPoints(const std::string& result);
// The result of White's half-points: "1-0", "1/2-1/2" or "0-1".
std::string resultOfWhiteHalfPoints(int halfPoints);

// Wins, draws and losses of every named player over the rows, in the order of `names`.
std::vector<std::pair<std::string, GameCounts>> countsOfRows(const std::vector<GameResultRow>& rows,
                                                             const std::vector<std::string>& names);

using Pentanomial = std::array<int, 5>;  // LL, LD, DD+WL, WD, WW

struct MatchFigures {
  GameCounts games;     // the player's wins, draws and losses against the opponent
  Pentanomial pairs{};  // cells from the player's side
  int unpaired = 0;     // games without their partner
  double elo = 0;       // NaN without pairs, +-inf at 0% or 100%
  double eloError = 0;  // 95% half-width; NaN where it is not defined
  double los = 0.5;
};

MatchFigures matchFigures(const std::vector<GameResultRow>& rows, const std::string& player,
                          const std::string& opponent);

struct SprtSettings {
  double elo0 = 0, elo1 = 5, alpha = 0.05, beta = 0.05;
  double lowerBound() const;
  double upperBound() const;
};

double sprtLlr(const Pentanomial& cells, double elo0, double elo1);
// 0 undecided, -1 H0 accepted, +1 H1 accepted.
int sprtDecision(double llr, const SprtSettings& sprt);

// "# Simple5 vs G4-2: games 10 W-L-D 3-4-3, pairs LL 0 LD 2 DD+WL 2 WD 1 WW 0, elo -34.9 +/- 102.3, LOS 25.1%"
std::string matchFiguresLine(const std::string& player, const std::string& opponent, const MatchFigures& figures);
// "# sprt Simple5 vs G4-2 (elo0 0, elo1 5, alpha 0.05, beta 0.05): LLR 0.52 in (-2.94, 2.94)"
std::string sprtLine(const std::string& player, const std::string& opponent, const SprtSettings& sprt, double llr);

}  // namespace kbuChess
