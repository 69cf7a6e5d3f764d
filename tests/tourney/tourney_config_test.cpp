// The tournament file: schema, defaults, exact comparisons, bounds and the
// messages for files that cannot be used.
#include "chess/tourney/tourney_config.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <tuple>

#include "chess/tourney/tourney.h"
#include "tests/tourney/tourney_test_util.h"

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

// Every setting in one line, so that a test compares all of them at once.
std::string summary(const TourneyConfig& c) {
  std::ostringstream s;
  s << (c.loaded ? "" : "(not loaded) ") << "'" << c.name << "' type " << c.type << " rounds " << c.rounds
    << (c.roundsFlag ? " (flag)" : "") << " threads " << c.threads << " log '" << c.logPath << "' clock "
    << c.movesPerSecond << "/" << c.gameMs << "+" << c.incrementMs << " openings '" << c.openingBook << "' "
    << c.openingPlies;
  for (const PlayerConfig& p : c.players)
    s << " | " << p.name << " " << p.protocol << " '" << p.filename << "' '" << p.parameters << "'";
  for (const auto& [tag, value] : c.pgnHeaders) s << " [" << tag << " " << value << "]";
  return s.str();
}

TEST(TourneyConfigTest, DefaultsAndExactComparisons) {
  const struct {
    const char *xml, *summary;
  } cases[] = {
      // No options, no clock: one round, one thread, 60 s sudden death, no log.
      {R"(<tourney><engines><engine active="true" name="A" protocol="embedded"/></engines></tourney>)",
       "'' type 0 rounds 1 threads 1 log '' clock 0/60000+0 openings '' 0 | A embedded '' ''"},
      // A clock without attributes, empty option values.
      {R"(<tourney><options><rounds></rounds><threads/></options><clock game_ms=""/></tourney>)",
       "'' type 0 rounds 1 threads 1 log '' clock 300000/300000+0 openings '' 0"},
      // Numbers read their leading digits; text without digits is 0.
      {R"(<tourney><clock game_ms="2500ms" increment_ms="fast"/><options><rounds>3 rounds</rounds></options></tourney>)",
       "'' type 0 rounds 3 threads 1 log '' clock 300000/2500+0 openings '' 0"},
      // "rounds" is read twice: as the flag (exactly "true") and as the number.
      {"<tourney><options><rounds>true</rounds></options></tourney>",
       "'' type 0 rounds 0 (flag) threads 1 log '' clock 0/60000+0 openings '' 0"},
      {"<tourney><options><rounds>True</rounds></options></tourney>",
       "'' type 0 rounds 0 threads 1 log '' clock 0/60000+0 openings '' 0"},
      {"<tourney><options><openings>my.sbk</openings></options></tourney>",
       "'' type 0 rounds 1 threads 1 log '' clock 0/60000+0 openings 'my.sbk' 8"},
      {R"(<tourney name="a/b"><options><logfolder>logs/</logfolder></options></tourney>)",
       "'a/b' type 0 rounds 1 threads 1 log 'logs/a_b.log' clock 0/60000+0 openings '' 0"},
      // Unknown elements and attributes are ignored; names and flags compare exactly.
      {R"(<tourney colour="blue"><music/><options><speed>9</speed></options></tourney>)",
       "'' type 0 rounds 1 threads 1 log '' clock 0/60000+0 openings '' 0"},
      {R"(<tourney type="Gauntlet"/>)", "'' type 0 rounds 1 threads 1 log '' clock 0/60000+0 openings '' 0"},
      {R"(<tourney type="learning"/>)", "'' type 2 rounds 1 threads 1 log '' clock 0/60000+0 openings '' 0"},
      // An external engine's program and parameters; moves per period with the clock.
      {R"(<tourney><clock moves_per_second="40"/><engines>
          <engine active="true" name="Other" filename="/opt/other" parameters="-x 1" protocol="uci"/></engines></tourney>)",
       "'' type 0 rounds 1 threads 1 log '' clock 40/300000+0 openings '' 0 | Other uci '/opt/other' '-x 1'"},
      {R"(<tourney><engines><engine active="TRUE" name="Caps" protocol="embedded"/>
          <engine name="NoFlag" protocol="embedded"/><engine active="true" name="On" protocol="embedded"/>
          <player active="true" name="NotAnEngine" protocol="embedded"/></engines></tourney>)",
       "'' type 0 rounds 1 threads 1 log '' clock 0/60000+0 openings '' 0 | On embedded '' ''"},
  };
  for (const auto& c : cases) {
    const Read r = read(c.xml);
    EXPECT_EQ(summary(r.config), c.summary) << c.xml;
    EXPECT_EQ(r.messages, Lines{}) << c.xml;
  }
}

