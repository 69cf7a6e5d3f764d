#pragma once
// Threads, mutexes and timers.
//
// clsThread is a thread object whose work is the virtual run(). Threads end
// cooperatively: cancel() raises a stop request that run() is expected to poll
// (stopRequested()) and then joins; no thread is ever killed while it owns
// objects. Two validity markers guard against running a destroyed object.
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace kobubase {

// An error-checking mutex: locking it twice from one thread fails instead of
// deadlocking. lock() returns 0 on success; callers skip their work otherwise.
class clsMutex {
 public:
  clsMutex();
  ~clsMutex();
  clsMutex(const clsMutex&) = delete;
  clsMutex& operator=(const clsMutex&) = delete;
  int lock();
  int unlock();

 private:
  std::mutex mutex_;
  std::atomic<std::thread::id> owner_{};
};

// Holds a clsMutex for one scope; owns() tells whether the lock was taken.
class clsLock {
 public:
  explicit clsLock(clsMutex& mutex) : mutex_(mutex), owns_(mutex.lock() == 0) {}
  ~clsLock() {
    if (owns_) mutex_.unlock();
  }
  clsLock(const clsLock&) = delete;
  clsLock& operator=(const clsLock&) = delete;
  bool owns() const { return owns_; }

 private:
  clsMutex& mutex_;
  bool owns_;
};

class clsThread {
 public:
  static constexpr std::uint32_t MARKER1 = 0x27102009;
  static constexpr std::uint32_t MARKER2 = 0x19062004;

  explicit clsThread(std::string name = "thread");
  virtual ~clsThread();
  clsThread(const clsThread&) = delete;
  clsThread& operator=(const clsThread&) = delete;

  // Starts run() on a new thread unless one is running; returns whether it was
  // started (or was running already).
  virtual bool start();
  // Joins a started thread; false when it was never started or already joined.
  virtual bool wait();
  // Asks run() to end, then joins.
  virtual bool cancel();
  bool isRunning() const { return running_.load() != 0; }
  int runningState() const { return running_.load(); }
  bool stopRequested() const { return stopRequested_.load(); }
  const std::string& name() const { return name_; }

 protected:
  virtual void run() = 0;
  // Called on the thread after run() returns.
  virtual void finished() {}
  void requestStop() { stopRequested_.store(true); }

 private:
  void entry();

  std::uint32_t marker1_ = MARKER1;
  std::uint32_t marker2_ = MARKER2;
  std::string name_;
  std::mutex startLock_;
  std::atomic<int> running_{0};
  std::atomic<bool> stopRequested_{false};
  std::thread thread_;
};

// A named stopwatch over the process clock (milliseconds). When given a log
// path it appends its report line to that file when destroyed.
class clsTimer {
 public:
  explicit clsTimer(std::string name = "", std::string logPath = "");
  ~clsTimer();
  void start();
  // Adds the running lap to the total; returns the total milliseconds.
  std::uint64_t stop();
  // Stops, zeroes the totals, starts again; returns the milliseconds before zeroing.
  std::uint64_t restart();
  std::uint64_t elapsedMs() const { return ticks_; }
  std::uint64_t laps() const { return laps_; }
  // name, tab, laps, tab, ticks, tab, milliseconds
  std::string report() const;

 private:
  std::string name_;
  std::string logPath_;
  std::int64_t startTicks_ = 0;
  std::uint64_t ticks_ = 0;
  std::uint64_t laps_ = 0;
};

// Milliseconds of a steady clock; the one clock the driver and timers read.
std::int64_t nowMs();
void sleepMs(int ms);

// Runs `work` on this thread while a watcher thread asks `wanted` every
// 10 ms; the first time it answers true, the watcher calls `stop` (once) so
// that the work can wind down. Returns whether `stop` was called.
bool runStoppable(const std::function<void()>& work, const std::function<bool()>& wanted,
                  const std::function<void()>& stop);

}  // namespace kobubase
