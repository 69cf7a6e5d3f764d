// Whole tournaments through the real program: `talvena -use=tourney -ini=F`
// with the scripted fake engine for every fault a real engine will not
// commit, and Debian's fairymax and stockfish for real opponents. The results file, the
// PGN (read by pgn-extract and by our own reader), Ctrl-C and kill -9 are
// checked on what the program leaves behind.
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "base/output.h"
#include "chess/book/pgn_file.h"
#include "tests/e2e/engine_process.h"
#include "tests/tourney/tourney_test_util.h"

namespace {

namespace fs = std::filesystem;
using tourney_test::Lines;
using tourney_test::TempFolder;

const std::string FAIRYMAX = "/usr/games/fairymax";
const std::string PGN_EXTRACT = "/usr/games/pgn-extract";
const std::string STOCKFISH = "/usr/games/stockfish";

std::string engineElement(const std::string& name, const std::string& protocol, const std::string& file,
                          const std::string& parameters) {
  return "<engine active=\"true\" name=\"" + name + "\" protocol=\"" + protocol + "\" filename=\"" + file +
         "\" parameters=\"" + parameters + "\"/>";
}

std::string writeTourney(const TempFolder& folder, const std::string& name, const std::string& clock, int threads,
                         const Lines& engines, const std::string& moreOptions = "") {
  std::ostringstream xml;
  xml << "<tourney name=\"" << name << "\" type=\"gauntlet\"><options><rounds>1</rounds><logfolder>" << folder.path()
      << "</logfolder><threads>" << threads << "</threads>" << moreOptions << "</options>" << clock << "<engines>";
  for (const std::string& engine : engines) xml << engine;
  xml << "</engines></tourney>";
  std::ofstream(folder.file(name + ".xml")) << xml.str();
  return folder.file(name + ".xml");
}

// "white-black" to "result reason" for every line of the results file.
std::map<std::string, std::string> readResults(const std::string& path) {
  std::map<std::string, std::string> results;
  std::ifstream in(path);
  std::string line;
  std::getline(in, line);
  EXPECT_EQ(line, "round\tgame\twhite\tblack\tresult\treason\tplies\tms\topening");
  while (std::getline(in, line)) {
    std::vector<std::string> fields;
    std::stringstream split(line);
    for (std::string field; std::getline(split, field, '\t');) fields.push_back(field);
    if (fields.size() < 6) continue;
    results[fields[2] + "-" + fields[3]] = fields[4] + " " + fields[5];
  }
  return results;
}

bool anyHolds(const Lines& lines, const std::string& text) {
  return std::any_of(lines.begin(), lines.end(),
                     [&](const std::string& l) { return l.find(text) != std::string::npos; });
}

// Runs the tournament to its end and answers what it printed.
Lines runTourney(const std::string& ini, int timeoutMs) {
  EngineProcess talvena(TALVENA_BIN, {"-use=tourney", "-ini=" + ini});
  Lines lines = talvena.readUntil("# bye bye", timeoutMs);
  EXPECT_TRUE(talvena.found()) << (lines.empty() ? "" : lines.back());
  return lines;
}

// Fake engines whose command line holds the marker (they get it as a log file name).
int processesWith(const std::string& marker) {
  int count = 0;
  for (const auto& entry : fs::directory_iterator("/proc")) {
    std::ifstream cmdline(entry.path() / "cmdline");
    std::string text((std::istreambuf_iterator<char>(cmdline)), std::istreambuf_iterator<char>());
    std::replace(text.begin(), text.end(), '\0', ' ');
    if (text.find(marker) != std::string::npos && text.find("fake_engine") != std::string::npos) ++count;
  }
  return count;
}

// Starts two endless games against a silent fake and waits until both have their engines.
std::unique_ptr<EngineProcess> startEndlessGames(const TempFolder& folder, const std::string& marker) {
  const std::string ini = writeTourney(folder, "endless", "<clock game_ms=\"600000\"/>", 2,
                                       {engineElement("Self", "embedded", "", "Simple5"),
                                        engineElement("Slow", "xboard", FAKE_ENGINE, "xboard silent log=" + marker)});
  auto talvena = std::make_unique<EngineProcess>(TALVENA_BIN, Lines{"-use=tourney", "-ini=" + ini});
  bool started = false;  // the progress line comes with the log's time and source first
  for (const std::int64_t until = kobubase::nowMs() + 20000; !started && kobubase::nowMs() < until;) {
    const std::optional<std::string> line = talvena->readLine(1000);
    started = line && line->find("ROUND 1/1") != std::string::npos;
  }
  EXPECT_TRUE(started);
  kobubase::sleepMs(2500);  // both games have their engines
  EXPECT_EQ(processesWith(marker), 2);
  return talvena;
}

TEST(TourneyRun, EveryFaultOfAnEngineEndsItsGameWithTheRightVerdict) {
  const TempFolder folder("faults");
  const std::string fake = FAKE_ENGINE;
  const std::string ini = writeTourney(
      folder, "faults", "<clock game_ms=\"3000\" increment_ms=\"0\"/>", 12,
      {engineElement("Self", "embedded", "", "Simple5"), engineElement("Illegal", "xboard", fake, "xboard illegal"),
       engineElement("Crash", "uci", fake, "uci crash=1"), engineElement("Silent", "xboard", fake, "xboard silent"),
       engineElement("Resign", "xboard", fake, "xboard claim=resign"),
       engineElement("Draw", "xboard", fake, "xboard claim=1/2-1/2"),
       engineElement("San", "xboard", fake, "xboard &quot;claim=move Nf3&quot;")});
  const Lines lines = runTourney(ini, 180000);
  EXPECT_NE(std::find(lines.begin(), lines.end(), "# starting tourney..."), lines.end());
  const std::map<std::string, std::string> expected = {
      {"Self-Illegal", "1-0 illegal move"},
      {"Illegal-Self", "0-1 illegal move"},
      {"Self-Crash", "1-0 engine crashed"},
      {"Crash-Self", "0-1 engine crashed"},
      {"Self-Silent", "1-0 forfeit"},
      {"Silent-Self", "0-1 forfeit"},
      // An xboard "resign" line is no reply: the resigner just loses on time.
      {"Self-Resign", "1-0 forfeit"},
      {"Resign-Self", "0-1 forfeit"},
      {"Self-Draw", "1/2-1/2 "},
      {"Draw-Self", "1/2-1/2 "},
      // A move in SAN is taken as the move it names: as Black, Nf3 is illegal;
      // as White it is played (the fake, which does not play it on its own
      // board, then rejects Black's reply and falls silent).
      {"Self-San", "1-0 illegal move"},
      {"San-Self", "0-1 forfeit"},
  };
  EXPECT_EQ(readResults(folder.file("faults-1-results.tsv")), expected);
  // Self: 2 + 2 + 2 + 2 + (forfeits 2) + draws 1 + 1 + 2 + 2 = 22 of 24 half-points.
  EXPECT_TRUE(anyHolds(lines, "'Self' result 1 score 22") || anyHolds(lines, "'Self' result 2 score 22"));
  const std::string sanGame = tourney_test::readText(folder.file("faults-1-12.pgn"));
  EXPECT_NE(sanGame.find("\r\n1. Nf3 "), std::string::npos) << sanGame;
  EXPECT_TRUE(fs::exists(folder.file("faults-1-3.log")));
}

// A program that does not exist loses at once, naming the path; one that
// floods its output (yes) loses on time without the flood's cost; one that
// asks for time to start (done=0, then done=1 2.5 s later) gets it and plays.
// The missing one's name ends in a backslash: its PGN still reads cleanly.
TEST(TourneyRun, MissingFloodingAndSlowStartingEngines) {
  const TempFolder folder("hostile");
  const std::string ini = writeTourney(folder, "hostile", "<clock game_ms=\"3000\" increment_ms=\"100\"/>", 3,
                                       {engineElement("Self", "embedded", "", "Simple5"),
                                        engineElement("Missing\\", "xboard", "/nonexistent/engine", ""),
                                        engineElement("Flood", "xboard", "/usr/bin/yes", ""),
                                        engineElement("Slow", "xboard", FAKE_ENGINE, "xboard slowstart=2500")},
                                       "<command_pause_ms>0</command_pause_ms>");
  const Lines lines = runTourney(ini, 180000);
  EXPECT_TRUE(anyHolds(lines, "Missing\\: program not found: /nonexistent/engine (No such file or directory)"));
  EXPECT_TRUE(anyHolds(lines, "# output comes faster than it is read: lines dropped"));
  std::map<std::string, std::string> results = readResults(folder.file("hostile-1-results.tsv"));
  for (const char* pair : {"Self-Slow", "Slow-Self"}) {
    EXPECT_EQ(results[pair].find("forfeit"), std::string::npos) << pair << ": " << results[pair];
    EXPECT_EQ(results[pair].find("not ready"), std::string::npos) << pair << ": " << results[pair];
    results.erase(pair);
  }
  const std::map<std::string, std::string> expected = {
      {"Self-Missing\\", "1-0 engine crashed"},
      {"Missing\\-Self", "0-1 engine crashed"},
      {"Self-Flood", "1-0 forfeit"},
      {"Flood-Self", "0-1 forfeit"},
  };
  EXPECT_EQ(results, expected);
  for (int game : {1, 2}) {
    const std::string pgn = folder.file("hostile-1-" + std::to_string(game) + ".pgn");
    const std::string report = folder.file("report.txt");
    EXPECT_EQ(std::system((PGN_EXTRACT + " -s -r " + pgn + " > " + report + " 2>&1").c_str()), 0);
    EXPECT_EQ(tourney_test::readText(report), "") << pgn;
  }
}

// Scores reach the adjudication from UCI info lines and the embedded search:
// a game between them is drawn on its fourth ply; the xboard fake prints no
// scores and is never adjudicated (its games end otherwise, at the latest on
// the length cap).
TEST(TourneyRun, ScoresAdjudicateOnlyEnginesThatPrintThem) {
  const TempFolder folder("adjudicate");
  const std::string ini =
      writeTourney(folder, "adjudicate", "<clock game_ms=\"5000\" increment_ms=\"100\"/>", 2,
                   {engineElement("Self", "embedded", "", "Simple5"), engineElement("Uci", "uci", FAKE_ENGINE, "uci"),
                    engineElement("Mute", "xboard", FAKE_ENGINE, "xboard")},
                   "<command_pause_ms>0</command_pause_ms><max_plies>30</max_plies>"
                   "<adjudicate draw_moves=\"2\" draw_score=\"100000\" draw_after=\"2\"/>");
  runTourney(ini, 180000);
  const std::map<std::string, std::string> results = readResults(folder.file("adjudicate-1-results.tsv"));
  ASSERT_EQ(results.size(), 4u);
  EXPECT_EQ(results.at("Self-Uci"), "1/2-1/2 adjudication: draw");
  EXPECT_EQ(results.at("Uci-Self"), "1/2-1/2 adjudication: draw");
  for (const char* pair : {"Self-Mute", "Mute-Self"})
    EXPECT_EQ(results.at(pair).find("adjudication: "), std::string::npos) << results.at(pair);
  EXPECT_NE(tourney_test::readText(folder.file("adjudicate-1-1.pgn")).find("[Reason \"adjudication: draw\"]"),
            std::string::npos);
}

// Both games start from one random opening of three plies, so fairymax takes
// it in force mode once as White and once as Black.
TEST(TourneyRun, GamesAgainstFairymaxEndByTheRulesAndTheirPgnReadsCleanly) {
  const TempFolder folder("fairymax");
  ASSERT_TRUE(fs::exists(FAIRYMAX)) << "tests/run.sh installs fairymax";
  const std::string ini = writeTourney(
      folder, "real", "<clock game_ms=\"10000\" increment_ms=\"1000\"/>", 2,
      {engineElement("Self", "embedded", "", "Simple5"), engineElement("Fairy-Max", "xboard", FAIRYMAX, "")},
      "<opening_plies>3</opening_plies>");
  runTourney(ini, 180000);
  const std::map<std::string, std::string> results = readResults(folder.file("real-1-results.tsv"));
  ASSERT_EQ(results.size(), 2u);
  // Fairymax may lose on time: it is not told of the pause after every command,
  // which is part of its moves' cost. The embedded side must never forfeit.
  for (const auto& [pair, verdict] : results) {
    for (const char* bad : {"illegal move", "engine crashed", "game aborted", "?"}) {
      EXPECT_EQ(verdict.find(bad), std::string::npos) << pair << ": " << verdict;
    }
    const std::string selfWins = pair.rfind("Self-", 0) == 0 ? "1-0 forfeit" : "0-1 forfeit";
    if (verdict.find("forfeit") != std::string::npos) {
      EXPECT_EQ(verdict, selfWins) << pair;
    }
  }
  for (int game = 1; game <= 2; ++game) {
    const std::string pgn = folder.file("real-1-" + std::to_string(game) + ".pgn");
    const std::string reportFile = folder.file("report.txt");
    const int status = std::system((PGN_EXTRACT + " -s -r " + pgn + " > " + reportFile + " 2>&1").c_str());
    const std::string report = tourney_test::readText(reportFile);
    EXPECT_EQ(status, 0) << report;
    EXPECT_EQ(report.find("rror"), std::string::npos) << report;
    EXPECT_EQ(report.find("arning"), std::string::npos) << report;
    kobubase::clsOutBuffer out;
    out.setEcho(false);
    out.setKeep(true);
    kbuChess::clsPGNFile reader(out, 400);
    ASSERT_TRUE(reader.readFile(pgn));
    EXPECT_EQ(reader.games(), 1u);
    for (const std::string& line : out.takeAll()) EXPECT_EQ(line.find("illegal"), std::string::npos) << line;
  }
}

// Talvena speaking UCI (chosen by the "uci" it gets first) meets itself
// speaking xboard and Debian's stockfish. The increment is more than the
// runner's pauses after its commands cost a side (up to 300 ms a move), so
// the clocks do not run down. Its opponents may still lose on time, as
// fairymax above may; Talvena-as-UCI must never forfeit, and no side may play
// an illegal move.
TEST(TourneyRun, TalvenaAsUciPlaysItselfAsXboardAndStockfish) {
  const TempFolder folder("uci");
  ASSERT_TRUE(fs::exists(STOCKFISH)) << "tests/run.sh installs stockfish";
  const std::string ini = writeTourney(folder, "uci", "<clock game_ms=\"6000\" increment_ms=\"400\"/>", 2,
                                       {engineElement("TalvenaUci", "uci", TALVENA_BIN, ""),
                                        engineElement("TalvenaXboard", "xboard", TALVENA_BIN, ""),
                                        engineElement("Stockfish", "uci", STOCKFISH, "")},
                                       "<opening_plies>3</opening_plies>");
  runTourney(ini, 300000);
  const std::map<std::string, std::string> results = readResults(folder.file("uci-1-results.tsv"));
  ASSERT_EQ(results.size(), 4u);
  for (const auto& [pair, verdict] : results) {
    for (const char* bad : {"illegal move", "engine crashed", "game aborted", "?"}) {
      EXPECT_EQ(verdict.find(bad), std::string::npos) << pair << ": " << verdict;
    }
    const std::string ucisWin = pair.rfind("TalvenaUci-", 0) == 0 ? "1-0 forfeit" : "0-1 forfeit";
    if (verdict.find("forfeit") != std::string::npos) {
      EXPECT_EQ(verdict, ucisWin) << pair;
    }
  }
}

// Ctrl-C: running games are stopped, the standings so far printed, every
// engine ended, and the program ends with status 0.
TEST(TourneyRun, CtrlCWindsDownAndLeavesNoEngineBehind) {
  const TempFolder folder("sigint");
  const std::string marker = folder.file("sigint-marker");
  const std::unique_ptr<EngineProcess> talvena = startEndlessGames(folder, marker);
  ::kill(talvena->pid(), SIGINT);
  const Lines lines = talvena->readUntil("# bye bye", 30000);
  EXPECT_TRUE(talvena->found());
  EXPECT_TRUE(anyHolds(lines, "cancel"));
  EXPECT_EQ(talvena->waitExit(10000), 0);
  EXPECT_EQ(processesWith(marker), 0);
}

// kill -9 of the program in the middle of a game: its engines die with it.
TEST(TourneyRun, KilledProgramLeavesNoOrphanEngine) {
  const TempFolder folder("kill");
  const std::string marker = folder.file("kill-marker");
  const std::unique_ptr<EngineProcess> talvena = startEndlessGames(folder, marker);
  ::kill(talvena->pid(), SIGKILL);
  talvena->waitExit(5000);
  int left = 2;
  for (int wait = 0; wait < 100 && (left = processesWith(marker)) > 0; ++wait) kobubase::sleepMs(20);
  EXPECT_EQ(left, 0);
}

}  // namespace
