#include "chess/tourney/tourney_config.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <pugixml.hpp>

#include "base/file_io.h"
#include "base/text.h"

namespace kbuChess {
namespace {

using Messages = std::vector<std::string>;

// A number from the file: empty text takes the default, others are held in [low, high].
int readNumber(std::string_view text, std::int64_t fallback, std::int64_t low, std::int64_t high, std::string_view what,
               Messages& messages) {
  if (text.empty()) return static_cast<int>(fallback);
  const std::int64_t value = kobubase::readInteger(text);
  const std::int64_t held = kobubase::clampTo(value, low, high);
  if (held != value) {
    messages.push_back("# tourney file: " + std::string(what) + " " + std::to_string(value) + " is out of range, " +
                       std::to_string(held) + " used");
  }
  return static_cast<int>(held);
}

int typeOf(std::string_view text) {
  if (text == "gauntlet") return GAUNTLET;
  if (text == "learning") return LEARNING;
  return ALL_PLAY_ALL;
}

// --- Openings order, seed and the sequential test.

void readOpeningOrder(const pugi::xml_node& options, TourneyConfig& config, Messages& messages) {
  config.openingPliesGiven = !std::string_view(options.child("opening_plies").text().get()).empty();
  const std::string_view order = options.child("opening_order").text().get();
  config.openingOrder = order == "random" ? 1 : 0;
  if (!order.empty() && order != "random" && order != "sequential")
    messages.push_back("# tourney file: opening_order is sequential or random, not '" + std::string(order) +
                       "'; sequential used");
  config.openingStart =
      readNumber(options.child("opening_start").text().get(), 0, 0, 1000000000, "opening_start", messages);
  const std::string_view seed = options.child("seed").text().get();
  config.seed = seed.empty() ? 0 : static_cast<std::uint64_t>(std::max<std::int64_t>(kobubase::readInteger(seed), 0));
}

// A bad sprt element turns the test off with one line saying why.
void readSprt(const pugi::xml_node& sprt, TourneyConfig& config, Messages& messages) {
  if (!sprt) return;
  TourneyConfig::Sprt test;
  const auto number = [&](const char* name, double fallback) {
    const char* text = sprt.attribute(name).value();
    return *text ? std::strtod(text, nullptr) : fallback;
  };
  test.elo0 = number("elo0", test.elo0);
  test.elo1 = number("elo1", test.elo1);
  test.alpha = number("alpha", test.alpha);
  test.beta = number("beta", test.beta);
  const bool inside = [](double p) { return p > 0 && p < 0.5; }(test.alpha) && test.beta > 0 && test.beta < 0.5;
  if (!inside || !(test.elo0 < test.elo1) || std::abs(test.elo0) > 1000 || std::abs(test.elo1) > 1000) {
    messages.push_back(
        "# tourney file: sprt needs elo0 < elo1 (within +-1000) and alpha, beta inside (0, 0.5); "
        "the event runs without the test");
    return;
  }
  test.enabled = true;
  config.sprt = test;
}

void readOptions(const pugi::xml_node& options, TourneyConfig& config, Messages& messages) {
  const std::string_view rounds = options.child("rounds").text().get();
  config.roundsFlag = rounds == "true";
  config.rounds = readNumber(rounds, 1, 0, TourneyConfig::MAX_ROUNDS, "rounds", messages);
  config.logFolder = options.child("logfolder").text().get();
  config.openingBook = options.child("openings").text().get();
  config.openingPlies = readNumber(options.child("opening_plies").text().get(), config.openingBook.empty() ? 0 : 8, 0,
                                   TourneyConfig::MAX_OPENING_PLIES, "opening_plies", messages);
  readOpeningOrder(options, config, messages);
  readSprt(options.child("sprt"), config, messages);
  const pugi::xml_node shard = options.child("shard");
  if (shard && !readShard(shard.attribute("index").value(), shard.attribute("count").value(), config.shardIndex,
                          config.shardCount, config.shardProblem))
    messages.push_back("# tourney file: " + config.shardProblem);
}

void readClock(const pugi::xml_node& clock, TourneyConfig& config, Messages& messages) {
  if (!clock) return;  // keep the defaults of a file without a clock
  config.movesPerSecond = readNumber(clock.attribute("moves_per_second").value(), 300000, 0,
                                     TourneyConfig::MAX_MOVES_PER_SECOND, "moves_per_second", messages);
  config.gameMs = readNumber(clock.attribute("game_ms").value(), 300000, TourneyConfig::MIN_GAME_MS,
                             TourneyConfig::MAX_GAME_MS, "game_ms", messages);
  config.incrementMs = readNumber(clock.attribute("increment_ms").value(), 0, 0, TourneyConfig::MAX_INCREMENT_MS,
                                  "increment_ms", messages);
}

bool nameTaken(const TourneyConfig& config, const std::string& name) {
  for (const PlayerConfig& player : config.players)
    if (player.name == name) return true;
  return false;
}

// Gives a player without a name the name of its program file (or "engine N"),
// and a player whose name is taken a number after it.
void nameThePlayer(PlayerConfig& player, TourneyConfig& config, Messages& messages) {
  const std::string number = std::to_string(config.players.size() + 1);
  if (player.name.empty()) {
    const std::size_t slash = player.filename.find_last_of('/');
    player.name = player.filename.substr(slash == std::string::npos ? 0 : slash + 1);
    if (player.name.empty()) player.name = "engine " + number;
    messages.push_back("# tourney file: engine " + number + " has no name, '" + player.name + "' used");
  }
  if (nameTaken(config, player.name)) {
    std::string renamed;
    for (int n = 2; renamed.empty() || nameTaken(config, renamed); ++n) renamed = player.name + " " + std::to_string(n);
    messages.push_back("# tourney file: another engine is named '" + player.name + "', this one is '" + renamed + "'");
    player.name = renamed;
  }
  if (!player.embedded() && player.filename.empty())
    messages.push_back("# tourney file: engine '" + player.name + "' has no filename");
}

void readEngines(const pugi::xml_node& engines, TourneyConfig& config, Messages& messages) {
  for (pugi::xml_node engine = engines.child("engine"); engine; engine = engine.next_sibling("engine")) {
    if (std::string_view(engine.attribute("active").value()) != "true") continue;
    PlayerConfig player{engine.attribute("name").value(), engine.attribute("filename").value(),
                        engine.attribute("parameters").value(), engine.attribute("protocol").value()};
    nameThePlayer(player, config, messages);
    config.players.push_back(std::move(player));
  }
}

void readHeaders(const pugi::xml_node& header, TourneyConfig& config, Messages& messages) {
  for (pugi::xml_node tag = header.first_child(); tag; tag = tag.next_sibling()) {
    if (tag.type() != pugi::node_element) continue;
    const std::string_view name = tag.name(), value = tag.text().get();
    const std::string problem = headerTagProblem(name, value);
    if (!problem.empty()) {
      messages.push_back("# tourney file: pgn header tag " + std::string(name) + " skipped: " + problem);
      continue;
    }
    config.pgnHeaders.emplace_back(name, value);
  }
}

// How games are run: command pause, length cap, adjudication by score.
void readGameRules(const pugi::xml_node& options, TourneyConfig& config, Messages& messages) {
  config.commandPauseMs = readNumber(options.child("command_pause_ms").text().get(), 100, 0,
                                     TourneyConfig::MAX_COMMAND_PAUSE_MS, "command_pause_ms", messages);
  config.maxPlies =
      readNumber(options.child("max_plies").text().get(), 0, 0, TourneyConfig::MAX_PLIES, "max_plies", messages);
  const pugi::xml_node adjudicate = options.child("adjudicate");
  if (!adjudicate) return;
  AdjudicationRules& rules = config.adjudication;
  rules.enabled = true;
  const auto read = [&](const char* name, int& value) {
    const bool moves = std::string_view(name).find("score") == std::string_view::npos;
    value = readNumber(adjudicate.attribute(name).value(), value, moves ? 1 : 0,
                       moves ? TourneyConfig::MAX_ADJUDICATION_MOVES : TourneyConfig::MAX_ADJUDICATION_SCORE,
                       std::string("adjudicate ") + name, messages);
  };
  read("draw_moves", rules.drawMoves);
  read("draw_score", rules.drawScore);
  read("draw_after", rules.drawAfter);
  read("resign_moves", rules.resignMoves);
  read("resign_score", rules.resignScore);
}

}  // namespace

std::string headerTagProblem(std::string_view name, std::string_view value) {
  const auto letter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  if (name.empty() || !letter(name[0])) return "a tag name begins with a letter";
  for (char c : name)
    if (!letter(c) && !(c >= '0' && c <= '9') && c != '_') return "a tag name holds letters, digits and _ only";
  for (std::string_view own : {"White", "Black", "Round", "Result", "Reason", "Forfeit_ms"})
    if (name == own) return "the games write this tag";
  if (name.substr(0, 4) == "Kobu") return "the program writes the Kobu tags";
  for (int i = 0; !kobubase::wordAt(value, i).empty(); ++i)
    if (kobubase::wordAt(value, i) == "Kobu") return "the word Kobu marks the program's own tags";
  return std::string();
}

bool readShard(std::string_view index, std::string_view count, int& shardIndex, int& shardCount, std::string& problem) {
  const auto digits = [](std::string_view text) { return text.size() < 10 && kobubase::allDigits(text); };
  const std::string given = std::string(index) + "/" + std::string(count);
  if (!digits(index) || !digits(count)) {
    problem = "shard " + given + " is not K/N with whole numbers";
    return false;
  }
  const std::int64_t k = kobubase::readInteger(index), n = kobubase::readInteger(count);
  if (n < 1 || n > MAX_SHARDS || k >= n) {
    problem = "shard " + given + " needs N from 1 to " + std::to_string(MAX_SHARDS) + " and K from 0 to N-1";
    return false;
  }
  shardIndex = static_cast<int>(k);
  shardCount = static_cast<int>(n);
  return true;
}

std::string fileNamePart(std::string_view name) {
  if (name.empty()) return "tourney";
  std::string part(name);
  for (char& c : part)
    if (c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20) c = '_';
  return part;
}

std::string joinPath(std::string_view folder, std::string_view file) {
  if (folder.empty()) return std::string(file);
  std::string path(folder);
  if (path.back() != '/') path += '/';
  return path + std::string(file);
}

TourneyConfig readTourneyText(std::string_view xml, std::vector<std::string>& messages) {
  TourneyConfig config;
  pugi::xml_document document;
  const pugi::xml_parse_result parsed = document.load_buffer(xml.data(), xml.size());
  if (!parsed) {
    messages.push_back("# tourney file is not XML: " + std::string(parsed.description()) + " at byte " +
                       std::to_string(parsed.offset));
    return config;
  }
  const pugi::xml_node root = document.child("tourney");
  if (!root) {
    messages.push_back("# tourney file holds no tourney element");
    return config;
  }
  config.loaded = true;
  config.name = root.attribute("name").value();
  config.type = typeOf(root.attribute("type").value());
  readOptions(root.child("options"), config, messages);
  readClock(root.child("clock"), config, messages);
  config.threads = readNumber(root.child("options").child("threads").text().get(), 1, 0, TourneyConfig::MAX_THREADS,
                              "threads", messages);
  if (!config.logFolder.empty()) config.logPath = joinPath(config.logFolder, fileNamePart(config.name) + ".log");
  readGameRules(root.child("options"), config, messages);
  readEngines(root.child("engines"), config, messages);
  readHeaders(root.first_element_by_path("pgn/header"), config, messages);
  return config;
}

TourneyConfig readTourneyFile(const std::string& path, std::vector<std::string>& messages) {
  std::string text, error;
  if (!kobubase::readWholeFile(path, text, error)) {
    messages.push_back(error);
    return TourneyConfig{};
  }
  return readTourneyText(text, messages);
}

}  // namespace kbuChess
