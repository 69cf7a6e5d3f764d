#include "chess/tourney/merge.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>

#include "base/text.h"
#include "chess/tourney/match_stats.h"
#include "chess/tourney/results_file.h"
#include "chess/tourney/standings.h"
#include "chess/tourney/tourney_config.h"
#include "chess/tourney/tourney_resume.h"

namespace kbuChess {
namespace {

std::string valueOf(const std::vector<std::string>& lines, const std::string& key) {
  for (const std::string& line : lines) {
    if (line.rfind(key + "\t", 0) == 0) return line.substr(key.size() + 1);
  }
  return std::string();
}

// Players in the order of the run: game 1 of the first round is the first
// player against the second, and the others follow as they first appear.
std::vector<std::string> playersOf(std::vector<GameResultRow> rows) {
  std::sort(rows.begin(), rows.end(), [](const GameResultRow& a, const GameResultRow& b) {
    return a.round != b.round ? a.round < b.round : a.game < b.game;
  });
  std::vector<std::string> names;
  for (const GameResultRow& row : rows) {
    for (const std::string* name : {&row.white, &row.black}) {
      if (std::find(names.begin(), names.end(), *name) == names.end()) names.push_back(*name);
    }
  }
  return names;
}

void printFigures(const std::vector<GameResultRow>& rows, const std::vector<std::string>& settings,
                  kobubase::clsOutBuffer& out) {
  const std::vector<std::string> names = playersOf(rows);
  const std::string typeText = valueOf(settings, "type");
  const int type = typeText.empty() ? ALL_PLAY_ALL : std::atoi(typeText.c_str());
  for (const std::string& line : standingsTable(standings(countsOfRows(rows, names), type), type)) out.print(line);
  if (names.size() < 2 || (type == ALL_PLAY_ALL && names.size() > 2)) return;
  for (std::size_t i = 1; i < names.size(); ++i)
    out.print(matchFiguresLine(names[0], names[i], matchFigures(rows, names[0], names[i])));
  SprtSettings sprt;
  std::istringstream test(valueOf(settings, "sprt"));
  if (!(test >> sprt.elo0 >> sprt.elo1 >> sprt.alpha >> sprt.beta)) return;
  const double llr = sprtLlr(matchFigures(rows, names[0], names[1]).pairs, sprt.elo0, sprt.elo1);
  const int decision = sprtDecision(llr, sprt);
  out.print(sprtLine(names[0], names[1], sprt, llr) + (decision == 0  ? ": undecided"
                                                       : decision > 0 ? ": H1 accepted"
                                                                      : ": H0 accepted"));
}

}  // namespace

std::string eventFileOf(const std::string& resultsPath) {
  constexpr std::string_view TAIL = "-results.tsv";
  std::string base = resultsPath;
  if (base.size() > TAIL.size() && base.ends_with(TAIL)) base.resize(base.size() - TAIL.size());
  // A slice's "-K-of-N" after the run's number.
  const std::size_t of = base.rfind("-of-");
  if (of != std::string::npos) {
    const std::size_t dash = base.rfind('-', of - 1);
    const std::string k = base.substr(dash + 1, of - dash - 1), n = base.substr(of + 4);
    if (dash != std::string::npos && kobubase::allDigits(k) && kobubase::allDigits(n)) base.resize(dash);
  }
  return base + "-event.txt";
}

bool mergeResults(const std::vector<std::string>& files, kobubase::clsOutBuffer& out) {
  if (files.empty()) {
    out.print("# merge FILE-results.tsv ...");
    return false;
  }
  std::vector<std::string> settings;
  std::string settingsFrom;
  std::map<std::pair<int, int>, std::string> seen;  // (round, game) -> the file it came from
  std::vector<GameResultRow> merged;
  for (const std::string& file : files) {
    std::vector<GameResultRow> rows;
    std::vector<std::string> problems;
    const bool read = readResultsFile(file, rows, problems);
    if (!read || !problems.empty()) {
      out.print("# merge: " + file + ": " + (problems.empty() ? "cannot be read" : problems.front()) +
                "; nothing merged");
      return false;
    }
    std::vector<std::string> event;
    readSettingsFile(eventFileOf(file), event);
    if (!event.empty() && settings.empty()) {
      settings = event;
      settingsFrom = file;
    } else if (!event.empty()) {
      const std::string difference = settingsDifference(settings, event);
      if (!difference.empty()) {
        out.print("# merge: " + file + " is of another event than " + settingsFrom + ": " + difference +
                  "; nothing merged");
        return false;
      }
    }
    for (GameResultRow& row : rows) {
      const auto [where, fresh] = seen.emplace(std::make_pair(row.round, row.game), file);
      if (!fresh) {
        out.print("# merge: round " + std::to_string(row.round) + " game " + std::to_string(row.game) + " of " + file +
                  " is also in " + where->second + "; counted once");
        continue;
      }
      merged.push_back(std::move(row));
    }
  }
  out.print("# merge: " + std::to_string(merged.size()) + " games from " + std::to_string(files.size()) + " files");
  printFigures(merged, settings, out);
  return true;
}

bool commandMerge(const std::string& args, kobubase::clsOutBuffer& out) {
  return mergeResults(kobubase::splitArguments(args), out);
}

}  // namespace kbuChess
