#include "base/stdin_thread.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <utility>
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
    closeWriter();
    close(fds_[0]);
  }
  // A blocking pipe takes it all while the reader drains it.
  void send(const std::string& bytes) {
    ASSERT_EQ(write(fds_[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  void closeWriter() {
    if (fds_[1] >= 0) close(std::exchange(fds_[1], -1));
  }
  // Every line up to and including the "quit" that end of input queues.
  std::vector<std::string> linesUntilQuit() {
    std::vector<std::string> lines;
    for (;;) {
      std::string line = reader_->getLine(true);
      if (line.empty()) break;
      lines.push_back(line);
      if (line == "quit") break;
    }
    return lines;
  }

  int fds_[2] = {-1, -1};
  std::unique_ptr<clsStdInThread> reader_;
};

TEST_F(StdInThreadTest, QueuesLinesInOrderAndDropsEmptyOnes) {
  EXPECT_EQ(reader_->getLine(false), "");
  send("xboard\n\nprotover 2\r\n\r\n  \nping 1");
  closeWriter();
  const std::vector<std::string> expected = {"xboard", "protover 2", "  ", "ping 1", "quit"};
  EXPECT_EQ(linesUntilQuit(), expected);
  reader_->wait();
  EXPECT_TRUE(reader_->endOfInput());
  EXPECT_FALSE(reader_->isRunning());
  EXPECT_EQ(reader_->getLine(true), "");  // ended reader: no hang
}

TEST_F(StdInThreadTest, LongAndBinaryLinesArriveWholeOverlongOnesCut) {
  const std::string big(100 * 1024, 'x'), overlong(clsStdInThread::MAX_LINE + 5000, 'y');
  std::string binary = "bin";
  for (int c = 0; c < 256; ++c)
    if (c != '\n') binary += static_cast<char>(c);
  send(big + "\n" + binary + "\n" + overlong + "\nnew\n");
  closeWriter();
  const std::vector<std::string> expected{big, binary, overlong.substr(0, clsStdInThread::MAX_LINE), "new", "quit"};
  EXPECT_EQ(linesUntilQuit(), expected);
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
