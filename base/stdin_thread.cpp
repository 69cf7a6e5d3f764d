#include "base/stdin_thread.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>

namespace kobubase {

clsStdInThread::clsStdInThread(int fd) : clsThread("stdin"), fd_(fd) {
  int wake[2];
  if (::pipe2(wake, O_CLOEXEC | O_NONBLOCK) == 0) {
    wakeRead_ = wake[0];
    wakeWrite_ = wake[1];
  }
}

clsStdInThread::~clsStdInThread() {
  cancel();
  if (wakeRead_ >= 0) ::close(wakeRead_);
  if (wakeWrite_ >= 0) ::close(wakeWrite_);
}

bool clsStdInThread::cancel() {
  requestStop();
  if (wakeWrite_ >= 0) {
    const char poke = 1;
    [[maybe_unused]] const ssize_t written = ::write(wakeWrite_, &poke, 1);
  }
  wait();
  return true;
}

void clsStdInThread::run() {
  char stale[64];
  while (wakeRead_ >= 0 && ::read(wakeRead_, stale, sizeof stale) > 0) {
  }  // pokes left from an earlier cancel
  while (!stopRequested()) {
    if (!readSome()) {
      // The GUI went away: behave as if it had said goodbye, so the driver
      // ends the same way it does on "quit".
      endLine();
      queueLine("quit");
      endOfInput_.store(true);
      return;
    }
  }
}

bool clsStdInThread::readSome() {
  pollfd pfd[2] = {{fd_, POLLIN, 0}, {wakeRead_, POLLIN, 0}};
  const int ready = ::poll(pfd, wakeRead_ >= 0 ? 2 : 1, POLL_MS);
  if (ready < 0) return errno == EINTR;
  if (ready == 0 || stopRequested()) return true;
  if (pfd[0].revents & POLLNVAL) return false;
  if (pfd[0].revents == 0) return true;
  char buffer[65536];
  const ssize_t count = ::read(fd_, buffer, sizeof buffer);
  if (count > 0) {
    takeBytes(buffer, static_cast<std::size_t>(count));
    return true;
  }
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return true;
  return false;  // end of file or a broken descriptor
}

void clsStdInThread::takeBytes(const char* bytes, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    if (bytes[i] == '\n') {
      endLine();
    } else if (partial_.size() < MAX_LINE) {
      partial_ += bytes[i];
    }
  }
}

void clsStdInThread::endLine() {
  std::string line;
  line.swap(partial_);
  if (!line.empty() && line.back() == '\r') line.pop_back();
  if (!line.empty()) queueLine(std::move(line));
}

void clsStdInThread::queueLine(std::string line) {
  clsLock lock(queueLock_);
  if (lock.owns()) lines_.push_back(std::move(line));
}

bool clsStdInThread::anyQueued(const std::function<bool(const std::string&)>& test) {
  clsLock lock(queueLock_);
  if (!lock.owns()) return false;
  for (const std::string& line : lines_) {
    if (test(line)) return true;
  }
  return false;
}

std::string clsStdInThread::getLine(bool wait) {
  for (;;) {
    if (wait) sleepMs(1);
    const bool alive = isRunning();  // read before the queue: a last line is not missed
    {
      clsLock lock(queueLock_);
      if (lock.owns() && !lines_.empty()) {
        std::string line = std::move(lines_.front());
        lines_.pop_front();
        return line;
      }
    }
    if (!wait || !alive) return "";
  }
}

}  // namespace kobubase
