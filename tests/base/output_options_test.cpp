#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <thread>

#include "base/options.h"
#include "base/output.h"

namespace {

using kobubase::clsOptions;
using kobubase::clsOutBuffer;
using kobubase::clsTSafeOutput;

// Empties the capture without filling the test log: flush with stdout on /dev/null.
void discardCaptured() {
  std::fflush(stdout);
  const int saved = dup(1);
  const int null = open("/dev/null", O_WRONLY);
  dup2(null, 1);
  clsTSafeOutput::instance().flush();
  dup2(saved, 1);
  close(null);
  close(saved);
}

TEST(OutBufferTest, TwoThreadsWriteWholeLines) {
  clsTSafeOutput& output = clsTSafeOutput::instance();
  output.setCapture(true);
  clsOutBuffer first, second;
  first.setKeep(true);
  const std::string a = "# first writer says something long enough to be torn apart";
  const std::string b = "move e2e4";
  constexpr int Lines = 2000;
  auto writer = [&](clsOutBuffer& out, const std::string& line) {
    return std::thread([&out, &line] {
      for (int i = 0; i < Lines; ++i) out.print(line);
    });
  };
  std::thread one = writer(first, a), two = writer(second, b);
  one.join();
  two.join();
  const std::vector<std::string> lines = output.captured();
  output.setCapture(false);
  discardCaptured();
  ASSERT_EQ(lines.size(), 2u * Lines + 1);  // a new empty line follows every line end
  EXPECT_EQ(std::count(lines.begin(), lines.end(), a), Lines);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), b), Lines);
  EXPECT_EQ(first.takeAll().size(), static_cast<std::size_t>(Lines));
}

TEST(OptionsTest, SplitsAtFirstEqualsKeepsNamesAsTypedAndReplaces) {
  const char* argv[] = {"talvena", "x=y=z", "memory=64", "-memory=8", "-random", "-log="};
  clsOptions options(6, argv);
  EXPECT_EQ(options.size(), 5u);
  EXPECT_EQ(options.get("x"), "y=z");
  EXPECT_EQ(options.get("memory"), "64");
  EXPECT_EQ(options.get("-memory"), "8");
  EXPECT_TRUE(options.has("-random"));
  EXPECT_EQ(options.get("-random"), "");
  EXPECT_TRUE(options.has("-log"));
  EXPECT_FALSE(options.has("talvena"));
  EXPECT_FALSE(options.has("soul"));
  options.setPair("memory=2=3");
  options.set("cores", "4");
  EXPECT_EQ(options.size(), 6u);
  EXPECT_EQ(options.get("memory"), "2=3");
  EXPECT_EQ(options.pairs().back().first, "cores");
}

}  // namespace
