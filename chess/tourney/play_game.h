#pragma once
// "\play ms_per_move max_moves file.pgn [soulA soulB]": one game between two
// souls of the engine itself from the start position, soulA with White, at
// a fixed time per move and at most max_moves moves a side (then a draw).
// Without souls both sides play the engine's current soul. The game is
// appended to the PGN file and its log written beside it (same name, ".log").
#include <string>

#include "base/output.h"

namespace kbuChess {

inline constexpr const char* PLAY_USAGE = "# \\play ms_per_move max_moves file.pgn [soulA soulB]";

// Returns the dispatcher's code; prints the usage line when arguments are missing.
int commandPlay(const std::string& args, const std::string& currentSoul, kobubase::clsOutBuffer& out);

}  // namespace kbuChess
