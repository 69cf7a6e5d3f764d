#include "base/child_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <vector>

#include "base/output.h"
#include "base/text.h"

namespace kobubase {

namespace {

void ignoreBrokenPipes() {
  static std::once_flag once;
  std::call_once(once, [] { signal(SIGPIPE, SIG_IGN); });
}

// Everything the forked child needs, prepared before the fork: after it only
// async-signal-safe calls are allowed.
struct ExecPlan {
  std::string path;    // what to execute
  std::string folder;  // where to run it ("" : stay)
  bool searchPath = false;
  std::vector<std::string> words;
  std::vector<char*> argv;
};

ExecPlan planFor(const std::string& program, const std::string& commandLine) {
  ExecPlan plan;
  plan.path = program;
  plan.searchPath = program.find('/') == std::string::npos;
  if (!plan.searchPath && program[0] != '/') {
    char here[4096];
    if (getcwd(here, sizeof here) != nullptr) {
      plan.path = here;
      plan.path.append(1, '/').append(program);
    }
  }
  if (!plan.searchPath) {
    const std::size_t slash = plan.path.rfind('/');
    plan.folder.assign(plan.path, 0, slash == 0 ? 1 : slash);  // "/prog" runs in "/"
  }
  plan.words = splitArguments(commandLine);
  if (plan.words.empty()) plan.words.push_back(program);
  for (std::string& word : plan.words) plan.argv.push_back(word.data());
  plan.argv.push_back(nullptr);
  return plan;
}

// The forked child: ties its life to the starting thread, takes the pipes as
// its standard handles, moves to its folder and becomes the program. On any
// failure the error number goes back through the status pipe.
[[noreturn]] void becomeChild(const ExecPlan& plan, pid_t parent, int in, int out, int status) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) _exit(127);  // the parent died before the line above
  setpgid(0, 0);
  dup2(in, 0);
  dup2(out, 1);
  dup2(out, 2);
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  sigaction(SIGPIPE, &standard, nullptr);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (plan.folder.empty() || chdir(plan.folder.c_str()) == 0) {
    if (plan.searchPath) {
      execvp(plan.path.c_str(), plan.argv.data());
    } else {
      execv(plan.path.c_str(), plan.argv.data());
    }
  }
  const int error = errno;
  if (write(status, &error, sizeof error) < 0) _exit(127);
  _exit(127);
}

int decodeStatus(int status) {
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
  return -1;
}

}  // namespace

clsRedirectedChild::clsRedirectedChild(std::string program, std::string parameters)
    : clsThread("child process"), program_(std::move(program)), parameters_(std::move(parameters)) {
  ignoreBrokenPipes();
}

clsRedirectedChild::~clsRedirectedChild() {
  shutDown();
}

void clsRedirectedChild::shutDown() {
  // A child that was just told to quit gets its second to go; one that has
  // already ended costs nothing.
  const std::int64_t until = nowMs() + DESTROY_GRACE_MS;
  while (alive_.load() && nowMs() < until) sleepMs(1);
  close();
}

std::string clsRedirectedChild::commandLine() const {
  std::string line = "\"";
  for (char c : program_) line += c == '"' ? std::string("\"\"") : std::string(1, c);
  line += "\" " + parameters_;
  if (line.size() > COMMAND_LINE_LIMIT) line.resize(COMMAND_LINE_LIMIT);
  return line;
}

bool clsRedirectedChild::start() {
  if (isRunning()) return true;
  phase_.store(0);
  reaped_.store(false);
  exitStatus_.store(-1);
  pid_.store(0);
  return clsThread::start();
}

bool clsRedirectedChild::waitStarted(int timeoutMs) {
  const std::int64_t until = nowMs() + timeoutMs;
  while (phase_.load() == 0 && nowMs() < until) sleepMs(1);
  return phase_.load() == 1;
}

std::string clsRedirectedChild::startError() const {
  return phase_.load() == 2 ? startError_ : std::string();
}

void clsRedirectedChild::run() {
  if (!createProcess()) {
    phase_.store(2);
    return;
  }
  alive_.store(true);
  phase_.store(1);
  readLoop();
}

