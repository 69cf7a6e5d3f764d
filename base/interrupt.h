#pragma once
// Ctrl-C (SIGINT) and SIGTERM during a long run such as a tournament. While a
// clsInterruptGuard lives, the first signal only raises a flag that the run
// polls, so it can wind down, report and end its child processes; a second
// signal ends the program at once (exit status 130). Child processes die with
// the program in either case, since each asks to be killed with its parent.
// Outside a guard the signals keep their usual effect.
#include <csignal>

namespace kobubase {

class clsInterruptGuard {
 public:
  clsInterruptGuard();
  ~clsInterruptGuard();
  clsInterruptGuard(const clsInterruptGuard&) = delete;
  clsInterruptGuard& operator=(const clsInterruptGuard&) = delete;

  // Whether a signal arrived since the guard was made.
  static bool requested();

 private:
  struct sigaction previousInt_ {};
  struct sigaction previousTerm_ {};
};

}  // namespace kobubase
