#pragma once
// The program under test as a child process behind pipes. Every read has a
// deadline, so a silent or hung program fails the test instead of hanging it.
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

class EngineProcess {
 public:
  explicit EngineProcess(const std::string& path, const std::vector<std::string>& args = {}) {
    signal(SIGPIPE, SIG_IGN);
    std::vector<std::string> words{path};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    int in[2], out[2];
    if (pipe(in) != 0 || pipe(out) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {  // the child: pipes as standard input and output, then the program
      dup2(in[0], 0);
      dup2(out[1], 1);
      for (int fd : {in[0], in[1], out[0], out[1]}) close(fd);
      execv(path.c_str(), argv.data());
      _exit(127);
    }
    close(in[0]);
    close(out[1]);
    toChild_ = in[1];
    fromChild_ = out[0];
  }

  ~EngineProcess() {
    closeInput();
    if (pid_ > 0) waitExit(5000);
    if (fromChild_ >= 0) close(fromChild_);
  }

  // Writes the bytes as they are and a line feed.
  void send(const std::string& line) {
    const std::string bytes = line + "\n";
    for (std::size_t done = 0; toChild_ >= 0 && done < bytes.size();) {
      const ssize_t n = write(toChild_, bytes.data() + done, bytes.size() - done);
      if (n <= 0) return;
      done += static_cast<std::size_t>(n);
    }
  }

  void closeInput() {
    if (toChild_ >= 0) close(toChild_);
    toChild_ = -1;
  }

  // The next line, or nothing when none came within timeoutMs.
  std::optional<std::string> readLine(int timeoutMs) {
    const long long deadline = nowMs() + timeoutMs;
    while (buffer_.find('\n') == std::string::npos) {
      const long long left = deadline - nowMs();
      if (left <= 0 || fromChild_ < 0) return std::nullopt;
      pollfd pfd{fromChild_, POLLIN, 0};
      if (poll(&pfd, 1, static_cast<int>(left)) <= 0) continue;
      char chunk[4096];
      const ssize_t n = read(fromChild_, chunk, sizeof chunk);
      if (n <= 0) return std::nullopt;  // the program closed its output
      buffer_.append(chunk, static_cast<std::size_t>(n));
    }
    const std::size_t end = buffer_.find('\n');
    std::string line = buffer_.substr(0, end);
    buffer_.erase(0, end + 1);
    return line;
  }

  // Every line read until one starts with prefix, the match last.
  std::vector<std::string> readUntil(const std::string& prefix, int timeoutMs) {
    const long long deadline = nowMs() + timeoutMs;
    std::vector<std::string> lines;
    found_ = false;
    for (long long left; !found_ && (left = deadline - nowMs()) > 0;) {
      std::optional<std::string> line = readLine(static_cast<int>(left));
      if (!line) break;
      found_ = line->rfind(prefix, 0) == 0;
      lines.push_back(std::move(*line));
    }
    return lines;
  }

  // The exit status, or -1 after killing a program that hung.
  int waitExit(int timeoutMs) {
    if (pid_ <= 0) return -1;
    const long long deadline = nowMs() + timeoutMs;
    int status = 0;
    while (waitpid(pid_, &status, WNOHANG) == 0) {
      if (nowMs() > deadline) {  // hung: kill it so the test ends
        kill(pid_, SIGKILL);
        waitpid(pid_, &status, 0);
        status = -1;
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    pid_ = -1;
    return status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

  bool started() const { return pid_ > 0; }
  // Set by readUntil: whether the awaited line came in time.
  bool found() const { return found_; }

 private:
  static long long nowMs() {
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
  }

  pid_t pid_ = -1;
  int toChild_ = -1, fromChild_ = -1;
  std::string buffer_;
  bool found_ = false;
};
