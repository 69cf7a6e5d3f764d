#include "chess/tourney/tourney.h"

namespace kbuChess {

int commandTourney(const std::string& args, kobubase::clsOutBuffer& out) {
  out.print("# talvena -use=tourney -ini=tourney_file.xml");
  if (!args.empty()) out.print("# tournaments are not available in this build: " + args);
  return 3;
}

}  // namespace kbuChess
