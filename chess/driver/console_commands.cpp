// The expression console as a mode of the driver, and the table commands.
//
// "\console" switches the driver into console mode: from then on every input
// line goes to the console's interpreter instead of the xboard dispatcher,
// until "exit" switches back. "quit" in the console ends the program as it
// does at the xboard prompt, so a GUI or a script that closes the engine is
// never ignored (the end of the input arrives as "quit" too).
#include "chess/driver/console.h"
#include "chess/driver/talvena.h"

namespace kbuChess {

using kobubase::trimmed;

// The chess functions read the game's position from the view board, brought
// up to date before every console line.
clsConsole& clsTalvena::console() {
  if (!console_) console_ = std::make_unique<clsConsole>(engine_, view_, book_, options_);
  positionView();
  return *console_;
}

void clsTalvena::printComments(const std::vector<std::string>& lines) {
  for (const std::string& line : lines) print(line.empty() ? "#" : "# " + line);
}

int clsTalvena::cmdConsole(const std::string&) {
  console();
  consoleMode_ = true;
  printComments(clsConsole::welcomeLines());
  return CMD_PRINTED;
}

int clsTalvena::consoleLine(const std::string& line) {
  const std::string text = trimmed(line);
  logCommand("\\console", text);
  if (text.empty()) return CMD_IGNORED;
  if (text == "exit") {
    consoleMode_ = false;
    print("# back to xboard");
    return CMD_PRINTED;
  }
  if (text == "quit") {
    consoleMode_ = false;
    return cmdQuit("");
  }
  printComments(console().line(text));
  return CMD_PRINTED;
}

int clsTalvena::cmdSql(const std::string& rest) {
  printComments(console().sqlCommand(rest));
  return CMD_PRINTED;
}

int clsTalvena::cmdOdbc(const std::string& rest) {
  printComments(console().odbcCommand(rest));
  return CMD_PRINTED;
}

}  // namespace kbuChess
