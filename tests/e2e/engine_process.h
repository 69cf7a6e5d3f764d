#pragma once
// The program under test as a child process behind pipes. Every read has a
// deadline, so a silent or hung program fails the test instead of hanging it.
#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

class EngineProcess {
 public:
  EngineProcess(const std::string& path, const std::vector<std::string>& args = {});
  ~EngineProcess();

  bool started() const { return pid_ > 0; }
  // Writes the bytes as they are, adding a line feed.
  void send(const std::string& line);
  void closeInput();
  // The next line within timeoutMs, or nothing.
  std::optional<std::string> readLine(int timeoutMs);
  // Reads until a line starts with prefix; returns every line read, the match
  // last. found() tells whether it came in time.
  std::vector<std::string> readUntil(const std::string& prefix, int timeoutMs);
  bool found() const { return found_; }
  // Waits for the exit; the exit status, or -1 after killing a program that hung.
  int waitExit(int timeoutMs);

 private:
  pid_t pid_ = -1;
  int toChild_ = -1;
  int fromChild_ = -1;
  std::string buffer_;
  bool found_ = false;
};