bool clsRedirectedChild::createProcess() {
  if (program_.empty()) {
    startError_ = "no program to start";
    startErrno_ = ENOENT;
    report("# error: no program to start");
    return false;
  }
  int in[2], out[2], status[2];
  if (pipe2(in, O_CLOEXEC) != 0) {
    startError_ = errorLine(errno);
    report("# error std::in pipe");
    return false;
  }
  if (pipe2(out, O_CLOEXEC) != 0 || pipe2(status, O_CLOEXEC) != 0) {
    startError_ = errorLine(errno);
    report("# error std::out pipe");
    for (int fd : {in[0], in[1]}) ::close(fd);
    return false;
  }
  const ExecPlan plan = planFor(program_, commandLine());
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child == 0) becomeChild(plan, parent, in[0], out[1], status[1]);
  if (child > 0) setpgid(child, child);  // the child does it too; whoever comes first wins
  for (int fd : {in[0], out[1], status[1]}) ::close(fd);
  int error = child < 0 ? errno : 0;
  if (child > 0) {
    ssize_t n;
    while ((n = read(status[0], &error, sizeof error)) < 0 && errno == EINTR) {
    }
    if (n != static_cast<ssize_t>(sizeof error)) error = 0;  // end of file: the program runs
    if (error != 0) waitpid(child, nullptr, 0);
  }
  ::close(status[0]);
  if (error != 0) {
    startError_ = errorLine(error);
    startErrno_ = error;
    for (int fd : {in[1], out[0]}) ::close(fd);
    return false;
  }
  fcntl(in[1], F_SETFL, fcntl(in[1], F_GETFL) | O_NONBLOCK);
  toChild_ = in[1];
  fromChild_ = out[0];
  pid_.store(child);
  return true;
}

// Copies the child's output until it has ended or a stop is requested. poll()
// with a short timeout keeps a silent child from costing any processor time
// while a stop or the child's death is still noticed within POLL_MS.
void clsRedirectedChild::readLoop() {
  std::vector<char> chunk(READ_BUFFER_BYTES, 0);
  bool open = true;
  while (!stopRequested()) {
    if (open) {
      pollfd ready{fromChild_, POLLIN, 0};
      const int events = poll(&ready, 1, POLL_MS);
      if (events > 0) {
        const ssize_t n = read(fromChild_, chunk.data(), chunk.size());
        if (n > 0) {
          append(chunk.data(), static_cast<std::size_t>(n));
          continue;
        }
        if (n == 0 || errno != EINTR) open = false;  // the child closed its output
      } else if (events < 0 && errno != EINTR) {
        open = false;
      }
    } else {
      sleepMs(POLL_MS);
    }
    if (!reapIfEnded(false)) continue;
    // Ended: keep whatever a descendant still holding the pipe has written.
    for (pollfd ready{fromChild_, POLLIN, 0}; open && poll(&ready, 1, 0) > 0;) {
      const ssize_t n = read(fromChild_, chunk.data(), chunk.size());
      if (n <= 0) break;
      append(chunk.data(), static_cast<std::size_t>(n));
    }
    report("# process terminated!");
    alive_.store(false);
    return;
  }
}

void clsRedirectedChild::append(const char* bytes, std::size_t count) {
  bool firstDrop;
  {
    std::lock_guard<std::mutex> guard(bufferLock_);
    firstDrop = keep(bytes, count);
  }
  if (firstDrop) report("# output comes faster than it is read: lines dropped");
}

// Piece by piece, each up to and including a line feed (or the unfinished
// tail): a line starting while too much waits unread is dropped whole; a
// kept line keeps at most the line limit.
bool clsRedirectedChild::keep(const char* bytes, std::size_t count) {
  bool firstDrop = false;
  while (count > 0) {
    const char* feed = static_cast<const char*>(std::memchr(bytes, '\n', count));
    const bool complete = feed != nullptr;
    const std::size_t piece = complete ? static_cast<std::size_t>(feed - bytes) + 1 : count;
    if (lineBytes_ == 0 && !dropLine_ && buffer_.size() - taken_ > pendingLimit_) {
      firstDrop = dropped_.fetch_add(1) == 0 || firstDrop;
      dropLine_ = true;
    }
    if (!dropLine_) {
      const std::size_t text = std::min(complete ? piece - 1 : piece, lineLimit_ - lineBytes_);
      buffer_.append(bytes, text);
      lineBytes_ += text;
      if (complete) buffer_ += '\n';
    }
    if (complete) {
      lineBytes_ = 0;
      dropLine_ = false;
    }
    bytes += piece;
    count -= piece;
  }
  return firstDrop;
}

