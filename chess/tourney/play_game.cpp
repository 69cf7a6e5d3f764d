#include "chess/tourney/play_game.h"

#include <ctime>

#include "base/text.h"
#include "base/command_result.h"
#include "chess/tourney/learning.h"
#include "chess/tourney/pgn_output.h"
#include "chess/tourney/tourney_learning_games.h"
#include "chess/tourney/tourney_text.h"

namespace kbuChess {

using enum kobubase::CommandResult;

namespace {

// Prints the game's own lines (match, result, score) as they come.
class clsPrintingHost : public clsTourneyHost {
 public:
  explicit clsPrintingHost(kobubase::clsOutBuffer& out) : out_(out) {}
  void hostLog(const std::string&, const std::string& text) override {
    out_.print(text.rfind("# ", 0) == 0 ? text : "# " + text);
  }
  void gameFinished(clsTourneyGame&) override {}

 private:
  kobubase::clsOutBuffer& out_;
};

std::string withoutPgnExtension(const std::string& file) {
  const std::size_t dot = file.size() >= 4 ? file.size() - 4 : std::string::npos;
  return dot != std::string::npos && file.compare(dot, 4, ".pgn") == 0 ? file.substr(0, dot) : file;
}

// A player for a soul given by name or text; its name is the soul's name.
PlayerConfig soulPlayer(const std::string& soul) {
  const std::size_t equals = soul.find('=');
  return PlayerConfig{equals == std::string::npos ? soul : soul.substr(0, equals), "", soul, "embedded"};
}

}  // namespace

int commandPlay(const std::string& args, const std::string& currentSoul, kobubase::clsOutBuffer& out) {
  const std::string file(kobubase::wordAt(args, 2));
  if (file.empty()) {
    out.print(PLAY_USAGE);
    return CMD_PRINTED;
  }
  const int ms = static_cast<int>(kobubase::readClamped(kobubase::wordAt(args, 0), 1, LearningSettings::MAX_MS_PER_MOVE));
  const int moves = static_cast<int>(kobubase::readClamped(kobubase::wordAt(args, 1), 1, LearningSettings::MAX_MOVES));
  const std::string soulA(kobubase::wordAt(args, 3));
  const std::string soulB(kobubase::wordAt(args, 4));
  clsPlayer white(soulPlayer(soulA.empty() ? currentSoul : soulA));
  clsPlayer black(soulPlayer(soulB.empty() ? (soulA.empty() ? currentSoul : soulA) : soulB));

  clsPrintingHost host(out);
  const GameClock clock = moveTimeClock(ms, moves);
  clsTourneyGame game(host, 1, &white, &black, clock);
  TourneyConfig config;
  config.name = "play";
  config.gameMs = clock.gameMs;
  setRoundTags(game.record(), config, 1, 1, 1, white.name(), black.name());
  setPlayDate(game.record(), config, std::time(nullptr));
  game.setFileBase(withoutPgnExtension(file));
  if (!game.start()) {
    out.print("# error: the game thread did not start");
    return CMD_PRINTED;
  }
  game.wait();
  out.print("# " + resultText(game.record().result()) + " " + reasonText(game.record().result()) + " after " +
            std::to_string(game.record().plies()) + " plies, written to " + file);
  return CMD_PRINTED;
}

}  // namespace kbuChess
