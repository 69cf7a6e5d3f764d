#include "base/thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace {

using kobubase::clsMutex;
using kobubase::clsThread;

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

}  // namespace
