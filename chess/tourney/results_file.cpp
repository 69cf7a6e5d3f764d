#include "chess/tourney/results_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <mutex>
#include <sstream>
#include <string_view>

#include "base/file_io.h"

namespace kbuChess {

namespace {

std::string clean(std::string text) {
  for (char& c : text) {
    if (c == '\t' || c == '\n' || c == '\r') c = ' ';
  }
  return text;
}

std::vector<std::string> splitTabs(const std::string& line) {
  std::vector<std::string> fields;
  std::size_t start = 0;
  for (;;) {
    const std::size_t tab = line.find('\t', start);
    fields.push_back(line.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
    if (tab == std::string::npos) return fields;
    start = tab + 1;
  }
}

// A whole field of decimal digits within [0, high], else false.
bool readCount(const std::string& text, std::int64_t high, std::int64_t& value) {
  if (text.empty() || text.size() > 18) return false;
  value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') return false;
    value = value * 10 + (c - '0');
  }
  return value <= high;
}

bool validResult(const std::string& result) {
  return result == "1-0" || result == "0-1" || result == "1/2-1/2" || result == "*";
}

// The row of one line, or the reason it is not one.
bool parseLine(const std::string& line, std::size_t fieldCount, GameResultRow& row, std::string& problem) {
  const std::vector<std::string> f = splitTabs(line);
  if (f.size() != fieldCount) {
    problem = "expected " + std::to_string(fieldCount) + " tab-separated fields, found " + std::to_string(f.size());
    return false;
  }
  constexpr std::int64_t IntMax = std::numeric_limits<int>::max();
  std::int64_t round, game, plies, ms;
  if (!readCount(f[0], IntMax, round) || !readCount(f[1], IntMax, game) || !readCount(f[6], IntMax, plies) ||
      !readCount(f[7], std::numeric_limits<std::int64_t>::max() / 10, ms)) {
    problem = "round, game, plies and ms must be whole numbers";
    return false;
  }
  if (!validResult(f[4])) {
    problem = "unknown result '" + f[4] + "'";
    return false;
  }
  row = GameResultRow{static_cast<int>(round),
                      static_cast<int>(game),
                      f[2],
                      f[3],
                      f[4],
                      f[5],
                      static_cast<int>(plies),
                      ms,
                      fieldCount > 8 ? f[8] : std::string()};
  return true;
}

std::mutex registryLock;
std::vector<std::string>& registry() {
  static std::vector<std::string> files;
  return files;
}

}  // namespace

std::string resultsLine(const GameResultRow& row) {
  return std::to_string(row.round) + '\t' + std::to_string(row.game) + '\t' + clean(row.white) + '\t' +
         clean(row.black) + '\t' + clean(row.result) + '\t' + clean(row.reason) + '\t' + std::to_string(row.plies) +
         '\t' + std::to_string(row.ms) + '\t' + clean(row.opening);
}

bool appendResultsLine(const std::string& path, const GameResultRow& row) {
  std::string error;
  std::FILE* file = kobubase::openForAppending(path, error);
  if (!file) return false;
  std::fseek(file, 0, SEEK_END);
  const bool fresh = std::ftell(file) == 0;
  std::string text = fresh ? std::string(RESULTS_HEADER) + "\n" : std::string();
  text += resultsLine(row) + "\n";
  const bool written = std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0;
  return std::fclose(file) == 0 && written;
}

bool readResultsFile(const std::string& path, std::vector<GameResultRow>& rows, std::vector<std::string>& problems) {
  std::string text, error;
  if (!kobubase::readWholeFile(path, text, error)) {
    problems.push_back(path + ": " + error.substr(2));  // the caller adds its own prefix
    return false;
  }
  std::istringstream in(text);
  std::string line;
  const bool any = static_cast<bool>(std::getline(in, line));
  if (!line.empty() && line.back() == '\r') line.pop_back();
  const std::string_view header(RESULTS_HEADER);
  const std::string_view older = header.substr(0, header.rfind('\t'));  // before the opening field
  if (!any || (line != header && line != older)) {
    problems.push_back("line 1: not a results file (the header line is missing)");
    return false;
  }
  const std::size_t fields = line == header ? 9 : 8;
  for (int number = 2; std::getline(in, line); ++number) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty()) continue;
    GameResultRow row;
    std::string problem = "cut short (the line has no end)";
    if (!in.eof() && parseLine(line, fields, row, problem)) {
      rows.push_back(std::move(row));
    } else {
      problems.push_back("line " + std::to_string(number) + ": " + problem);
    }
  }
  return true;
}

bool rewriteResultsFile(const std::string& path, const std::vector<GameResultRow>& rows) {
  std::string text = std::string(RESULTS_HEADER) + "\n";
  for (const GameResultRow& row : rows) text += resultsLine(row) + "\n";
  std::string error;
  return kobubase::writeFileAtomically(path, text, error);
}

void registerResultsFile(const std::string& path) {
  std::lock_guard<std::mutex> guard(registryLock);
  for (const std::string& known : registry()) {
    if (known == path) return;
  }
  registry().push_back(path);
}

std::vector<std::string> resultsFilesOfThisProcess() {
  std::lock_guard<std::mutex> guard(registryLock);
  return registry();
}

}  // namespace kbuChess
