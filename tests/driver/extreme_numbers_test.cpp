// Numbers from outside at their extremes: every figure the dispatcher reads is
// held within its bound, and a long run of random commands with such numbers
// leaves the driver working. CI runs this under UndefinedBehaviorSanitizer,
// which stops the program at the first overflow.
#include <random>
#include <sstream>
#include <tuple>

#include "driver_test_util.h"

namespace {

using namespace kbuChess;
using ExtremeNumbersTest = DriverTest;

const std::string HUGE = "99999999999999999999";
constexpr std::int64_t YEAR_MS = 31536000000;

// The pieces of text between the bars.
Lines split(const std::string& text) {
  Lines parts;
  std::istringstream in(text);
  for (std::string part; std::getline(in, part, '|');) parts.push_back(part);
  return parts;
}

TEST_F(ExtremeNumbersTest, ClockOptionsDepthsAndDebugLevelAreHeldWithinTheirBounds) {
  reply("time " + HUGE);  // the engine's clock then grows only by whole periods
  EXPECT_EQ(state().engineTimeMs, YEAR_MS);
  const kobubase::clsOptions& options = driver_->engine().runtimeOptions();
  for (auto [name, value, held] : {std::tuple{"memory", HUGE, "65536"}, {"cores", "0", "1"}}) {
    reply(std::string(name) + " " + value);
    EXPECT_EQ(options.get(name), held) << name << " " << value;
  }
  EXPECT_EQ(reply("perft -" + HUGE).front().rfind("Nodes: 0, Time: ", 0), 0u);
  EXPECT_EQ(reply("perft " + HUGE), Lines{"# perft depth 9223372036854775807 is too deep, at most 20"});
  reply("\\dbg " + HUGE);
  EXPECT_EQ(driver_->engine().debugSetting, 100);
}

TEST_F(ExtremeNumbersTest, BookLimitsBeyondThirtyTwoBitsAreHeldNotRefused) {
  const std::string book = temp_.file("a.sbk");
  EXPECT_EQ(reply("\\savebook " + book + " " + HUGE), Lines{"# wait...\r# book " + book + " saved"});
  EXPECT_EQ(reply("\\loadbook " + book + " -" + HUGE).back(), "# book " + book + " loaded with 0 positions");
}

// Random commands with extreme numbers, a search started now and then, and
// the loop's engine step between them; afterwards the driver still answers.
// "\learn" and "\play" get arguments that only print their usage: real runs
// would play games for as long as the numbers ask.
TEST_F(ExtremeNumbersTest, RandomCommandsWithExtremeNumbersLeaveTheDriverWorking) {
  const std::string book = temp_.file("fuzz.sbk");
  const Lines numbers = split(
      "0|1|2|-1|40|128|500|2147483647|-2147483648|2147483648|9223372036854775807|-9223372036854775808|1e9|abc||"
      "99999999999999999999|-99999999999999999999|0:99999999999999999999|5:-99999999999999999999|"
      "99999999999999999999.999");
  Lines templates = split(
      "time #|otim #|level # # #|sd #|perft #|divide #|memory #|cores #|option memory=#|go|force|new|undo|ping #|"
      "\\epd # /nonexistent/x.epd|\\soul F=# # # # # # # # # # # # # # # # # # # # #|\\loadsoul G=# # # #|"
      "\\learn f -# # # #|\\play # #|usermove e2e4");
  templates.insert(templates.end(), {"\\savebook " + book + " #", "\\loadbook " + book + " #"});
  std::mt19937 random(20261123);
  auto pick = [&](const std::vector<std::string>& from) { return from[random() % from.size()]; };
  for (int i = 0; i < 400; ++i) {
    std::string command = pick(templates);
    for (std::size_t at; (at = command.find('#')) != std::string::npos;) command.replace(at, 1, pick(numbers));
    driver_->execute(command);
    driver_->serviceEngine();
    driver_->takeAll();
    const ProtocolState& now = state();
    for (const std::int64_t ms : {now.opponentTimeMs, now.level.baseMs, now.level.incrementMs})
      EXPECT_LE(std::abs(ms), YEAR_MS) << command;
    EXPECT_LE(now.level.movesPerPeriod, 10000) << command;
  }
  reply("new");
  EXPECT_EQ(reply("ping 5"), Lines{"pong 5"});
  EXPECT_EQ(reply("divide 2").front().rfind("Nodes: 400, ", 0), 0u);  // the lines per move: tests/board
}

}  // namespace
