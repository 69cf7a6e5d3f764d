// A careless or hostile user at the console, through the real program: each
// test is named for what the user would have lost. Every one ends with a
// ping, since the program must keep answering.
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "engine_process.h"
#include "tests/common/test_files.h"

namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;

constexpr int ANSWER_MS = 10000;  // generous: sanitizer builds on a loaded machine

// A valid book of `count` positions, each seen in one won game.
std::string bookBytes(std::uint32_t count) {
  std::string bytes("KBUBK\0", 6);
  auto u32 = [&bytes](std::uint32_t v) {
    for (int i = 0; i < 4; ++i) bytes += static_cast<char>(v >> (8 * i));
  };
  u32(1);
  u32(count);
  bytes += std::string(32, '\0');
  for (std::uint64_t key = 1; key <= count; ++key) {
    bytes += std::string("\x01\x00\x00", 3);
    for (int i = 0; i < 8; ++i) bytes += static_cast<char>((key * 0x9E3779B97F4A7C15ull) >> (8 * i));
  }
  return bytes + std::string("*END*\0", 6);
}

bool contains(const Lines& lines, const std::string& line) {
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}

class HostileInput : public testing::Test {
 protected:
  void TearDown() override {
    engine_.reset();
    if (!mounted_.empty()) ::umount2(mounted_.c_str(), MNT_DETACH);
  }
  void start(const std::vector<std::string>& args = {"memory=1"}) {
    engine_ = std::make_unique<EngineProcess>(TALVENA_BIN, args);
    ASSERT_TRUE(engine_->awaits("# Talvena 3.0.23", 5000)) << "no banner";
  }
  std::string file(const std::string& name) const { return folder_.file(name); }
  // Sends the command and reads up to the line that begins with `last`.
  Lines run(const std::string& command, const std::string& last) {
    engine_->send(command);
    Lines lines = engine_->readUntil(last, ANSWER_MS);
    EXPECT_TRUE(engine_->found()) << command << ": no line beginning " << last;
    return lines;
  }
  // The program still answers: every line up to the pong.
  Lines expectPong(int number) { return run("ping " + std::to_string(number), "pong " + std::to_string(number)); }
  // A small tmpfs the test fills: a full disk that needs no real one.
  void mountSmallDisk(const std::string& where) {
    fs::create_directories(where);
    ASSERT_EQ(::mount("tmpfs", where.c_str(), "tmpfs", 0, "size=64k"), 0)
        << "mounting a 64 KiB tmpfs on " << where << " (the test runs as root)";
    mounted_ = where;
  }

  testFiles::TempFolder folder_;
  std::string mounted_;
  std::unique_ptr<EngineProcess> engine_;
};

TEST_F(HostileInput, AFullDiskKeepsTheBookASaveWasToReplace) {
  const std::string disk = file("disk");
  mountSmallDisk(disk);
  const std::string book = disk + "/book.sbk";
  testFiles::writeText(book, bookBytes(10));
  testFiles::writeText(file("big.sbk"), bookBytes(10000));  // 110 KB: more than the disk holds
  start();
  EXPECT_EQ(run("\\loadbook " + file("big.sbk"), "# book ").back(),
            "# book " + file("big.sbk") + " loaded with 10000 positions");
  const Lines lines = run("\\savebook " + book, "# " + book + " is as it was");
  EXPECT_TRUE(contains(lines, "# wait...\r# error 28: No space left on device")) << lines.front();
  EXPECT_TRUE(contains(lines, "# error saving " + book));
  EXPECT_EQ(testFiles::readText(book), bookBytes(10));
  EXPECT_EQ(std::distance(fs::directory_iterator(disk), fs::directory_iterator()), 1) << "a temporary file was left";
  expectPong(1);
}

TEST_F(HostileInput, ABuildIntoItsOwnInputKeepsTheGames) {
  const std::string games = file("games.pgn");
  const std::string pgn = "[Result \"1-0\"]\n\n1. e4 e5 2. Qh5 Nc6 3. Bc4 Nf6 4. Qxf7# 1-0\n";
  testFiles::writeText(games, pgn);
  start();
  for (const char* type : {"0", "1"}) {
    EXPECT_EQ(run("\\buildbooks " + games + " " + games + " 20 " + type, "# error").back(),
              "# error: the output " + games + " is the input " + games + "; nothing was built");
  }
  EXPECT_EQ(testFiles::readText(games), pgn);
  expectPong(2);
}

