#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "base/stdin_thread.h"

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
  void send(const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t n = write(fds_[1], bytes.data() + done, bytes.size() - done);
      ASSERT_GT(n, 0);
      done += static_cast<std::size_t>(n);
    }
  }
  void closeWriter() {
    if (fds_[1] >= 0) close(fds_[1]);
    fds_[1] = -1;
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

TEST_F(StdInThreadTest, LongAndBinaryLinesArriveWhole) {
  const std::string big(100 * 1024, 'x');
  std::string binary = "bin";
  for (int c = 0; c < 256; ++c)
    if (c != '\n') binary += static_cast<char>(c);
  send(big + "\n" + binary + "\nnew\n");
  closeWriter();
  const std::vector<std::string> lines = linesUntilQuit();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], big);
  EXPECT_EQ(lines[1], binary);
  EXPECT_EQ(lines[2], "new");
  EXPECT_EQ(lines[3], "quit");
}

TEST_F(StdInThreadTest, OverlongLineIsCutAtTheCap) {
  send(std::string(clsStdInThread::MAX_LINE + 5000, 'y') + "\ngo\n");
  closeWriter();
  const std::vector<std::string> lines = linesUntilQuit();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], std::string(clsStdInThread::MAX_LINE, 'y'));
  EXPECT_EQ(lines[1], "go");
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
