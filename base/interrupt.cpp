#include "base/interrupt.h"

#include <unistd.h>

#include <atomic>

namespace kobubase {

namespace {

std::atomic<int> signalsSeen{0};
static_assert(std::atomic<int>::is_always_lock_free, "used from a signal handler");

void onSignal(int) {
  if (signalsSeen.fetch_add(1) >= 1) _exit(130);
}

}  // namespace

clsInterruptGuard::clsInterruptGuard() {
  signalsSeen.store(0);
  struct sigaction action {};
  action.sa_handler = onSignal;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, &previousInt_);
  sigaction(SIGTERM, &action, &previousTerm_);
}

clsInterruptGuard::~clsInterruptGuard() {
  sigaction(SIGINT, &previousInt_, nullptr);
  sigaction(SIGTERM, &previousTerm_, nullptr);
}

bool clsInterruptGuard::requested() { return signalsSeen.load() > 0; }

}  // namespace kobubase
