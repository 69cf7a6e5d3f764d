#pragma once
// Debian's pgn-extract, an independent PGN reader, as a reference for the
// games our reader reads and our writer writes. tests/run.sh installs it; a
// missing one fails the test.
#include <sys/wait.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <sstream>
#include <string>
#include <vector>

#include "tests/common/test_files.h"

namespace testFiles {

struct PgnExtractRun {
  int status = -1;                 // the exit status, -1 when it did not run or end
  std::string said;                // standard output and error together
  std::vector<std::string> games;  // with gameMoves: per game its moves in coordinate form, "e2e4 e7e5 e7e8q"
};

// Runs pgn-extract with the arguments (words separated by blanks, no quotes).
inline PgnExtractRun pgnExtract(const std::string& arguments) {
  const char* const program = "/usr/games/pgn-extract";
  if (::access(program, X_OK) != 0) return {-1, "pgn-extract is missing: apt-get install pgn-extract", {}};
  FILE* const pipe = ::popen((program + (" " + arguments) + " 2>&1").c_str(), "r");
  if (!pipe) return {-1, "pgn-extract did not start", {}};
  PgnExtractRun run;
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) run.said.append(buffer, n);
  const int status = ::pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

// The games of a PGN file as pgn-extract reads them, one line of moves each;
// `moves` is a scratch file for its output.
inline PgnExtractRun gameMoves(const std::string& pgn, const std::string& moves) {
  PgnExtractRun run = pgnExtract("-s -Wuci --notags --noresults -w100000 -o " + moves + " " + pgn);
  std::istringstream lines(readText(moves));
  for (std::string line; std::getline(lines, line);) {
    while (!line.empty() && (line.back() == ' ' || line.back() == '\r')) line.pop_back();
    for (char& c : line) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));  // e7e8Q
    if (!line.empty()) run.games.push_back(line);
  }
  return run;
}

}  // namespace testFiles
