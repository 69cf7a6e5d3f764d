#pragma once
// clsEngine: a board that thinks. It owns a soul, evaluates positions, runs an
// iterative-deepening alpha-beta on the board's ply frames, and does so on a
// thread of its own. The caller sets the position and the search settings,
// calls start(), later stop(), and then reads bestMove(). The engine never
// reads the clock to decide anything: whoever started it decides when to stop.
#include <atomic>
#include <string>

#include "base/options.h"
#include "base/thread.h"
#include "chess/board/board.h"
#include "chess/board/book_probe.h"
#include "chess/engine/engine_share.h"
#include "chess/engine/soul.h"

namespace kbuChess {

class clsEngine : public clsBoard, public kobubase::clsThread {
 public:
  // Root scores.
  static constexpr i32 NO_SCORE = -200000;
  static constexpr i32 MATED = -100000;
  static constexpr i32 MATED_AT_ROOT = -99999;
  static constexpr i32 KING_CAPTURE = 99999;
  static constexpr i32 DRAW_SCORE = -13;
  static constexpr i32 WIN_THRESHOLD = 9999;
  static constexpr int MAX_DEPTH = 127;

  // options: the command-line option table ("-random", "-timed",
  // "-proportional", "-soul"); share: the transposition table, or null.
  explicit clsEngine(const kobubase::clsOptions& options = {}, clsEngineShare* share = nullptr);
  ~clsEngine() override;

  // --- souls
  void applySoulText(const std::string& text);
  // Chooses a preset by name, with the fallbacks "soul" option, "-soul" option.
  void selectSoul(const std::string& name);
  std::string soulValuesText() const;
  void breedSoul(const clsEngine& other);
  const std::string& soulName() const { return soul_.name; }
  const SoulValues& soulValues() const { return soul_.values; }

  // --- settings
  kobubase::clsOptions& runtimeOptions() { return runtimeOptions_; }
  const kobubase::clsOptions& commandOptions() const { return commandOptions_; }
  void setFixedDepth(int depth) { fixedDepth_ = depth; }
  int fixedDepth() const { return fixedDepth_; }
  void setSinglePass(bool on) { singlePass_ = on; }
  // The search stops by itself after this many nodes (0: no limit), so that
  // tests and benchmarks can stop it at a point that does not depend on timing.
  void setNodeLimit(u64 nodes) { nodeLimit_ = nodes == 0 ? ~u64{0} : nodes; }
  void setBookProbe(clsBookProbe* probe) { bookProbe_ = probe; }
  // "-proportional": the acceptance percentage, 0 to 100, 60 when no value is given.
  static int acceptPercent(const kobubase::clsOptions& options);
  clsEngineShare* share() const { return share_; }
  int debugSetting = 0;

  // --- thinking
  // Clears the stop flag, then starts the thinking procedure on the engine thread.
  bool start() override;
  // Raises the stop flag (unless guarded) and joins the thread.
  bool stop();
  bool searching() const { return isRunning(); }
  // A copy of the best move taken under the best-move lock; NOT_A_MOVE when none.
  Move bestMove();
  void setBestMove(const Move& move);
  // "# T ms N Knps, TT hits: 0 0.00%, Rept.Hits: 0"
  std::string statisticsText(std::uint64_t elapsedMs) const;
  // xboard thinking output: "DEPTH SCORE CENTISECONDS NODES MOVE", the move in
  // coordinate form, empty (and the score -200000) before any result.
  std::string thinkingLine(std::uint64_t elapsedMs);
  u64 searchNodes() const { return searchNodes_.load(std::memory_order_relaxed); }
  int iterationDepth() const { return iterationDepth_.load(std::memory_order_relaxed); }

  // --- search (search.cpp), public for tests and benchmarks
  i32 rootSearch(int depth, bool first);
  // The static evaluation of the position after a move, from the mover's view.
  i32 evaluate();
  // Runs the thinking procedure on the calling thread.
  void think();

 protected:
  void run() override { thinkingProcedure(); }
  void onMovePlayed() override;

 private:
  i32 nodeSearch(int depth);
  // Search helpers (search.cpp).
  bool stopped() const { return stopFlag_.load(std::memory_order_relaxed); }
  void enterNode();
  Move* nextLegalMove(PlyFrame& f);
  bool leaveAfterScore(PlyFrame& f, i32 score);
  void scoreRootMove(Move& move, i32 score);
  void countNode();
  void sortRootByGain();
  void sortRootBySearchScore();
  // Evaluation helpers (evaluate.cpp).
  i32 pawnTerms(PlyFrame& f);
  i32 loneKingTerm() const;
  // Thinking helpers (think.cpp).
  void thinkingProcedure();
  bool probeBook();
  void deepen(int startDepth, int limit);
  void chooseRandomMove(bool proportional);
  void orderRootForChoice();
  // Soul helpers (engine.cpp).
  void applySoul(const Soul& soul);

  u64 nodeCount_ = 0;
  u64 nodeLimit_ = ~u64{0};

  Soul soul_;
  kobubase::clsOptions commandOptions_;
  kobubase::clsOptions runtimeOptions_;
  clsEngineShare* share_ = nullptr;
  clsBookProbe* bookProbe_ = nullptr;
  int fixedDepth_ = 0;
  bool singlePass_ = false;
  std::atomic<bool> stopFlag_{false};
  std::atomic<int> stopGuard_{0};
  kobubase::clsMutex bestLock_;
  Move best_{};
  std::atomic<u64> searchNodes_{0};  // published copy of the node counter for other threads
  std::atomic<int> iterationDepth_{0};
  u64 searchesStarted_ = 0;
  u64 thinkingMs_ = 0;
  u64 ttHits_ = 0;
  u64 repetitionHits_ = 0;
};

}  // namespace kbuChess
