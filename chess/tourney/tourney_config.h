#pragma once
// The tournament file, read once into plain records before any game exists.
// Every value is read, defaulted and held within bounds here; the run and
// the games only read the result.
//
//   <tourney name="blitz" type="gauntlet">            type: gauntlet, learning, else all-play-all
//     <options><rounds>2</rounds><logfolder>logs</logfolder><threads>2</threads>
//              <openings>book.sbk</openings><opening_plies>8</opening_plies></options>
//     <clock moves_per_second="0" game_ms="10000" increment_ms="100"/>
//     <engines>
//       <engine active="true" name="Self" protocol="embedded" parameters="Simple5"/>
//       <engine active="true" name="Other" filename="/usr/games/fairymax" protocol="xboard"/>
//     </engines>
//     <pgn><header><Site>Home</Site></header></pgn>
//   </tourney>
//
// How games are run, in <options>: <command_pause_ms>0</command_pause_ms>
// (the pause after every command to an external engine, 0..1000, default
// 100), <max_plies>N</max_plies> (a game that long is drawn by adjudication),
// <adjudicate draw_moves="8" draw_score="10" draw_after="40" resign_moves="4"
// resign_score="800"/> (ending games on the engines' scores; off without it).
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "chess/tourney/score_adjudication.h"

namespace kbuChess {

enum TourneyType : int { ALL_PLAY_ALL = 0, GAUNTLET = 1, LEARNING = 2 };

// One active "engine" element. `protocol` is the text as written: "uci",
// "embedded", anything else speaks xboard.
struct PlayerConfig {
  std::string name;
  std::string filename;
  std::string parameters;
  std::string protocol;

  bool embedded() const { return protocol == "embedded"; }
  // An embedded player's soul: its parameters (a preset's name or a soul
  // text), else its own name taken as a preset's name.
  const std::string& soulText() const { return parameters.empty() ? name : parameters; }
  bool uci() const { return protocol == "uci"; }
};

struct TourneyConfig {
  // Bounds of the numbers read; values outside are brought inside with a warning.
  static constexpr std::int64_t MAX_ROUNDS = 100000;
  static constexpr std::int64_t MAX_THREADS = 128;
  static constexpr std::int64_t MIN_GAME_MS = 100;
  static constexpr std::int64_t MAX_GAME_MS = 86400000;  // a day
  static constexpr std::int64_t MAX_INCREMENT_MS = 3600000;
  static constexpr std::int64_t MAX_MOVES_PER_SECOND = 1000000;
  static constexpr std::int64_t MAX_OPENING_PLIES = 40;

  bool loaded = false;  // the file held a "tourney" element
  std::string name;
  int type = ALL_PLAY_ALL;
  bool roundsFlag = false;  // the "rounds" text is exactly "true"
  int rounds = 1;
  std::string logFolder;
  std::string logPath;  // folder + "/" + fileNamePart(name) + ".log", empty without a folder
  int threads = 1;      // 0 is kept as read; the run plays one game at a time then
  // Moves per time period written into the time-control tags; 0 without a "clock" element.
  int movesPerSecond = 0;
  int gameMs = 60000;
  int incrementMs = 0;
  // Openings: each pair of games (a pairing with both colours in one round)
  // plays the same line of openingPlies plies, drawn from this file (a book
  // ".sbk", a PGN suite whose games are cut at openingPlies, or an EPD suite
  // ".epd" whose positions the games start from), or random
  // legal moves when the name is empty; 0 plies (the default without a
  // file): the start position.
  std::string openingBook;
  int openingPlies = 0;
  std::vector<PlayerConfig> players;  // active engines in file order
  std::vector<std::pair<std::string, std::string>> pgnHeaders;

  // --- Openings order, seed and the sequential test.
  static constexpr std::int64_t MAX_SUITE_PLIES = 1000;
  bool openingPliesGiven = false;  // a PGN suite without opening_plies plays its whole lines
  int openingOrder = 0;            // 0 sequential, 1 random (suites; books and random lines are drawn)
  std::int64_t openingStart = 0;   // the suite line of the first pair
  std::uint64_t seed = 0;          // 0: none given, the run draws one and reports it
  struct Sprt {
    bool enabled = false;
    double elo0 = 0, elo1 = 5, alpha = 0.05, beta = 0.05;
  } sprt;
  // A slice of the event: only the game pairs whose number over the whole
  // run is shardIndex modulo shardCount are played.
  int shardIndex = 0;
  int shardCount = 1;
  std::string shardProblem;  // a shard that cannot be played: the event does not start
  // How games are run.
  static constexpr std::int64_t MAX_COMMAND_PAUSE_MS = 1000;
  static constexpr std::int64_t MAX_PLIES = 100000;
  static constexpr std::int64_t MAX_ADJUDICATION_MOVES = 1000;
  static constexpr std::int64_t MAX_ADJUDICATION_SCORE = 100000;
  int commandPauseMs = 100;
  int maxPlies = 0;  // 0: no limit
  AdjudicationRules adjudication;

  // How many games may run at once.
  int gamesAtOnce() const { return threads < 1 ? 1 : threads; }
};

// Reads the XML text. Problems are "# ..." lines appended to `messages`: not
// XML or no "tourney" element (then no players), numbers out of bounds,
// skipped header tags, players without a name or a program file.
TourneyConfig readTourneyText(std::string_view xml, std::vector<std::string>& messages);
// Reads a file; a file that cannot be read gives "# error N: text".
TourneyConfig readTourneyFile(const std::string& path, std::vector<std::string>& messages);

// Whether a header tag from the file is used: a name PGN can carry (a letter,
// then letters, digits and "_"), not one of the tags the games write
// themselves (White, Black, Round, Result, Reason, Forfeit_ms, Kobu...), and a
// value without the word "Kobu", which marks the program's own tags. An empty
// string means yes, otherwise the reason why not.
std::string headerTagProblem(std::string_view name, std::string_view value);

// Reads a slice "K of N" (K from 0 to N-1, N from 1 to MAX_SHARDS); false
// with the reason in `problem` otherwise.
inline constexpr int MAX_SHARDS = 1000000;
bool readShard(std::string_view index, std::string_view count, int& shardIndex, int& shardCount, std::string& problem);

// The event's name as part of a file name: "/", "\\" and control characters
// become "_"; an empty name gives "tourney".
std::string fileNamePart(std::string_view name);
// folder + "/" + file, or file alone when the folder is empty.
std::string joinPath(std::string_view folder, std::string_view file);

}  // namespace kbuChess
