#include "base/stdin_thread.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

namespace {

using kobubase::clsStdInThread;

// A reader on the read end of a pipe; the test writes the other end.
class StdInThreadTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(pipe(fds_), 0);
    reader_ = std::make_unique<clsStdInThread>(fds_[0]);
    ASSERT_TRUE(reader_->start());
  }
  void TearDown() override {
    reader_.reset();
    for (int fd : fds_)
      if (fd >= 0) close(fd);
  }
  // A blocking pipe takes it all while the reader drains it.
  void send(const std::string& bytes) {
    ASSERT_EQ(write(fds_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }

  int fds_[2] = {-1, -1};
  std::unique_ptr<clsStdInThread> reader_;
};

// Empty lines are dropped, long and binary ones arrive whole, an overlong one
// is cut, and the end of input queues "quit"; an ended reader never hangs.
TEST_F(StdInThreadTest, QueuesLinesInOrderCutsOverlongOnesAndEndsWithQuit) {
  EXPECT_EQ(reader_->getLine(false), "");
  const std::string big(100 * 1024, 'x'), overlong(clsStdInThread::MAX_LINE + 5000, 'y');
  std::string binary = "bin";
  for (int c = 0; c < 256; ++c)
    if (c != '\n') binary += static_cast<char>(c);
  send("xboard\n\nprotover 2\r\n\r\n  \n" + big + "\n" + binary + "\n" + overlong + "\nping 1");
  close(fds_[1]);
  fds_[1] = -1;
  std::vector<std::string> lines;
  for (std::string line; lines.size() < 10 && !(line = reader_->getLine(true)).empty();) lines.push_back(line);
  const std::vector<std::string> expected{
      "xboard", "protover 2", "  ", big, binary, overlong.substr(0, clsStdInThread::MAX_LINE), "ping 1", "quit"};
  EXPECT_EQ(lines, expected);
  EXPECT_TRUE(reader_->endOfInput());
  EXPECT_FALSE(reader_->isRunning());
}

TEST_F(StdInThreadTest, StopsWhileInputStaysOpen) {
  send("force\n");
  EXPECT_EQ(reader_->getLine(true), "force");
  EXPECT_TRUE(reader_->cancel());
  EXPECT_FALSE(reader_->isRunning());
  EXPECT_FALSE(reader_->endOfInput());
  EXPECT_EQ(reader_->getLine(false), "");
}

}  // namespace
