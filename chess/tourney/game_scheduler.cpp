#include "chess/tourney/game_scheduler.h"

#include <algorithm>
#include <cstdint>

#include "base/thread.h"

namespace kbuChess {

namespace {

// How often the loop looks at its games; progress is told once a second.
constexpr int SCHEDULE_STEP_MS = 10;
constexpr int PROGRESS_EVERY_MS = 1000;

}  // namespace

bool clsGameScheduler::play(std::vector<bool>& started, const ScheduleHooks& hooks) {
  const auto mayStart = [&hooks](std::size_t i) { return !hooks.mayStart || hooks.mayStart(i); };
  std::int64_t lastProgress = 0;
  for (;;) {
    if (hooks.stopped && hooks.stopped()) return false;
    if (endFinished() > 0 && hooks.gamesEnded) hooks.gamesEnded();
    startGames(started, hooks);
    int waiting = 0;
    for (std::size_t i = 0; i < started.size(); ++i) waiting += !started[i] && mayStart(i) ? 1 : 0;
    const int unfinished = waiting + static_cast<int>(running_.size());
    if (unfinished == 0) return true;
    if (hooks.progress && kobubase::nowMs() - lastProgress >= PROGRESS_EVERY_MS) {
      lastProgress = kobubase::nowMs();
      hooks.progress(static_cast<int>(running_.size()), unfinished);
    }
    kobubase::sleepMs(SCHEDULE_STEP_MS);
  }
}

void clsGameScheduler::startGames(std::vector<bool>& started, const ScheduleHooks& hooks) {
  for (std::size_t i = 0; i < started.size(); ++i) {
    if (static_cast<int>(running_.size()) >= atOnce_) return;
    if (started[i] || (hooks.mayStart && !hooks.mayStart(i))) continue;
    started[i] = true;
    std::unique_ptr<clsScheduledGame> game = hooks.start(i);
    if (game) running_.push_back(std::move(game));
  }
}

int clsGameScheduler::endFinished() {
  const auto before = running_.size();
  std::erase_if(running_, [](const std::unique_ptr<clsScheduledGame>& game) {
    if (!game->finished()) return false;
    game->wait();
    return true;
  });
  return static_cast<int>(before - running_.size());
}

void clsGameScheduler::cancel(const std::function<void()>& pause) {
  // A game that has already ended ignores the stop; its record belongs to its
  // own thread until then, so it is not read here.
  for (const auto& game : running_) game->stopGame();
  if (pause) pause();
  clear();
}

void clsGameScheduler::clear() {
  for (const auto& game : running_) game->wait();
  running_.clear();
}

}  // namespace kbuChess
