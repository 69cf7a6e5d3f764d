#include "base/thread.h"

#include <chrono>
#include <cstdio>

#include "base/file_io.h"

namespace kobubase {

std::int64_t nowMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void sleepMs(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

bool runStoppable(const std::function<void()>& work, const std::function<bool()>& wanted,
                  const std::function<void()>& stop) {
  std::atomic<bool> done{false}, stopped{false};
  std::thread watcher([&] {
    while (!done.load()) {
      if (wanted()) {
        stopped.store(true);
        stop();
        return;
      }
      sleepMs(10);
    }
  });
  work();
  done.store(true);
  watcher.join();
  return stopped.load();
}

clsMutex::clsMutex() = default;

clsMutex::~clsMutex() = default;

int clsMutex::lock() {
  if (owner_.load() == std::this_thread::get_id()) return 1;  // would deadlock
  mutex_.lock();
  owner_.store(std::this_thread::get_id());
  return 0;
}

int clsMutex::unlock() {
  if (owner_.load() != std::this_thread::get_id()) return 1;  // not ours
  owner_.store(std::thread::id());
  mutex_.unlock();
  return 0;
}

clsThread::clsThread(std::string name) : name_(std::move(name)) {}

clsThread::~clsThread() {
  // A derived class must have stopped its thread already; this is the last guard.
  if (thread_.joinable()) {
    requestStop();
    thread_.join();
  }
  marker1_ = marker2_ = 0;
}

bool clsThread::start() {
  std::lock_guard<std::mutex> guard(startLock_);
  if (running_.load() != 0) return true;
  if (thread_.joinable()) thread_.join();  // a finished run not yet joined
  stopRequested_.store(false);
  running_.store(1);
  try {
    thread_ = std::thread(&clsThread::entry, this);
  } catch (...) {
    running_.store(0);
    return false;
  }
  // Started: the run may already have ended, which is still a successful start.
  return true;
}

void clsThread::entry() {
  if (marker1_ != MARKER1 || marker2_ != MARKER2) return;
  run();
  running_.store(0);
  finished();
}

bool clsThread::wait() {
  std::lock_guard<std::mutex> guard(startLock_);
  if (!thread_.joinable()) return false;
  if (thread_.get_id() == std::this_thread::get_id()) return false;
  thread_.join();
  running_.store(0);
  return true;
}

bool clsThread::cancel() {
  requestStop();
  wait();
  return true;
}

clsTimer::clsTimer(std::string name, std::string logPath) : name_(std::move(name)), logPath_(std::move(logPath)) {
  start();
}

clsTimer::~clsTimer() {
  if (logPath_.empty() || laps_ < 1) return;
  std::string error;
  if (std::FILE* file = openForAppending(logPath_, error)) {
    const std::string line = report() + "\r\n";
    std::fwrite(line.data(), 1, line.size(), file);
    std::fclose(file);
  }
}

void clsTimer::start() {
  startTicks_ = nowMs();
  ++laps_;
}

std::uint64_t clsTimer::stop() {
  ticks_ += static_cast<std::uint64_t>(nowMs() - startTicks_);
  startTicks_ = nowMs();
  return ticks_;
}

std::uint64_t clsTimer::restart() {
  const std::uint64_t ms = stop();
  ticks_ = 0;
  laps_ = 0;
  start();
  return ms;
}

std::string clsTimer::report() const {
  const std::string ticks = std::to_string(ticks_);
  return name_ + "\t" + std::to_string(laps_) + "\t" + ticks + "\t" + ticks;
}

}  // namespace kobubase
