#pragma once
// Whether a played game has ended on the board, and the move step a game
// loop needs: a move sent by an engine in coordinate notation is checked,
// written in SAN and played. Used where whole games are played out move by
// move (tournaments); the search has its own, cheaper tests.
#include <string>
#include <string_view>

#include "chess/board/board.h"

namespace kbuChess {

enum class GameEnd { None, Mate, Stalemate, FiftyMoves, InsufficientMaterial };

// The end the board's position has reached, tested in this order: no legal
// move (mate when in check, else stalemate), 100 plies without a capture or a
// pawn move, then material with which no mate is possible.
GameEnd gameEnd(clsBoard& board);

// No pawns, rooks or queens, and either at most one knight or bishop on the
// board, or only bishops, all on squares of one colour (K v K, K+N v K,
// K+B v K, K+B v K+B with same-coloured bishops).
bool insufficientMaterial(const Position& pos);

// A key of the position for the repetition rule: the pieces by colour, the
// side to move, the castling rights and an en-passant square only when a pawn
// can take there. Unlike positionKey() it does not depend on the process-wide
// key tables, so it stays comparable while other boards are created.
u64 repetitionKey(const Position& pos);

// Plays the legal move named by coordinate text (e2e4, e7e8q, e1g1); on
// success `san` holds its SAN (with "+" or "#"). False leaves the position.
bool playCoordinateMove(clsBoard& board, std::string_view text, std::string& san);

}  // namespace kbuChess
