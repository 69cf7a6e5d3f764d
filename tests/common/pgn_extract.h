#pragma once
// Debian's pgn-extract, an independent PGN reader, for tests: its exit status
// and every line it said. tests/run.sh installs it; a missing one fails.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace testFiles {

struct PgnExtractRun {
  int status = -1;   // the exit status, -1 when it did not run or end
  std::string said;  // standard output and error together
};

// Runs pgn-extract with the arguments (words separated by blanks, no quotes).
inline PgnExtractRun pgnExtract(const std::string& arguments) {
  const char* const program = "/usr/games/pgn-extract";
  if (::access(program, X_OK) != 0) return {-1, "pgn-extract is missing: apt-get install pgn-extract"};
  FILE* const pipe = ::popen((program + (" " + arguments) + " 2>&1").c_str(), "r");
  if (!pipe) return {-1, "pgn-extract did not start"};
  PgnExtractRun run;
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) run.said.append(buffer, n);
  const int status = ::pclose(pipe);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

}  // namespace testFiles
