#pragma once
// Tournaments: games between souls of the engine and external engines.
#include <string>

#include "base/output.h"

namespace kbuChess {

// Runs the tournament described by an XML file; returns the dispatcher code.
int commandTourney(const std::string& args, kobubase::clsOutBuffer& out);

}  // namespace kbuChess
