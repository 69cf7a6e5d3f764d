// Program entry: options from the command line, one driver object on a
// thread of its own, and the farewell lines when it is done.
#include "base/options.h"
#include "base/random.h"
#include "chess/board/tables.h"
#include "chess/driver/talvena.h"

int main(int argc, char** argv) {
  kobubase::seedRandom();
  kbuChess::initTables();
  const kobubase::clsOptions options(argc, argv);
  {
    kbuChess::clsTalvena driver(options);
    if (driver.start()) driver.wait();
    driver.print("# stop");
  }  // the driver's farewell, "# bye bye", comes from its destructor
  return 0;
}
