// The tournament file: schema, defaults, exact comparisons, bounds and the
// messages for files that cannot be used.
#include "chess/tourney/tourney_config.h"

#include <gtest/gtest.h>

namespace kbuChess {
namespace {

using Lines = std::vector<std::string>;

struct Read {
  TourneyConfig config;
  Lines messages;
};

Read read(const std::string& xml) {
  Read r;
  r.config = readTourneyText(xml, r.messages);
  return r;
}

std::string names(const TourneyConfig& config) {
  std::string text;
  for (const PlayerConfig& p : config.players) text += (text.empty() ? "" : ",") + p.name;
  return text;
}

TEST(TourneyConfigTest, ReadsEveryElementOfACompleteFile) {
  const Read r = read(R"(<?xml version="1.0"?>
    <tourney name="blitz-test" type="gauntlet">
      <options><rounds>2</rounds><logfolder>logs</logfolder><threads>4</threads></options>
      <clock moves_per_second="40" game_ms="60000" increment_ms="500"/>
      <engines>
        <engine active="true" name="Self" protocol="embedded"/>
        <engine active="true" name="Other" filename="/opt/other/engine" parameters="-x 1" protocol="uci"/>
        <engine active="false" name="Off" filename="/bin/off"/>
        <engine active="true" name="Third" filename="/usr/games/fairymax" protocol="xboard"/>
      </engines>
      <pgn><header><Site>Home</Site><Annotator>me</Annotator></header></pgn>
    </tourney>)");
  const TourneyConfig& c = r.config;
  EXPECT_EQ(r.messages, Lines{});
  EXPECT_TRUE(c.loaded);
  EXPECT_EQ(c.name, "blitz-test");
  EXPECT_EQ(c.type, GAUNTLET);
  EXPECT_FALSE(c.roundsFlag);
  EXPECT_EQ(c.rounds, 2);
  EXPECT_EQ(c.logFolder, "logs");
  EXPECT_EQ(c.logPath, "logs/blitz-test.log");
  EXPECT_EQ(c.threads, 4);
  EXPECT_EQ(c.movesPerSecond, 40);
  EXPECT_EQ(c.gameMs, 60000);
  EXPECT_EQ(c.incrementMs, 500);
  ASSERT_EQ(c.players.size(), 3u);
  EXPECT_EQ(names(c), "Self,Other,Third");
  EXPECT_TRUE(c.players[0].embedded());
  EXPECT_EQ(c.players[1].filename, "/opt/other/engine");
  EXPECT_EQ(c.players[1].parameters, "-x 1");
  EXPECT_TRUE(c.players[1].uci());
  EXPECT_EQ(c.players[2].protocol, "xboard");
  EXPECT_FALSE(c.players[2].uci() || c.players[2].embedded());
  EXPECT_EQ(c.pgnHeaders, (std::vector<std::pair<std::string, std::string>>{{"Site", "Home"}, {"Annotator", "me"}}));
}

TEST(TourneyConfigTest, DefaultsDependOnWhichElementsArePresent) {
  // No options, no clock: one round, one thread, 60 s sudden death, no log.
  Read r = read(R"(<tourney><engines><engine active="true" name="A" protocol="embedded"/></engines></tourney>)");
  EXPECT_EQ(r.messages, Lines{});
  EXPECT_EQ(r.config.name, "");
  EXPECT_EQ(r.config.type, ALL_PLAY_ALL);
  EXPECT_EQ(r.config.rounds, 1);
  EXPECT_EQ(r.config.threads, 1);
  EXPECT_EQ(r.config.logPath, "");
  EXPECT_EQ(r.config.movesPerSecond, 0);
  EXPECT_EQ(r.config.gameMs, 60000);
  EXPECT_EQ(r.config.incrementMs, 0);
  // A clock without attributes, empty option values.
  r = read(R"(<tourney><options><rounds></rounds><threads/></options><clock game_ms=""/></tourney>)");
  EXPECT_EQ(r.config.rounds, 1);
  EXPECT_EQ(r.config.threads, 1);
  EXPECT_EQ(r.config.movesPerSecond, 300000);
  EXPECT_EQ(r.config.gameMs, 300000);
  EXPECT_EQ(r.config.incrementMs, 0);
  EXPECT_TRUE(r.config.players.empty());
  // Numbers read their leading digits; text without digits is 0.
  r = read(
      R"(<tourney><clock game_ms="2500ms" increment_ms="fast"/><options><rounds>3 rounds</rounds></options></tourney>)");
  EXPECT_EQ(r.config.gameMs, 2500);
  EXPECT_EQ(r.config.incrementMs, 0);
  EXPECT_EQ(r.config.rounds, 3);
}

TEST(TourneyConfigTest, ComparisonsAreExact) {
  EXPECT_EQ(read(R"(<tourney type="Gauntlet"/>)").config.type, ALL_PLAY_ALL);
  EXPECT_EQ(read(R"(<tourney type="learning"/>)").config.type, LEARNING);
  EXPECT_EQ(read(R"(<tourney type="round robin"/>)").config.type, ALL_PLAY_ALL);
  const Read r = read(R"(<tourney><engines>
      <engine active="TRUE" name="Caps" protocol="embedded"/>
      <engine name="NoFlag" protocol="embedded"/>
      <engine active="true" name="On" protocol="embedded"/>
      <player active="true" name="NotAnEngine" protocol="embedded"/>
    </engines></tourney>)");
  EXPECT_EQ(names(r.config), "On");
  EXPECT_EQ(r.messages, Lines{});
  // "rounds" is read twice: as the flag and as the number.
  Read flag = read(R"(<tourney><options><rounds>true</rounds></options></tourney>)");
  EXPECT_TRUE(flag.config.roundsFlag);
  EXPECT_EQ(flag.config.rounds, 0);
  flag = read(R"(<tourney><options><rounds>True</rounds></options></tourney>)");
  EXPECT_FALSE(flag.config.roundsFlag);
}

TEST(TourneyConfigTest, NumbersOutOfBoundsAreHeldWithAWarning) {
  const Read r = read(R"(<tourney><options><rounds>-3</rounds><threads>1000</threads></options>
      <clock moves_per_second="-1" game_ms="0" increment_ms="99999999"/></tourney>)");
  EXPECT_EQ(r.config.rounds, 0);
  EXPECT_EQ(r.config.threads, 128);
  EXPECT_EQ(r.config.movesPerSecond, 0);
  EXPECT_EQ(r.config.gameMs, 100);
  EXPECT_EQ(r.config.incrementMs, 3600000);
  EXPECT_EQ(r.messages, (Lines{"# tourney file: rounds -3 is out of range, 0 used",
                               "# tourney file: moves_per_second -1 is out of range, 0 used",
                               "# tourney file: game_ms 0 is out of range, 100 used",
                               "# tourney file: increment_ms 99999999 is out of range, 3600000 used",
                               "# tourney file: threads 1000 is out of range, 128 used"}));
  // Zero threads is kept as read; the run plays one game at a time.
  const Read zero = read(R"(<tourney><options><threads>0</threads></options><clock game_ms="-5"/></tourney>)");
  EXPECT_EQ(zero.config.threads, 0);
  EXPECT_EQ(zero.config.gamesAtOnce(), 1);
  EXPECT_EQ(zero.config.gameMs, 100);
  EXPECT_EQ(read("<tourney><options><threads>3</threads></options></tourney>").config.gamesAtOnce(), 3);
}

TEST(TourneyConfigTest, OpeningsComeFromABookOrRandomLines) {
  EXPECT_EQ(read("<tourney/>").config.openingPlies, 0);
  const Read book = read("<tourney><options><openings>my.sbk</openings></options></tourney>");
  EXPECT_EQ(book.config.openingBook, "my.sbk");
  EXPECT_EQ(book.config.openingPlies, 8);
  const Read random = read("<tourney><options><opening_plies>99</opening_plies></options></tourney>");
  EXPECT_EQ(random.config.openingBook, "");
  EXPECT_EQ(random.config.openingPlies, 40);
  EXPECT_EQ(random.messages, Lines{"# tourney file: opening_plies 99 is out of range, 40 used"});
}

TEST(TourneyConfigTest, UnusableFilesLeaveNoPlayers) {
  Read r = read("not xml at all");
  EXPECT_FALSE(r.config.loaded);
  EXPECT_EQ(r.messages, Lines{"# tourney file is not XML: No document element found at byte 14"});
  r = read(R"(<tourney><engines><engine active="true" name="A"></engines></tourney>)");
  EXPECT_EQ(r.messages, Lines{"# tourney file is not XML: Start-end tags mismatch at byte 51"});
  EXPECT_TRUE(r.config.players.empty());
  r = read(
      R"(<tournament name="x"><engines><engine active="true" name="A" protocol="embedded"/></engines></tournament>)");
  EXPECT_FALSE(r.config.loaded);
  EXPECT_EQ(r.messages, Lines{"# tourney file holds no tourney element"});
  EXPECT_TRUE(r.config.players.empty());
  // Unknown elements and attributes are ignored.
  r = read(R"(<tourney colour="blue"><music/><options><speed>9</speed></options></tourney>)");
  EXPECT_TRUE(r.config.loaded);
  EXPECT_EQ(r.messages, Lines{});

  Lines messages;
  const TourneyConfig missing = readTourneyFile("/nonexistent/folder/tourney.xml", messages);
  EXPECT_FALSE(missing.loaded);
  EXPECT_EQ(messages, Lines{"# error 2: No such file or directory"});
  messages.clear();
  readTourneyFile("/", messages);
  EXPECT_EQ(messages, Lines{"# error 21: Is a directory"});
}

TEST(TourneyConfigTest, PlayersGetUsableNames) {
  const Read r = read(R"(<tourney><engines>
      <engine active="true" filename="/usr/games/fairymax"/>
      <engine active="true" protocol="embedded"/>
      <engine active="true" name="fairymax" filename="/usr/games/fairymax"/>
      <engine active="true" name="Ext"/>
    </engines></tourney>)");
  EXPECT_EQ(names(r.config), "fairymax,engine 2,fairymax 2,Ext");
  EXPECT_EQ(r.messages, (Lines{"# tourney file: engine 1 has no name, 'fairymax' used",
                               "# tourney file: engine 2 has no name, 'engine 2' used",
                               "# tourney file: another engine is named 'fairymax', this one is 'fairymax 2'",
                               "# tourney file: engine 'Ext' has no filename"}));
}

TEST(TourneyConfigTest, HeaderTagsAndFileNames) {
  const Read r = read(R"(<tourney name="a/b"><options><logfolder>logs/</logfolder></options>
      <pgn><header>
        <Site>Home</Site><Annotator>by Kobu himself</Annotator><Annotator2>Kobuline</Annotator2>
        <White>x</White><KobuRound>1</KobuRound><my-tag>1</my-tag><!-- note --><Date>2020.01.01</Date>
      </header></pgn></tourney>)");
  EXPECT_EQ(r.config.pgnHeaders, (std::vector<std::pair<std::string, std::string>>{
                                     {"Site", "Home"}, {"Annotator2", "Kobuline"}, {"Date", "2020.01.01"}}));
  EXPECT_EQ(r.messages,
            (Lines{"# tourney file: pgn header tag Annotator skipped: the word Kobu marks the program's own tags",
                   "# tourney file: pgn header tag White skipped: the games write this tag",
                   "# tourney file: pgn header tag KobuRound skipped: the program writes the Kobu tags",
                   "# tourney file: pgn header tag my-tag skipped: a tag name holds letters, digits and _ only"}));
  EXPECT_EQ(r.config.logPath, "logs/a_b.log");
  EXPECT_EQ(read(R"(<tourney><options><logfolder>out</logfolder></options></tourney>)").config.logPath,
            "out/tourney.log");
  EXPECT_EQ(headerTagProblem("9x", "v"), "a tag name begins with a letter");
  EXPECT_EQ(headerTagProblem("Opening_2", "Sicilian Kobu"), "the word Kobu marks the program's own tags");
  EXPECT_EQ(headerTagProblem("Opening_2", "Sicilian"), "");
  EXPECT_EQ(joinPath("", "x.pgn"), "x.pgn");
  EXPECT_EQ(joinPath("a", "x.pgn"), "a/x.pgn");
  EXPECT_EQ(fileNamePart("x\ty\\z"), "x_y_z");
}

TEST(TourneyConfigTest, TheExampleFileIsAGauntletOfThree) {
  Lines messages;
  const TourneyConfig c = readTourneyFile(EXAMPLES_DIR "/tourney.xml", messages);
  EXPECT_EQ(messages, Lines{});
  EXPECT_TRUE(c.loaded);
  EXPECT_EQ(c.name, "simple5-gauntlet");
  EXPECT_EQ(c.type, GAUNTLET);
  EXPECT_EQ(c.rounds, 2);
  EXPECT_EQ(c.threads, 2);
  EXPECT_EQ(c.logPath, "tourney-logs/simple5-gauntlet.log");
  EXPECT_EQ(c.movesPerSecond, 0);
  EXPECT_EQ(c.gameMs, 20000);
  EXPECT_EQ(c.incrementMs, 500);
  ASSERT_EQ(c.players.size(), 3u);
  EXPECT_EQ(names(c), "Simple5,Mass161,Fairy-Max");
  EXPECT_TRUE(c.players[0].embedded());
  EXPECT_EQ(c.players[0].parameters, "Simple5");
  EXPECT_TRUE(c.players[1].embedded());
  EXPECT_EQ(c.players[1].parameters, "Mass161");
  EXPECT_EQ(c.players[2].filename, "/usr/games/fairymax");
  EXPECT_EQ(c.players[2].protocol, "xboard");
  EXPECT_EQ(c.pgnHeaders, (std::vector<std::pair<std::string, std::string>>{{"Site", "Talvena workbench"}}));
}

}  // namespace
}  // namespace kbuChess
