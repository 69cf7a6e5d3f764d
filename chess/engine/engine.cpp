#include "chess/engine/engine.h"

#include <cstdio>

#include "base/version.h"

namespace kbuChess {

clsEngine::clsEngine(const kobubase::clsOptions& options, clsEngineShare* share)
    : clsThread("engine"), commandOptions_(options), share_(share) {
  best_.flags = mf::NOT_A_MOVE;
  best_.searchScore = NO_SCORE;
  selectSoul(DEFAULT_SOUL);
}

clsEngine::~clsEngine() {
  // The thread must be gone before the members it reads are destroyed.
  stopFlag_.store(true);
  wait();
}

// --- souls

void clsEngine::applySoul(const Soul& soul) {
  soul_ = soul;
  setCastlingBonus(soul_.values[3]);
  // Cached pawn scores were weighed with the old values.
  for (PlyFrame& f : frames_) f.pawnKey = 0;
}

void clsEngine::applySoulText(const std::string& text) { applySoul(parseSoul(text)); }

void clsEngine::selectSoul(const std::string& name) {
  std::string chosen = name;
  if (chosen.empty()) chosen = runtimeOptions_.get("soul");
  if (chosen.empty()) chosen = commandOptions_.get("-soul");
  // This fallback matches no preset on purpose: the soul in place is kept.
  if (chosen.empty()) chosen = std::string("Simple5 ") + kobubase::PROGRAM_VERSION;
  for (const char* preset : SOUL_PRESETS) {
    const std::string text = preset;
    if (text.substr(0, text.find('=')) == chosen) applySoulText(text);
  }
}

std::string clsEngine::soulValuesText() const { return kbuChess::soulValuesText(soul_.values); }

void clsEngine::breedSoul(const clsEngine& other) {
  Soul bred = soul_;
  kbuChess::breedSoul(bred.values, other.soul_.values);
  applySoul(bred);
}

// --- best move and reports

Move clsEngine::bestMove() {
  kobubase::clsLock lock(bestLock_);
  return best_;
}

void clsEngine::setBestMove(const Move& move) {
  kobubase::clsLock lock(bestLock_);
  best_ = move;
}

std::string clsEngine::statisticsText(std::uint64_t elapsedMs) const {
  const u64 nodes = searchNodes();
  std::string text = "# ";
  if (elapsedMs != 0) text += std::to_string(elapsedMs) + " ms " + std::to_string(nodes / elapsedMs) + " Knps";
  if (nodes != 0) {
    char percent[32];
    std::snprintf(percent, sizeof percent, "%.2f", static_cast<double>(ttHits_) * 100.0 / static_cast<double>(nodes));
    // The search never probes the table, so both hit counters stay 0; the line
    // keeps its fields deliberately for tools that read it.
    text += ", TT hits: " + std::to_string(ttHits_) + " " + percent + "%, Rept.Hits: " + std::to_string(repetitionHits_);
  }
  return text;
}

std::string clsEngine::thinkingLine(std::uint64_t elapsedMs) {
  const Move best = bestMove();
  const std::string pv = best.isMove() ? moveText(&best, false) : std::string();
  return std::to_string(iterationDepth()) + " " + std::to_string(best.searchScore) + " " +
         std::to_string(elapsedMs / 10) + " " + std::to_string(searchNodes()) + " " + pv;
}

// --- the played-move path

void clsEngine::onMovePlayed() {
  if (share_ != nullptr) rootFrame()->ttEntry = share_->markPlayed(positionKey());
}

}  // namespace kbuChess