TEST(TourneyConfigTest, NumbersOutOfBoundsAreHeldWithAWarning) {
  const Read r = read(R"(<tourney><options><rounds>-3</rounds><threads>1000</threads>
      <opening_plies>99</opening_plies></options>
      <clock moves_per_second="-1" game_ms="0" increment_ms="99999999"/></tourney>)");
  EXPECT_EQ(summary(r.config), "'' type 0 rounds 0 threads 128 log '' clock 0/100+3600000 openings '' 40");
  EXPECT_EQ(r.messages, (Lines{"# tourney file: rounds -3 is out of range, 0 used",
                               "# tourney file: opening_plies 99 is out of range, 40 used",
                               "# tourney file: moves_per_second -1 is out of range, 0 used",
                               "# tourney file: game_ms 0 is out of range, 100 used",
                               "# tourney file: increment_ms 99999999 is out of range, 3600000 used",
                               "# tourney file: threads 1000 is out of range, 128 used"}));
  // Zero threads is kept as read; the run plays one game at a time.
  const TourneyConfig zero = read("<tourney><options><threads>0</threads></options></tourney>").config;
  EXPECT_EQ(std::make_pair(zero.threads, zero.gamesAtOnce()), std::make_pair(0, 1));
  EXPECT_EQ(read("<tourney><options><threads>3</threads></options></tourney>").config.gamesAtOnce(), 3);
}

TEST(TourneyConfigTest, OpeningOrderSeedAndSprtAreReadAndBadOnesNamed) {
  const Read good = read(R"(<tourney><options><opening_order>random</opening_order><opening_start>12</opening_start>
      <seed>77</seed><sprt elo0="-1.5" elo1="3" alpha="0.1" beta="0.2"/></options></tourney>)");
  const TourneyConfig& c = good.config;
  EXPECT_EQ(std::make_tuple(c.openingOrder, c.openingStart, c.seed, c.sprt.enabled, c.sprt.elo0, c.sprt.elo1,
                            c.sprt.alpha, c.sprt.beta),
            std::make_tuple(1, 12, 77u, true, -1.5, 3.0, 0.1, 0.2));
  EXPECT_EQ(good.messages, Lines{});
  const std::string refused =
      "# tourney file: sprt needs elo0 < elo1 (within +-1000) and alpha, beta inside (0, 0.5); the event runs "
      "without the test";
  for (const char* sprt :
       {R"(<sprt elo0="5" elo1="5"/>)", R"(<sprt alpha="0.5"/>)", R"(<sprt beta="0"/>)", R"(<sprt elo1="nan"/>)"}) {
    const Read bad =
        read(std::string("<tourney><options><opening_order>shuffled</opening_order>") + sprt + "</options></tourney>");
    EXPECT_FALSE(bad.config.sprt.enabled) << sprt;
    EXPECT_EQ(bad.messages, (Lines{"# tourney file: opening_order is sequential or random, not 'shuffled'; "
                                   "sequential used",
                                   refused}))
        << sprt;
  }
}

// How games are run: the command pause, the length cap and adjudication,
// each held within its bounds; no adjudication without its element.
TEST(TourneyConfigTest, GameRulesFromTheOptions) {
  const TourneyConfig plain = read("<tourney/>").config;
  EXPECT_EQ(std::make_tuple(plain.commandPauseMs, plain.maxPlies, plain.adjudication.enabled),
            std::make_tuple(100, 0, false));
  const Read r = read(R"(<tourney><options><command_pause_ms>5000</command_pause_ms><max_plies>80</max_plies>
      <adjudicate draw_moves="6" draw_score="-4" resign_moves="0" resign_score="600"/></options></tourney>)");
  const AdjudicationRules& a = r.config.adjudication;
  EXPECT_TRUE(a.enabled);
  EXPECT_EQ(std::vector<int>({r.config.commandPauseMs, r.config.maxPlies, a.drawMoves, a.drawScore, a.drawAfter,
                              a.resignMoves, a.resignScore}),
            std::vector<int>({1000, 80, 6, 0, 40, 1, 600}));
  EXPECT_EQ(r.messages, (Lines{"# tourney file: command_pause_ms 5000 is out of range, 1000 used",
                               "# tourney file: adjudicate draw_score -4 is out of range, 0 used",
                               "# tourney file: adjudicate resign_moves 0 is out of range, 1 used"}));
}