bool clsRedirectedChild::reapIfEnded(bool block) {
  std::lock_guard<std::mutex> guard(processLock_);
  if (reaped_.load()) return true;
  const pid_t child = pid_.load();
  if (child <= 0) return false;
  int status = 0;
  pid_t answer;
  while ((answer = waitpid(child, &status, block ? 0 : WNOHANG)) < 0 && errno == EINTR) {
  }
  if (answer == child) exitStatus_.store(decodeStatus(status));
  if (answer == child || (answer < 0 && errno == ECHILD)) reaped_.store(true);
  return reaped_.load();
}

bool clsRedirectedChild::send(const std::string& text) {
  if (!alive_.load()) return false;
  std::lock_guard<std::mutex> guard(writeLock_);
  if (!alive_.load() || toChild_ < 0) return false;
  // A child that has not read its input for this long is taken as hung.
  const std::int64_t until = nowMs() + 5000;
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t n = write(toChild_, text.data() + done, text.size() - done);
    if (n > 0) {
      done += static_cast<std::size_t>(n);
    } else if (n < 0 && errno == EAGAIN && nowMs() < until) {
      pollfd room{toChild_, POLLOUT, 0};
      poll(&room, 1, POLL_MS);
    } else if (n < 0 && errno == EINTR) {
      continue;
    } else {
      return false;  // EPIPE: the child is gone
    }
  }
  return true;
}

std::string clsRedirectedChild::takeLine() {
  std::lock_guard<std::mutex> guard(bufferLock_);
  const std::size_t end = buffer_.find('\n', taken_);
  if (end == std::string::npos) return {};
  std::size_t last = end;
  while (last > taken_ && (buffer_[last - 1] == '\n' || buffer_[last - 1] == '\r')) --last;
  std::string line = buffer_.substr(taken_, last - taken_);
  taken_ = end + 1;
  if (taken_ == buffer_.size() || taken_ > (1u << 20)) {
    buffer_.erase(0, taken_);
    taken_ = 0;
  }
  return line;
}

bool clsRedirectedChild::hasLine() {
  std::lock_guard<std::mutex> guard(bufferLock_);
  return buffer_.find('\n', taken_) != std::string::npos;
}

int clsRedirectedChild::waitExit(int timeoutMs) {
  const std::int64_t until = nowMs() + timeoutMs;
  while (alive_.load() && nowMs() < until) sleepMs(1);
  const bool ended = !alive_.load();
  close();
  return ended ? exitStatus_.load() : -1;
}

void clsRedirectedChild::closeInput() {
  std::lock_guard<std::mutex> guard(writeLock_);
  if (phase_.load() != 1 || toChild_ < 0) return;
  ::close(toChild_);
  toChild_ = -1;
}

void clsRedirectedChild::close() {
  requestStop();
  wait();  // the reader is gone: no process can be created behind our back
  std::lock_guard<std::mutex> guard(writeLock_);
  alive_.store(false);
  {
    std::lock_guard<std::mutex> process(processLock_);
    if (pid_.load() > 0 && !reaped_.load()) kill(pid_.load(), SIGKILL);
    // The group outlives its leader while a descendant is in it, so its
    // number cannot have been taken by another process yet.
    if (pid_.load() > 0) kill(-pid_.load(), SIGKILL);
  }
  reapIfEnded(true);
  closeFds();
}

void clsRedirectedChild::closeFds() {
  for (int* fd : {&toChild_, &fromChild_}) {
    if (*fd >= 0) ::close(*fd);
    *fd = -1;
  }
}

void clsRedirectedChild::report(const std::string& line) {
  clsTSafeOutput::instance().write(line, true);
}

}  // namespace kobubase
