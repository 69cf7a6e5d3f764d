#pragma once
// The one loop that plays a list of games, for tournaments and for learning:
// games start in list order while fewer than `atOnce` are running, each on a
// thread of its own; every few milliseconds the loop ends the objects of
// finished games, tells its owner, and starts more. The owner may hold a
// game back (mayStart) and stop the whole list (stopped): then no game
// starts and play() returns with the running games left to cancel().
#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

namespace kbuChess {

// A game being played on its own thread.
class clsScheduledGame {
 public:
  virtual ~clsScheduledGame() = default;
  virtual bool finished() const = 0;
  // Asks the game to end at its next pass.
  virtual void stopGame() = 0;
  virtual bool wait() = 0;
};

struct ScheduleHooks {
  // Starts game i; nullptr when it could not start (it then counts as played).
  std::function<std::unique_ptr<clsScheduledGame>(std::size_t)> start;
  // Whether game i may start now; every game may when not set.
  std::function<bool(std::size_t)> mayStart;
  // Whether the list is stopped; checked before anything else on every pass.
  std::function<bool()> stopped;
  // After a pass in which games ended.
  std::function<void()> gamesEnded;
  // Once a second: games running, and those running or still to start.
  std::function<void(int running, int unfinished)> progress;
};

class clsGameScheduler {
 public:
  explicit clsGameScheduler(int atOnce) : atOnce_(atOnce < 1 ? 1 : atOnce) {}
  ~clsGameScheduler() { clear(); }
  clsGameScheduler(const clsGameScheduler&) = delete;
  clsGameScheduler& operator=(const clsGameScheduler&) = delete;

  // Plays every game whose `started` entry is false (and marks it); true when
  // all have ended, false when the list was stopped.
  bool play(std::vector<bool>& started, const ScheduleHooks& hooks);
  // Asks every running game to stop, calls `pause` (time for engines to
  // leave), then waits for each game and ends its object.
  void cancel(const std::function<void()>& pause);
  // Waits for every running game and ends its object.
  void clear();
  std::size_t running() const { return running_.size(); }

 private:
  int endFinished();
  void startGames(std::vector<bool>& started, const ScheduleHooks& hooks);

  int atOnce_;
  std::vector<std::unique_ptr<clsScheduledGame>> running_;
};

}  // namespace kbuChess