TEST(TourneyConfigTest, UnusableFilesLeaveNoPlayers) {
  const struct {
    const char *xml, *message;
  } cases[] = {
      {"not xml at all", "# tourney file is not XML: No document element found at byte 14"},
      {R"(<tourney><engines><engine active="true" name="A"></engines></tourney>)",
       "# tourney file is not XML: Start-end tags mismatch at byte 51"},
      {R"(<tournament><engines><engine active="true" name="A" protocol="embedded"/></engines></tournament>)",
       "# tourney file holds no tourney element"},
  };
  for (const auto& c : cases) {
    const Read r = read(c.xml);
    EXPECT_FALSE(r.config.loaded) << c.xml;
    EXPECT_TRUE(r.config.players.empty()) << c.xml;
    EXPECT_EQ(r.messages, Lines{c.message});
  }
  Lines messages;
  EXPECT_FALSE(readTourneyFile("/nonexistent/folder/tourney.xml", messages).loaded);
  readTourneyFile("/", messages);
  EXPECT_EQ(messages, (Lines{"# error 2: No such file or directory", "# error 21: Is a directory"}));
}

TEST(TourneyConfigTest, PlayersGetUsableNames) {
  const Read r = read(R"(<tourney><engines>
      <engine active="true" filename="/usr/games/fairymax"/>
      <engine active="true" protocol="embedded"/>
      <engine active="true" name="fairymax" filename="/usr/games/fairymax"/>
      <engine active="true" name="Ext"/>
    </engines></tourney>)");
  EXPECT_EQ(summary(r.config),
            "'' type 0 rounds 1 threads 1 log '' clock 0/60000+0 openings '' 0 | fairymax  '/usr/games/fairymax' ''"
            " | engine 2 embedded '' '' | fairymax 2  '/usr/games/fairymax' '' | Ext  '' ''");
  EXPECT_EQ(r.messages, (Lines{"# tourney file: engine 1 has no name, 'fairymax' used",
                               "# tourney file: engine 2 has no name, 'engine 2' used",
                               "# tourney file: another engine is named 'fairymax', this one is 'fairymax 2'",
                               "# tourney file: engine 'Ext' has no filename"}));
}

TEST(TourneyConfigTest, HeaderTagsAndFileNames) {
  const Read r = read(R"(<tourney><pgn><header>
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
  EXPECT_EQ(headerTagProblem("9x", "v"), "a tag name begins with a letter");
  EXPECT_EQ(headerTagProblem("Opening_2", "Sicilian Kobu"), "the word Kobu marks the program's own tags");
  EXPECT_EQ(headerTagProblem("Opening_2", "Sicilian"), "");
  EXPECT_EQ(fileNamePart("x\ty\\z"), "x_y_z");
}

TEST(TourneyConfigTest, TheExampleFileIsAGauntletOfThree) {
  Lines messages;
  EXPECT_EQ(summary(readTourneyFile(EXAMPLES_DIR "/tourney.xml", messages)),
            "'simple5-gauntlet' type 1 rounds 2 threads 2 log 'tourney-logs/simple5-gauntlet.log' clock 0/20000+1000"
            " openings '' 0 | Simple5 embedded '' 'Simple5' | Mass161 embedded '' 'Mass161'"
            " | Fairy-Max xboard '/usr/games/fairymax' '' [Site Talvena workbench]");
  EXPECT_EQ(messages, Lines{});
}

// "\tourney" takes the file's name quoted or plain, blanks and all, before its option words.
TEST(TourneyConfigTest, CommandFindsANameWithBlanksQuotedOrNot) {
  const testFiles::TempFolder folder;
  std::filesystem::create_directory(folder.path / "my events");
  const std::string file = folder.file("my events/bad.xml");
  testFiles::writeText(file, "not xml");
  for (const std::string& args : Lines{std::string(1, '"').append(file).append("\" resume shard=0/2"), file}) {
    tourney_test::KeptOutput out;
    commandTourney(args, out);
    EXPECT_EQ(out.takeAll(), (Lines{"# starting tourney...", "# wait please...",
                                    "# tourney file is not XML: No document element found at byte 7"}))
        << args;
  }
}

}  // namespace
}  // namespace kbuChess
