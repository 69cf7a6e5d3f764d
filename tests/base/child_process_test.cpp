#include "base/child_process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "base/text.h"
#include "tests/common/test_files.h"

namespace {

using kobubase::clsRedirectedChild;
using kobubase::nowMs;
using kobubase::sleepMs;
using Words = std::vector<std::string>;

// Keeps the comment lines about the child instead of printing them.
class clsQuietChild : public clsRedirectedChild {
 public:
  using clsRedirectedChild::clsRedirectedChild;
  ~clsQuietChild() override { shutDown(); }
  Words reports() {
    std::lock_guard<std::mutex> guard(lock_);
    return reports_;
  }

 protected:
  void report(const std::string& line) override {
    std::lock_guard<std::mutex> guard(lock_);
    reports_.push_back(line);
  }

 private:
  std::mutex lock_;
  Words reports_;
};

// The next complete line, or "<nothing>" after 5 s.
std::string nextLine(clsRedirectedChild& child) {
  for (const std::int64_t until = nowMs() + 5000; !child.hasLine() && nowMs() < until;) sleepMs(1);
  return child.hasLine() ? child.takeLine() : "<nothing>";
}

// Whether the child started and then ended within 5 s.
bool waitDead(clsRedirectedChild& child) {
  if (!child.waitStarted()) return false;
  for (const std::int64_t until = nowMs() + 5000; child.alive() && nowMs() < until;) sleepMs(1);
  return !child.alive();
}

TEST(SplitArgumentsTest, BlanksSeparateQuotesGroup) {
  using kobubase::splitArguments;
  EXPECT_EQ(splitArguments("  \t "), Words{});
  EXPECT_EQ(splitArguments(" a  b\tc "), (Words{"a", "b", "c"}));
  EXPECT_EQ(splitArguments("\"two words\" x"), (Words{"two words", "x"}));
  EXPECT_EQ(splitArguments("a\"b c\"d"), (Words{"ab cd"}));
  EXPECT_EQ(splitArguments("\"\" x \"\""), (Words{"", "x", ""}));
  EXPECT_EQ(splitArguments("\"say \"\"hi\"\"\""), (Words{"say \"hi\""}));
  EXPECT_EQ(splitArguments("C:\\engines\\x.exe -n"), (Words{"C:\\engines\\x.exe", "-n"}));
  EXPECT_EQ(splitArguments("\"open end"), (Words{"open end"}));
}

// A copy of the helper in a folder and under a name with blanks: it runs in
// its own folder and receives its parameters split like a shell splits them.
TEST(ChildProcessTest, BlanksInPathFolderAndQuotedParameters) {
  const testFiles::TempFolder top;
  const std::filesystem::path folder = top.path / "child dir";
  std::filesystem::create_directories(folder);
  const std::filesystem::path program = folder / "child helper";
  std::filesystem::copy_file(CHILD_HELPER, program);
  clsQuietChild child(program.string(), "args one \"two words\" \"\" last");
  EXPECT_EQ(child.commandLine(),
            std::string("\"").append(program.string()).append("\" args one \"two words\" \"\" last"));
  ASSERT_TRUE(child.start());
  ASSERT_TRUE(child.waitStarted());
  EXPECT_EQ(nextLine(child), "folder [" + std::filesystem::canonical(folder).string() + "]");
  for (const char* line : {"[one]", "[two words]", "[]", "[last]", "end"}) EXPECT_EQ(nextLine(child), line);
  ASSERT_TRUE(waitDead(child));
  EXPECT_EQ(child.exitStatus(), 0);
  EXPECT_EQ(child.reports(), Words{"# process terminated!"});
}

TEST(ChildProcessTest, CommandLineIsCutAt8191Characters) {
  const std::string program = CHILD_HELPER;
  clsQuietChild child(program, "args " + std::string(10000, 'p'));
  ASSERT_EQ(child.commandLine().size(), 8191u);
  child.start();
  ASSERT_TRUE(child.waitStarted());
  nextLine(child);  // the folder
  // 8191 less the quoted program, the blank and "args ".
  EXPECT_EQ(nextLine(child), std::string("[").append(8191 - program.size() - 2 - 1 - 5, 'p').append("]"));
  EXPECT_EQ(nextLine(child), "end");
}

// Lines both ways, standard error on the same pipe, a line in two pieces
// handed over only once complete, the exit code, then writes that fail.
TEST(ChildProcessTest, DialogueExitAndSendingToTheDead) {
  clsQuietChild child(CHILD_HELPER, "echo");
  EXPECT_FALSE(child.sendLine("too early"));
  child.start();
  ASSERT_TRUE(child.waitStarted());
  EXPECT_GT(child.pid(), 0);
  EXPECT_TRUE(child.alive());
  EXPECT_TRUE(child.send(""));
  EXPECT_TRUE(child.sendLine("hello"));
  EXPECT_EQ(nextLine(child), "got hello");
  EXPECT_TRUE(child.sendLine("err"));
  EXPECT_EQ(nextLine(child), "to standard error");
  EXPECT_TRUE(child.sendLine("partial"));
  for (const std::int64_t until = nowMs() + 5000; !child.hasLine() && nowMs() < until;) {
    EXPECT_EQ(child.takeLine(), "");
    sleepMs(5);
  }
  EXPECT_EQ(child.takeLine(), "first half, second half");
  EXPECT_EQ(child.exitStatus(), -1);
  EXPECT_TRUE(child.sendLine("exit 7"));
  ASSERT_TRUE(waitDead(child));
  EXPECT_EQ(child.exitStatus(), 7);
  EXPECT_EQ(child.reports(), Words{"# process terminated!"});
  EXPECT_FALSE(child.sendLine("anyone?"));
  EXPECT_FALSE(child.send("x"));
}

TEST(ChildProcessTest, NoProgramCannotStart) {
  clsQuietChild empty;
  empty.start();
  EXPECT_FALSE(empty.waitStarted());
  EXPECT_EQ(empty.startError(), "no program to start");
  EXPECT_EQ(empty.reports(), Words{"# error: no program to start"});
  EXPECT_FALSE(empty.alive());
  EXPECT_FALSE(empty.sendLine("x"));  // a missing program: the tournament's external engine test
}

// A child that writes without end: what waits unread stays bounded, the
// drop is reported once, and every line kept is whole.
TEST(ChildProcessTest, FloodIsBoundedAndReportedOnce) {
  clsQuietChild flood("yes", "");
  flood.limitOutput(clsRedirectedChild::LINE_LIMIT, clsRedirectedChild::PENDING_LIMIT);
  flood.start();
  ASSERT_TRUE(flood.waitStarted());
  for (const std::int64_t until = nowMs() + 20000; flood.droppedLines() < 1000 && nowMs() < until;) sleepMs(10);
  ASSERT_GE(flood.droppedLines(), 1000u);
  flood.close();  // what was kept stays to be taken
  std::size_t bytes = 0;
  for (std::string line; flood.hasLine() && bytes <= 4 * clsRedirectedChild::PENDING_LIMIT; bytes += line.size() + 1) {
    line = flood.takeLine();
    ASSERT_EQ(line, "y");
  }
  EXPECT_LE(bytes, clsRedirectedChild::PENDING_LIMIT + clsRedirectedChild::READ_BUFFER_BYTES + 2);
  EXPECT_EQ(flood.reports(), Words{"# output comes faster than it is read: lines dropped"});
}

// Whether the process is gone within 5 s (a zombie of ours is reaped).
bool vanishes(pid_t pid) {
  for (const std::int64_t until = nowMs() + 5000; nowMs() < until; sleepMs(5)) {
    waitpid(pid, nullptr, WNOHANG);
    if (kill(pid, 0) == -1) return true;
  }
  return false;
}

// Shutting down (what the destructor does) grants the child its second, then
// kills the whole group and reaps the child: a script leaves no process of its
// own behind, nor a zombie.
TEST(ChildProcessTest, ShutDownEndsTheWholeProcessGroup) {
  clsQuietChild script("sh", "-c \"sleep 300 & echo $!; wait\"");
  script.start();
  const std::string sleeper = nextLine(script);
  const pid_t pid = static_cast<pid_t>(kobubase::readInteger(sleeper)), child = script.pid();
  ASSERT_GT(pid, 0) << sleeper;
  ASSERT_EQ(kill(pid, 0), 0);
  EXPECT_EQ(getpgid(pid), child);
  const std::int64_t start = nowMs();
  script.shutDown();
  EXPECT_GE(nowMs() - start, clsRedirectedChild::DESTROY_GRACE_MS);
  EXPECT_FALSE(script.alive());
  EXPECT_EQ(script.exitStatus(), 128 + SIGKILL);
  EXPECT_EQ(kill(child, 0), -1);
  EXPECT_TRUE(vanishes(pid));
}

}  // namespace
