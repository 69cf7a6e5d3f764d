#include "chess/tourney/pgn_output.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "base/file_io.h"
#include "base/text.h"
#include "base/version.h"

namespace kbuChess {
namespace {

// A quote is doubled (as the games were always written) and a backslash
// escaped as PGN escapes it, so no value can end its own string.
std::string tagValue(std::string_view value) {
  std::string text;
  for (char c : value) {
    if (c == '"') text += '"';
    if (c == '\\') text += '\\';
    text += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
  }
  return text;
}

std::string termination(std::uint32_t code) {
  const std::string text = resultText(code);
  return text == "1-0" || text == "0-1" || text == "1/2-1/2" ? text : "*";
}

bool fromHeaders(const TourneyConfig& config, std::string_view key) {
  for (const auto& header : config.pgnHeaders)
    if (header.first == key) return true;
  return false;
}

// Appends text to a file, or replaces the file whole; "" or the error line.
std::string writeFile(const std::string& path, bool append, const std::string& text) {
  std::string opening;
  if (!append) return kobubase::writeFileAtomically(path, text, opening) ? std::string() : opening;
  std::FILE* file = kobubase::openForAppending(path, opening);
  if (file == nullptr) return opening;
  errno = 0;
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size();
  const int error = errno;
  const bool closed = std::fclose(file) == 0;
  if (!written || !closed) return kobubase::errorLine(error ? error : EIO);
  return std::string();
}

}  // namespace

std::string softwareTag() {
  return std::string(kobubase::PROGRAM_NAME) + " " + kobubase::PROGRAM_VERSION + " - " + PROGRAM_ADDRESS;
}

std::string timeControlTag(int movesPerSecond, int gameMs, int incrementMs) {
  std::string text = std::to_string(gameMs / 1000);
  if (movesPerSecond != 0) text = std::to_string(movesPerSecond) + "/" + text;
  if (incrementMs != 0) {
    text += '+';
    text += std::to_string(incrementMs);
  }
  return text;
}

std::string pgnDate(std::time_t when) {
  std::tm local{};
  localtime_r(&when, &local);
  char text[32];
  std::snprintf(text, sizeof text, "%04d.%02d.%02d", local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
  return text;
}

void setRoundTags(clsGame& game, const TourneyConfig& config, int runCounter, int round, int gameNumber,
                  std::string_view white, std::string_view black) {
  const std::string r = std::to_string(round);
  game.clearTags();
  game.setTag("Event", config.name);
  game.setTag("Site", "");
  game.setTag("Date", "");
  game.setTag("Round", r);
  game.setTag("KobuRound", std::to_string(runCounter) + ":" + r + ":" + std::to_string(gameNumber));
  game.setTag("KobuSoftware", softwareTag());
  game.setTag("KobuTimeControl", std::to_string(config.movesPerSecond) + ":" + std::to_string(config.gameMs) + ":" +
                                     std::to_string(config.incrementMs));
  game.setTag("TimeControl", timeControlTag(config.movesPerSecond, config.gameMs, config.incrementMs));
  game.setTag("White", white);
  game.setTag("Black", black);
  game.setTag("Result", "*");
  for (const auto& [key, value] : config.pgnHeaders) game.setTag(key, value);
}

void setPlayDate(clsGame& game, const TourneyConfig& config, std::time_t when) {
  if (!fromHeaders(config, "Date")) game.setTag("Date", pgnDate(when));
}

std::string pgnText(const clsGame& game) {
  std::string text;
  // A game set up from a position says so right after the seven-tag roster.
  const std::string setUp =
      game.standardStart() ? std::string() : "[SetUp \"1\"]\r\n[FEN \"" + tagValue(game.startFen()) + "\"]\r\n";
  for (const auto& [key, value] : game.tags()) {
    text += "[" + key + " \"" + tagValue(value) + "\"]\r\n";
    if (key == "Result") text += setUp;
  }
  if (!game.hasTag("Result")) text += setUp;
  text += "\r\n";
  text += game.moveText();
  text += termination(game.result());
  text += "\r\n\r\n";
  return text;
}

std::string gameFileBase(const TourneyConfig& config, int runCounter, int gameNumber) {
  return joinPath(config.logFolder,
                  fileNamePart(config.name) + "-" + std::to_string(runCounter) + "-" + std::to_string(gameNumber));
}

std::vector<std::string> writeGameFiles(const clsGame& game, const std::vector<std::string>& logLines,
                                        const std::string& base) {
  std::vector<std::string> errors;
  const std::filesystem::path folder = std::filesystem::path(base).parent_path();
  std::error_code ignored;
  if (!folder.empty()) std::filesystem::create_directories(folder, ignored);
  std::string log;
  for (std::size_t i = 0; i < logLines.size(); ++i) log += (i ? "\r\n" : "") + logLines[i];
  for (const std::string& error : {writeFile(base + ".pgn", true, pgnText(game)), writeFile(base + ".log", false, log)})
    if (!error.empty()) errors.push_back(error);
  return errors;
}

}  // namespace kbuChess
