#pragma once
// clsStdInThread reads the GUI's commands from standard input (or any file
// descriptor handed in, which is how tests drive it) on a thread of its own
// and queues them line by line; the driver's loop takes them without ever
// blocking. One instance per input; the driver owns it.
#include <atomic>
#include <cstddef>
#include <deque>
#include <functional>
#include <string>

#include "base/thread.h"

namespace kobubase {

class clsStdInThread : public clsThread {
 public:
  // A single line longer than this is cut here and the rest of it up to its
  // line feed is dropped: a command is never that long, and the cap keeps a
  // runaway writer from eating the memory.
  static constexpr std::size_t MAX_LINE = 1 << 20;
  // The longest wait for input before the stop request is tested again.
  static constexpr int POLL_MS = 10;

  explicit clsStdInThread(int fd = 0);
  ~clsStdInThread() override;

  // Asks the reader to end and wakes it from its wait at once, then joins.
  bool cancel() override;

  // The oldest queued line, or "" when none is queued. With wait it sleeps
  // 1 ms before each try until a line comes or the reader has ended.
  std::string getLine(bool wait = false);
  // Whether a queued line, not yet taken, satisfies the test: lets a long
  // command look ahead for "quit" without taking the lines before it.
  bool anyQueued(const std::function<bool(const std::string&)>& test);
  // True once the input has ended and "quit" was queued for it.
  bool endOfInput() const { return endOfInput_.load(); }

 protected:
  void run() override;

 private:
  // Waits up to POLL_MS for input; returns false when the input has ended.
  bool readSome();
  void takeBytes(const char* bytes, std::size_t count);
  void endLine();
  void queueLine(std::string line);

  int fd_;
  int wakeRead_ = -1;  // a pipe whose write end cancel() pokes
  int wakeWrite_ = -1;
  std::string partial_;
  clsMutex queueLock_;
  std::deque<std::string> lines_;
  std::atomic<bool> endOfInput_{false};
};

}  // namespace kobubase
