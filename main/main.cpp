// Program entry: options from the command line, one driver object on a
// thread of its own, and the farewell lines when it is done. "--help" and
// "--version" answer and leave before anything starts.
#include <algorithm>
#include <cstdio>
#include <string>

#include "base/options.h"
#include "base/random.h"
#include "chess/board/tables.h"
#include "chess/driver/talvena.h"

namespace {

const char* const USAGE =
    "Usage: talvena [name=value ...]\n"
    "A chess engine for xboard (protocol 2) and UCI, and a console workbench: perft,\n"
    "opening books from PGN, EPD tests, tournaments. Commands are read from standard\n"
    "input.\n"
    "\n"
    "Options:\n"
    "  memory=MIB           transposition table size in MiB (0 to 65536; default none)\n"
    "  -soul=SOUL           evaluation weights: TalvenaOld, Simple2, Simple5 (default),\n"
    "                       BattleField, Mass161, Manticore617, NAME=v1 ... v21, or a file\n"
    "  -load=SOUL           load a soul before the first command, as \\loadsoul does\n"
    "  -log=FILE            append every received command to FILE\n"
    "  book=FILE.sbk        opening book to load (default talvena.sbk when present)\n"
    "  -use=uci             speak UCI from the start (else the first command \"uci\" does)\n"
    "  -use=tourney -ini=FILE.xml\n"
    "                       play the tournament described in FILE.xml, then leave\n"
    "  -resume              with -use=tourney: continue the event's latest run\n"
    "  -shard=K/N           with -use=tourney: play slice K (0 to N-1) of the game pairs\n"
    "  -use=merge FILES     print the figures of results files of one event together\n"
    "  -use=learn FILE -generation=G [-shard=K/N] [-threads=T]\n"
    "                       play slice K of generation G of the soul file FILE\n"
    "  -use=learn FILE -breed [-souls=E -ms=M -moves=X -seed=S]\n"
    "                       rank and breed the generation played in slices (the first\n"
    "                       time: make the first generation ready to play)\n"
    "  -random              play a random root move after a two-ply search\n"
    "  -timed               with -random: search without the two-ply limit\n"
    "  -proportional[=P]    with -random: take moves in score order, each with P%\n"
    "                       chance (default 60)\n"
    "  -h, --help           print this text and leave\n"
    "  --version            print the name and version and leave\n"
    "\n"
    "At the prompt: xboard commands (new, go, usermove e2e4, perft 5, quit) and the\n"
    "backslash commands (\\ for the board, \\loadbook, \\buildbooks, ...).\n";

// Options given without a value that the program knows.
bool knownFlag(const std::string& name) {
  static const char* const flags[] = {"-random", "-timed", "-proportional", "-resume", "-breed"};
  return std::any_of(std::begin(flags), std::end(flags), [&](const char* flag) { return name == flag; });
}

}  // namespace

int main(int argc, char** argv) {
  const kobubase::clsOptions options(argc, argv);
  for (const std::string& name : options.bareNames()) {
    if (name == "--help" || name == "-h") {
      std::fputs(USAGE, stdout);
      return 0;
    }
    if (name == "--version") {
      std::printf("%s %s\n", kbuChess::clsTalvena::NAME, kbuChess::clsTalvena::VERSION);
      return 0;
    }
  }
  // The files of a merge or a learning run are given without a name.
  const bool merging = options.get("-use") == "merge" || options.get("-use") == "learn";
  for (const std::string& name : options.bareNames()) {
    if (!knownFlag(name) && !(merging && name.rfind('-', 0) != 0))
      std::printf("# ignoring argument %s: options are name=value, see --help\n", name.c_str());
  }
  std::fflush(stdout);
  kobubase::seedRandom();
  kbuChess::initTables();
  int status = 0;
  {
    kbuChess::clsTalvena driver(options);
    if (driver.start()) driver.wait();
    driver.print("# stop");
    if (!options.get("-use").empty()) status = driver.exitStatus();
  }  // the driver's farewell, "# bye bye", comes from its destructor
  return status;
}
