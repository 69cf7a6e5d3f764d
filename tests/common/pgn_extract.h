#pragma once
// Debian's pgn-extract, an independent PGN reader, as a reference for the
// games our reader reads and our writer writes. tests/run.sh installs it.
#include <cctype>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "tests/common/test_files.h"

namespace testFiles {

inline const std::string PGN_EXTRACT = "/usr/games/pgn-extract";

struct PgnExtractRun {
  int status = -1;
  std::vector<std::string> games;  // per game its moves in coordinate form: "e2e4 e7e5 e7e8q"
  std::string errors;              // what it said on standard error
};

inline PgnExtractRun runPgnExtract(const std::string& pgn, const TempFolder& folder) {
  const std::string moves = folder.file("pgn-extract.txt"), errors = folder.file("pgn-extract.err");
  PgnExtractRun run;
  run.status = std::system(
      (PGN_EXTRACT + " -s -Wuci --notags --noresults -w100000 -o " + moves + " " + pgn + " 2> " + errors).c_str());
  run.errors = readText(errors);
  std::istringstream lines(readText(moves));
  for (std::string line; std::getline(lines, line);) {
    while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.pop_back();
    for (char& c : line) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));  // e7e8Q
    if (!line.empty()) run.games.push_back(line);
  }
  return run;
}

}  // namespace testFiles
