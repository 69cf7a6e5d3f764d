#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <thread>

#include "base/thread.h"

namespace {

using kobubase::clsMutex;
using kobubase::clsThread;
using kobubase::clsTimer;

// Counts its runs and spins until asked to stop.
class clsSpinner : public clsThread {
 public:
  std::atomic<int> runs{0};
  ~clsSpinner() override { cancel(); }

 protected:
  void run() override {
    ++runs;
    while (!stopRequested()) kobubase::sleepMs(1);
  }
};

TEST(ThreadTest, StartTwiceRunsOnceCancelEndsItWaitNeedsAStart) {
  clsSpinner spinner;
  EXPECT_FALSE(spinner.wait());  // never started
  EXPECT_TRUE(spinner.start());
  EXPECT_TRUE(spinner.start());
  EXPECT_TRUE(spinner.isRunning());
  EXPECT_TRUE(spinner.cancel());
  EXPECT_FALSE(spinner.isRunning());
  EXPECT_EQ(spinner.runs.load(), 1);
  EXPECT_TRUE(spinner.start());  // a finished thread starts again
  spinner.cancel();
  EXPECT_EQ(spinner.runs.load(), 2);
}

TEST(MutexTest, RelockFromSameThreadFailsAndForeignUnlockFails) {
  clsMutex mutex;
  ASSERT_EQ(mutex.lock(), 0);
  EXPECT_NE(mutex.lock(), 0);
  int foreignUnlock = 0;
  std::thread([&] { foreignUnlock = mutex.unlock(); }).join();
  EXPECT_NE(foreignUnlock, 0);
  EXPECT_EQ(mutex.unlock(), 0);
  EXPECT_NE(mutex.unlock(), 0);
}

TEST(TimerTest, AppendsOneReportLinePerDestruction) {
  const std::string path = testing::TempDir() + "timer_test.log";
  std::remove(path.c_str());
  { clsTimer silent("quiet"); }
  { clsTimer timer("search", path); }
  {
    clsTimer timer("search", path);
    timer.start();
    timer.restart();  // zeroes the laps and ticks, then counts one lap again
  }
  // No stop was called, so the ticks stay 0 whatever the clock did.
  std::stringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  EXPECT_EQ(text.str(), "search\t1\t0\t0\r\nsearch\t1\t0\t0\r\n");
  std::remove(path.c_str());
}

}  // namespace
