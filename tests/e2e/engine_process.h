#pragma once
// The program under test as a child process behind pipes, for tests: every
// read has a deadline, so a silent or hung program fails the test instead of
// hanging it.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "base/child_process.h"

class EngineProcess : public kobubase::clsRedirectedChild {
 public:
  // Each argument is passed as one word, blanks and quotes included.
  explicit EngineProcess(const std::string& path, const std::vector<std::string>& args = {})
      : clsRedirectedChild(path, quoted(args)) {
    if (start()) waitStarted();
  }
  ~EngineProcess() override {
    closeInput();
    waitExit(5000);
    shutDown();
  }

  void send(const std::string& line) { sendLine(line); }

  // The next line, or nothing when none came within timeoutMs.
  std::optional<std::string> readLine(int timeoutMs) {
    for (const std::int64_t until = kobubase::nowMs() + timeoutMs;; kobubase::sleepMs(1)) {
      if (hasLine()) return takeLine();
      if (!alive() && !hasLine()) return std::nullopt;  // the program has ended
      if (kobubase::nowMs() >= until) return std::nullopt;
    }
  }

  // Every line read until one starts with prefix, the match last.
  std::vector<std::string> readUntil(const std::string& prefix, int timeoutMs) {
    const std::int64_t until = kobubase::nowMs() + timeoutMs;
    std::vector<std::string> lines;
    found_ = false;
    for (std::int64_t left; !found_ && (left = until - kobubase::nowMs()) > 0;) {
      std::optional<std::string> line = readLine(static_cast<int>(left));
      if (!line) break;
      found_ = line->rfind(prefix, 0) == 0;
      lines.push_back(std::move(*line));
    }
    return lines;
  }

  // Whether a line starting with prefix came in time (the lines before it are dropped).
  bool awaits(const std::string& prefix, int timeoutMs) {
    readUntil(prefix, timeoutMs);
    return found_;
  }

  // The next line that is not a comment, or "<nothing>".
  std::string nextReply(int timeoutMs = 5000) {
    for (;;) {
      const std::optional<std::string> line = readLine(timeoutMs);
      if (!line) return "<nothing>";
      if (line->rfind("#", 0) != 0) return *line;
    }
  }
  std::string ask(const std::string& line) {
    send(line);
    return nextReply();
  }

  // Reads to the farewell and checks the program's last lines, that nothing
  // follows them, and its exit status; the lines read, farewell last.
  std::vector<std::string> expectFarewell(int timeoutMs = 5000, int status = 0) {
    const std::vector<std::string> lines = readUntil("# bye bye", timeoutMs);
    EXPECT_TRUE(found_) << (lines.empty() ? "no line at all" : "last line: " + lines.back());
    const std::vector<std::string> end{"# end", "# stop", "# bye bye"};
    EXPECT_TRUE(lines.size() >= 3 && std::vector<std::string>(lines.end() - 3, lines.end()) == end);
    EXPECT_FALSE(readLine(200).has_value());
    EXPECT_EQ(waitExit(timeoutMs), status);
    return lines;
  }
  std::vector<std::string> quit(int timeoutMs = 5000) {
    send("quit");
    return expectFarewell(timeoutMs);
  }
  // Runs the program with the arguments to its end; the lines it printed.
  static std::vector<std::string> run(const std::vector<std::string>& args, int timeoutMs, int status = 0) {
    return EngineProcess(TALVENA_BIN, args).expectFarewell(timeoutMs, status);
  }

  bool started() const { return pid() > 0; }
  // Set by readUntil: whether the awaited line came in time.
  bool found() const { return found_; }

 protected:
  void report(const std::string&) override {}  // the tests look at the exit status instead

 private:
  static std::string quoted(const std::vector<std::string>& args) {
    std::string text;
    for (const std::string& arg : args) {
      text += text.empty() ? "\"" : " \"";
      for (char c : arg) text += c == '"' ? std::string("\"\"") : std::string(1, c);
      text += '"';
    }
    return text;
  }

  bool found_ = false;
};
