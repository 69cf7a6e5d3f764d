// What does waiting on a silent child cost? Starts "sleep" as a child process
// behind pipes, lets the reader thread wait on it for a while, and reports
// the processor time this process used meanwhile (getrusage), against the
// wall time. A reader that polls with a timeout should cost next to nothing;
// a busy loop would show up as a sizeable share of one core.
//
//   child_cpu [seconds]
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/child_process.h"

namespace {

double cpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? std::atoi(argv[1]) : 5;
  kobubase::clsRedirectedChild child("sleep", std::to_string(seconds + 5));
  child.start();
  if (!child.waitStarted()) {
    std::fprintf(stderr, "cannot start sleep %s\n", child.startError().c_str());
    return 1;
  }
  const double cpuBefore = cpuSeconds();
  const std::int64_t wallBefore = kobubase::nowMs();
  kobubase::sleepMs(seconds * 1000);
  const double cpu = cpuSeconds() - cpuBefore;
  const double wall = static_cast<double>(kobubase::nowMs() - wallBefore) / 1000.0;
  std::printf("silent child for %.2f s: reader and process used %.4f s of processor time (%.3f%% of one core)\n", wall,
              cpu, 100.0 * cpu / wall);
  std::printf("reader poll timeout %d ms: about %.0f wake-ups a second\n", kobubase::clsRedirectedChild::POLL_MS,
              1000.0 / kobubase::clsRedirectedChild::POLL_MS);
  child.close();
  return 0;
}
