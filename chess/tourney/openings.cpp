#include "chess/tourney/openings.h"

#include <memory>

#include "chess/book/pgn_file.h"

namespace kbuChess {

std::string Opening::text() const {
  std::string line = fen.empty() ? std::string() : "fen " + fen + (moves.empty() ? "" : " moves");
  for (const std::string& move : moves) line += (line.empty() ? "" : " ") + move;
  return line;
}

Opening clsOpenings::lineOfPair(std::uint64_t seed, std::int64_t pair) {
  // Two different words, so that neither a zero seed nor pair 0 gives the all-zero state.
  kobubase::clsRandom random(seed ^ 0x9E3779B97F4A7C15ull,
                             static_cast<std::uint64_t>(pair) * 0xD1B54A32D192ED03ull + 1);
  return line(random);
}

void clsRandomOpenings::extendRandomly(clsBoard& board, std::vector<std::string>& moves,
                                       kobubase::clsRandom& random) const {
  while (static_cast<int>(moves.size()) < plies_) {
    board.resetFrames();
    const int count = board.generateLegal();
    if (count <= 0) return;
    const Move move = board.frame().first[random.abs32() % static_cast<std::uint32_t>(count)];
    const std::string text = clsBoard::moveText(&move, false);
    board.resetFrames();
    if (!board.readCoordinateMove(text)) return;
    moves.push_back(text);
  }
}

Opening clsRandomOpenings::line(kobubase::clsRandom& random) {
  auto board = std::make_unique<clsBoard>();
  board->readFEN(clsBoard::START_FEN);
  Opening opening;
  extendRandomly(*board, opening.moves, random);
  return opening;
}

Opening clsBookOpenings::line(kobubase::clsRandom& random) {
  auto board = std::make_unique<clsBoard>();
  board->readFEN(clsBoard::START_FEN);
  std::vector<std::string> moves;
  std::vector<clsBookEntryExt> candidates;
  while (static_cast<int>(moves.size()) < plies_) {
    board->resetFrames();
    if (book_.listCandidates(*board, candidates) == 0 || clsBook::cutRareCandidates(candidates) == 0) break;
    const std::string text = candidates[random.abs32() % candidates.size()].move;
    board->resetFrames();
    if (!board->readCoordinateMove(text)) break;
    moves.push_back(text);
  }
  extendRandomly(*board, moves, random);
  return Opening{{}, std::move(moves)};
}

Opening clsSuiteOpenings::line(kobubase::clsRandom& random) {
  if (lines_.empty()) return {};
  return lines_[random.next64() % lines_.size()];
}

Opening clsSuiteOpenings::lineOfPair(std::uint64_t seed, std::int64_t pair) {
  if (lines_.empty()) return {};
  if (order_ == OpeningOrder::RANDOM) return clsOpenings::lineOfPair(seed, pair);
  const auto count = static_cast<std::int64_t>(lines_.size());
  return lines_[static_cast<std::size_t>(((start_ + pair) % count + count) % count)];
}

std::vector<Opening> readPgnLines(std::string_view text, int plies, kobubase::clsOutBuffer& out) {
  std::vector<Opening> lines;
  clsPGNFile reader(out, plies);
  reader.gameObserver = [&](std::uint64_t number, const std::vector<Move>& moves, PgnResult) {
    if (moves.empty()) {
      out.print("# openings: game " + std::to_string(number) + " has no playable move, skipped");
      return;
    }
    std::vector<std::string>& line = lines.emplace_back().moves;
    for (const Move& move : moves) line.push_back(clsBoard::moveText(&move, false));
  };
  reader.readText(text);
  return lines;
}

}  // namespace kbuChess
