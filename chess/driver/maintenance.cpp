// The backslash commands: the author's console beside the xboard dialogue.
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <thread>

#include "base/file_io.h"
#include "base/interrupt.h"
#include "chess/book/book_commands.h"
#include "chess/driver/talvena.h"
#include "chess/tourney/learn_slices.h"
#include "chess/tourney/learning.h"
#include "chess/tourney/merge.h"
#include "chess/tourney/play_game.h"
#include "chess/tourney/soul_file.h"
#include "chess/tourney/tourney.h"
#include "chess/tourney/tourney_learning_games.h"

namespace kbuChess {

using kobubase::readInteger;
using kobubase::wordAt;

namespace {

// Debug levels run from 0 (quiet) upwards; more than this means nothing more.
constexpr std::int64_t MAX_DEBUG_SETTING = 100;

// The first line of a readable file (at most 64 KiB of it), or false.
bool firstLineOfFile(const std::string& path, std::string& line) {
  std::string error;
  std::FILE* file = kobubase::openForReading(path, error);
  if (!file) return false;
  std::string buffer(65536, '\0');
  const bool read = std::fgets(buffer.data(), static_cast<int>(buffer.size()), file) != nullptr;
  std::fclose(file);
  if (!read) return false;
  line = buffer.c_str();
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
  return true;
}

}  // namespace

// A running search is finished first (its move is played): the evaluation
// must not change under it.
void clsTalvena::loadSoul(const std::string& text) {
  finishSearch();
  std::string soul = text;
  std::string line;
  if (firstLineOfFile(text, line)) soul = line;
  if (soul.find('=') != std::string::npos) {
    engine_.applySoulText(soul);
  } else {
    engine_.selectSoul(soul);
    if (engine_.soulName() != soul) {
      print("# no preset or file named " + soul + "; the soul in use is " + engine_.soulName());
    }
  }
}

int clsTalvena::cmdDebugBoard(const std::string& rest) {
  state_.debugDisplay = !state_.debugDisplay;
  positionView().printBoard(*this);
  if (!rest.empty() && rest[0] == 'm') printMoveList();
  return CMD_PRINTED;
}

int clsTalvena::cmdDbg(const std::string& rest) {
  engine_.debugSetting = static_cast<int>(kobubase::readClamped(rest, 0, MAX_DEBUG_SETTING));
  execute("setboard 1k6/7R/1K6/8/8/8/8/8 b");
  execute("post");
  execute("go");
  return CMD_HANDLED;
}

int clsTalvena::cmdLoadSoul(const std::string& rest) {
  if (rest.empty()) {
    print("# loadsoul soul_text_or_file");
    return CMD_PRINTED;
  }
  loadSoul(rest);
  print("# new soul: " + rest);
  return CMD_PRINTED;
}

int clsTalvena::cmdSoul(const std::string& rest) {
  if (!rest.empty()) loadSoul(rest);
  print("# soul " + engine_.soulName() + "=" + engine_.soulValuesText());
  return CMD_PRINTED;
}

int clsTalvena::cmdMoves(const std::string&) {
  printMoveList();
  return CMD_PRINTED;
}

// "# __moves__ N" and then each legal move of the position in the long and
// the coordinate form, in generation order.
void clsTalvena::printMoveList() {
  clsBoard& board = positionView();
  board.resetFrames();
  const int count = board.generateLegal();
  print("# __moves__ " + std::to_string(count < 0 ? 0 : count));
  for (int i = 0; i < count; ++i) {
    const Move* move = board.frame().first + i;
    print("# " + clsBoard::moveText(move, true) + " " + clsBoard::moveText(move, false));
  }
}

int clsTalvena::cmdTourney(const std::string& rest) {
  bool refused = false;
  const int result = commandTourney(rest, *this, &refused);
  if (refused) exitStatus_ = 1;
  return result;
}

int clsTalvena::cmdMerge(const std::string& rest) {
  if (!commandMerge(rest, *this)) exitStatus_ = 1;
  return CMD_PRINTED;
}

int clsTalvena::cmdLoadBook(const std::string& rest) {
  return commandLoadBook(book_, rest, *this);
}

int clsTalvena::cmdSaveBook(const std::string& rest) {
  return commandSaveBook(book_, rest, *this);
}

int clsTalvena::cmdListBook(const std::string&) {
  return commandListBook(book_, positionView(), *this);
}

int clsTalvena::cmdMergeBooks(const std::string& rest) {
  return commandMergeBooks(rest, *this);
}

int clsTalvena::cmdBuildBooks(const std::string& rest) {
  return commandBuildBooks(rest, *this);
}

int clsTalvena::cmdCvBooks(const std::string& rest) {
  return commandCvBooks(rest, *this);
}

// "\learn file generations engines_count ms_per_move max_moves": learning by
// generations on the soul file (continued when it exists).
int clsTalvena::cmdLearn(const std::string& rest) {
  LearningSettings settings = learning_;
  if (!readLearnArguments(rest, settings)) {
    print(LEARN_USAGE);
    return CMD_PRINTED;
  }
  learning_ = settings;
  return runLearning(settings);
}

// "\learnt": one more generation on the soul file of the last "\learn" (by
// default talvena.souls), as many souls as its last generation holds, with the
// last time per move and move cap.
int clsTalvena::cmdLearnt(const std::string&) {
  LearningSettings settings = learning_;
  settings.generations = 1;
  settings.enginesCount = 0;
  return runLearning(settings);
}

// The run stops after its running games when Ctrl-C comes (the program then
// ends) or when "?", "quit" or the end of input waits in the input.
int clsTalvena::runLearning(const LearningSettings& given) {
  LearningSettings settings = given;
  settings.threads =
      static_cast<int>(kobubase::clampTo(std::thread::hardware_concurrency(), 1, LearningSettings::MAX_THREADS));
  print("# learning: file " + settings.file + ", generations " + std::to_string(settings.generations) + ", souls " +
        (settings.enginesCount > 0 ? std::to_string(settings.enginesCount) : std::string("as in the file")) +
        ", ms per move " + std::to_string(settings.msPerMove) + ", max moves " + std::to_string(settings.maxMoves) +
        ", threads " + std::to_string(settings.threads));
  clsTourneyLearningGames games;
  clsRandomOpenings randomOpenings(settings.openingPlies);
  clsBookOpenings bookOpenings(book_, settings.openingPlies);
  clsOpenings& openings = book_.empty() ? static_cast<clsOpenings&>(randomOpenings) : bookOpenings;
  clsLearning learning(settings, games, openings, *this);
  const kobubase::clsInterruptGuard interrupts;
  const auto wanted = [this] {
    return kobubase::clsInterruptGuard::requested() || (reader_ && reader_->anyQueued([](const std::string& line) {
             return wordAt(line, 0) == "?" || wordAt(line, 0) == "quit";
           }));
  };
  kobubase::runStoppable([&] { learning.run(); }, wanted, [&] { learning.requestStop(); });
  return kobubase::clsInterruptGuard::requested() ? CMD_QUIT : CMD_PRINTED;
}

// "-use=learn FILE -generation=G [-shard=K/N] [-threads=T]" plays a slice of
// a generation; "-use=learn FILE -breed [-souls=E -ms=M -moves=X -seed=S]"
// breeds the generation played (the numbers make the first one ready).
bool clsTalvena::runLearnSlices() {
  std::string file;
  bool breed = false;
  for (const std::string& name : options_.bareNames()) {
    if (name == "-breed") breed = true;
    if (name.rfind('-', 0) != 0 && file.empty()) file = name;
  }
  if (file.empty() || breed == options_.has("-generation")) {
    print(LEARN_SLICES_USAGE);
    return false;
  }
  const auto number = [this](const char* name, std::int64_t low, std::int64_t high, std::int64_t absent) {
    return options_.has(name) ? kobubase::readClamped(options_.get(name), low, high) : absent;
  };
  if (breed) {
    PlaySettings play;
    play.enginesCount =
        static_cast<int>(number("-souls", LearningSettings::MIN_ENGINES, LearningSettings::MAX_ENGINES, 0));
    play.msPerMove = static_cast<int>(number("-ms", 1, LearningSettings::MAX_MS_PER_MOVE, play.msPerMove));
    play.maxMoves = static_cast<int>(number("-moves", 1, LearningSettings::MAX_MOVES, play.maxMoves));
    const auto seed = static_cast<std::uint64_t>(number("-seed", 0, INT64_MAX, 0));
    return breedLearnSlices(file, play, seed, *this);
  }
  const LearnSliceRequest request{file, options_.get("-generation"),
                                  options_.has("-shard") ? options_.get("-shard") : shardFromEnvironment(),
                                  static_cast<int>(number("-threads", 1, LearningSettings::MAX_THREADS, 1))};
  clsTourneyLearningGames games;
  std::atomic<bool> stop{false};
  const kobubase::clsInterruptGuard interrupts;
  bool played = false;
  kobubase::runStoppable([&] { played = playLearnSlice(request, games, book_, stop, *this); },
                         [] { return kobubase::clsInterruptGuard::requested(); },
                         [&] {
                           stop.store(true);
                           games.stop();
                         });
  return played;
}

int clsTalvena::cmdPlay(const std::string& rest) {
  return commandPlay(rest, soulText(Soul{engine_.soulName(), engine_.soulValues()}), *this);
}

}  // namespace kbuChess
