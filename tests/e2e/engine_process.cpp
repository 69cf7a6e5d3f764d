#include "engine_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

extern char** environ;

namespace {

long long nowMs() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

EngineProcess::EngineProcess(const std::string& path, const std::vector<std::string>& args) {
  signal(SIGPIPE, SIG_IGN);
  int in[2], out[2];
  if (pipe(in) != 0) return;
  if (pipe(out) != 0) {
    close(in[0]);
    close(in[1]);
    return;
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in[0], 0);
  posix_spawn_file_actions_adddup2(&actions, out[1], 1);
  posix_spawn_file_actions_addclose(&actions, in[1]);
  posix_spawn_file_actions_addclose(&actions, out[0]);
  std::vector<std::string> words{path};
  words.insert(words.end(), args.begin(), args.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  if (posix_spawn(&pid_, path.c_str(), &actions, nullptr, argv.data(), environ) != 0) pid_ = -1;
  posix_spawn_file_actions_destroy(&actions);
  close(in[0]);
  close(out[1]);
  toChild_ = in[1];
  fromChild_ = out[0];
}

EngineProcess::~EngineProcess() {
  closeInput();
  if (pid_ > 0) waitExit(5000);
  if (fromChild_ >= 0) close(fromChild_);
}

void EngineProcess::send(const std::string& line) {
  if (toChild_ < 0) return;
  const std::string bytes = line + "\n";
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t n = write(toChild_, bytes.data() + done, bytes.size() - done);
    if (n <= 0) return;
    done += static_cast<std::size_t>(n);
  }
}

void EngineProcess::closeInput() {
  if (toChild_ >= 0) close(toChild_);
  toChild_ = -1;
}

std::optional<std::string> EngineProcess::readLine(int timeoutMs) {
  const long long deadline = nowMs() + timeoutMs;
  for (;;) {
    const std::size_t end = buffer_.find('\n');
    if (end != std::string::npos) {
      std::string line = buffer_.substr(0, end);
      buffer_.erase(0, end + 1);
      return line;
    }
    const long long left = deadline - nowMs();
    if (left <= 0 || fromChild_ < 0) return std::nullopt;
    pollfd pfd{fromChild_, POLLIN, 0};
    if (poll(&pfd, 1, static_cast<int>(left)) <= 0) continue;
    char chunk[4096];
    const ssize_t n = read(fromChild_, chunk, sizeof chunk);
    if (n <= 0) return std::nullopt;  // the program closed its output
    buffer_.append(chunk, static_cast<std::size_t>(n));
  }
}

std::vector<std::string> EngineProcess::readUntil(const std::string& prefix, int timeoutMs) {
  const long long deadline = nowMs() + timeoutMs;
  std::vector<std::string> lines;
  found_ = false;
  while (!found_) {
    const long long left = deadline - nowMs();
    if (left <= 0) break;
    std::optional<std::string> line = readLine(static_cast<int>(left));
    if (!line) break;
    found_ = line->rfind(prefix, 0) == 0;
    lines.push_back(std::move(*line));
  }
  return lines;
}

int EngineProcess::waitExit(int timeoutMs) {
  if (pid_ <= 0) return -1;
  const long long deadline = nowMs() + timeoutMs;
  int status = 0;
  while (waitpid(pid_, &status, WNOHANG) == 0) {
    if (nowMs() > deadline) {
      kill(pid_, SIGKILL);
      waitpid(pid_, &status, 0);
      pid_ = -1;
      return -1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  pid_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
