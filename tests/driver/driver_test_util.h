#pragma once
// A whole driver whose replies are kept instead of written, run without its
// thread: the test calls the loop's engine step itself.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "chess/board/tables.h"
#include "chess/driver/talvena.h"
#include "tests/common/test_files.h"

namespace kbuChess {

using Lines = std::vector<std::string>;

class DriverTest : public testing::Test {
 protected:
  static void SetUpTestSuite() { initTables(); }
  DriverTest() {
    const char* args[] = {"talvena"};
    driver_ = std::make_unique<clsTalvena>(kobubase::clsOptions(1, args));
    driver_->setEcho(false);
    driver_->setKeep(true);
    driver_->engine().output().setEcho(false);
  }

  // The replies to one line; its return code is checked when one is given.
  Lines reply(const std::string& line, int expectedCode = -1) {
    const int code = driver_->execute(line);
    EXPECT_TRUE(expectedCode < 0 || code == expectedCode) << line << " returned " << code;
    return driver_->takeAll();
  }
  // Runs the loop's engine step while busy(lines seen so far) holds, 20 s at most.
  template <class Busy>
  Lines serviceWhile(Busy busy) {
    Lines seen;
    for (int pass = 0; pass < 20000 && busy(seen); ++pass) {
      driver_->serviceEngine();
      for (std::string& line : driver_->takeAll()) seen.push_back(line);
      kobubase::sleepMs(1);
    }
    return seen;
  }
  Lines untilMove() {
    auto moved = [](const Lines& seen) {
      return std::any_of(seen.begin(), seen.end(), [](const std::string& l) { return l.rfind("move ", 0) == 0; });
    };
    Lines seen = serviceWhile([&](const Lines& lines) { return !moved(lines); });
    EXPECT_TRUE(moved(seen)) << "no move within 20 s";
    return seen;
  }
  const ProtocolState& state() { return driver_->state(); }

  std::unique_ptr<clsTalvena> driver_;
  testFiles::TempFolder temp_;  // for files the commands read and write
};

}  // namespace kbuChess