const std::string SOUL_VALUES = "=70 7 7 8 38 33 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1";

TEST_F(HostileInput, TheLastGenerationNumberKeepsTheSoulFileReadable) {
  const std::string souls = file("old.souls");
  const std::string text = "# generation 2147483647 games 2 scores 2 2\nA" + SOUL_VALUES + "\nC" + SOUL_VALUES + "\n";
  testFiles::writeText(souls, text);
  start();
  EXPECT_EQ(run("\\learn " + souls + " 1 2 1 1", "# soul file " + souls + " holds generation 2147483647, the").back(),
            "# soul file " + souls +
                " holds generation 2147483647, the last number a soul file can hold: learn into a new file");
  EXPECT_EQ(testFiles::readText(souls), text);
  expectPong(4);
}

TEST_F(HostileInput, ALongFormulaIsRefusedNotACrash) {
  start();
  run("\\console", "#   help ");
  std::string formula = "1";
  for (int i = 0; i < 20000; ++i) formula += "+1";
  EXPECT_EQ(run(formula, "# error").back(), "# error at column 800: formula more than 400 levels deep");
  run("exit", "# back to xboard");
  expectPong(5);
}

// A device, or a FIFO nobody reads, as the command log.
TEST_F(HostileInput, AnUnwritableLogSaysSoOnce) {
  const std::string fifo = file("log");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& log : {std::string("/dev/full"), fifo}) {
    start({"memory=1", "-log=" + log});
    Lines lines = expectPong(6);
    const Lines more = expectPong(7);
    lines.insert(lines.end(), more.begin(), more.end());
    EXPECT_EQ(
        std::count_if(lines.begin(), lines.end(), [](const std::string& l) { return l.rfind("# error", 0) == 0; }), 1);
    EXPECT_TRUE(contains(lines, "# error: /dev/full is not a regular file (log /dev/full)") ||
                contains(lines, "# error 6: No such device or address (log " + fifo + ")"));
  }
}

// Every command that takes a file (at @), given a FIFO, a folder, an endless
// device and a missing path: it answers, and then so does the next ping.
TEST_F(HostileInput, EveryFileCommandAnswersForAnyKindOfPath) {
  const std::string fifo = file("f.pgn");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  fs::create_directories(file("d.pgn"));
  const std::vector<std::string> paths{fifo, file("d.pgn"), "/dev/zero", file("missing.pgn")};
  const std::vector<std::string> commands{"\\loadbook @",      "\\savebook @",    "\\mergebooks @ " + file("m.sbk"),
                                          "\\buildbooks @ 10", "\\cvbooks @",     "\\epd 100 @",
                                          "\\loadsoul @",      "\\soul @",        "\\tourney @",
                                          "\\learn @ 1 2 1 1", "\\sql results @", "\\play 1 1 @"};
  start();
  int ping = 100;
  for (const std::string& command : commands) {
    for (const std::string& path : paths) {
      // "\play" writes P.pgn and P.log beside P: not into /dev.
      if (command.rfind("\\play", 0) == 0 && path == "/dev/zero") continue;
      std::string line = command;
      line.replace(line.find('@'), 1, path);
      engine_->send(line);
      SCOPED_TRACE(line);
      const Lines answer = expectPong(++ping);
      EXPECT_GE(answer.size(), 2u);  // something was said before the pong
      EXPECT_EQ(answer.front().rfind("#", 0), 0u);
    }
  }
  // A text file beyond the bound the README states (sparse: it costs no disk).
  const std::string big = file("big.epd");
  testFiles::writeText(big, "");
  fs::resize_file(big, (64u << 20) + 1);
  EXPECT_EQ(run("\\epd 100 " + big, "# error").back(), "# error: " + big + " is larger than 64 MiB");
  expectPong(++ping);
}

}  // namespace
