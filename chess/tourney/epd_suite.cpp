#include "chess/tourney/epd_suite.h"

#include <array>
#include <memory>

#include "base/text.h"
#include "chess/board/board.h"

namespace kbuChess {
namespace {

using kobubase::allDigits;
using kobubase::wordAt;

// The pieces of a board field by rank (0 = rank 1) and file (0 = file a), '.' for empty.
using Squares = std::array<std::array<char, 8>, 8>;

constexpr int MAX_HALF_MOVE_CLOCK = 99;  // at 100 the game would be drawn on its first move
constexpr int MAX_MOVE_NUMBER = 9999;

bool readBoard(std::string_view field, Squares& squares) {
  int rank = 7, file = 0;
  for (const char c : field) {
    if (c == '/') {
      if (file != 8 || rank == 0) return false;
      --rank, file = 0;
    } else if (c >= '1' && c <= '8') {
      for (int i = 0; i < c - '0'; ++i, ++file)
        if (file < 8) squares[rank][file] = '.';
      if (file > 8) return false;
    } else if (std::string_view("pnbrqkPNBRQK").find(c) != std::string_view::npos && file < 8) {
      squares[rank][file++] = c;
    } else {
      return false;
    }
  }
  return rank == 0 && file == 8;
}

// Why the pieces cannot stand so; "" when they can.
std::string piecesProblem(const Squares& squares) {
  int whiteKings = 0, blackKings = 0;
  for (int rank = 0; rank < 8; ++rank) {
    for (const char c : squares[rank]) {
      whiteKings += c == 'K';
      blackKings += c == 'k';
      if ((c == 'P' || c == 'p') && (rank == 0 || rank == 7)) return "a pawn on the first or last rank";
    }
  }
  return whiteKings == 1 && blackKings == 1 ? "" : "each side needs one king";
}

// The castling rights whose king and rook stand at home, in KQkq order; "-" for none.
std::string castlingRights(std::string_view field, const Squares& squares) {
  const struct {
    char right;
    int rank, rookFile;
    char king, rook;
  } rights[] = {{'K', 0, 7, 'K', 'R'}, {'Q', 0, 0, 'K', 'R'}, {'k', 7, 7, 'k', 'r'}, {'q', 7, 0, 'k', 'r'}};
  std::string kept;
  for (const auto& r : rights) {
    if (field.find(r.right) == std::string_view::npos) continue;
    if (squares[r.rank][4] == r.king && squares[r.rank][r.rookFile] == r.rook) kept += r.right;
  }
  return kept.empty() ? "-" : kept;
}

bool validCastlingField(std::string_view field) {
  if (field == "-") return true;
  if (field.empty() || field.size() > 4) return false;
  for (std::size_t i = 0; i < field.size(); ++i)
    if (std::string_view("KQkq").find(field[i]) == std::string_view::npos || field.find(field[i]) != i) return false;
  return true;
}

// The en-passant square when a double step of the side not to move can have
// made it, else "-"; false for a field that names no such square at all.
bool enPassantSquare(std::string_view field, bool whiteToMove, const Squares& squares, std::string& square) {
  square = "-";
  if (field == "-") return true;
  const char rankDigit = whiteToMove ? '6' : '3';
  if (field.size() != 2 || field[0] < 'a' || field[0] > 'h' || field[1] != rankDigit) return false;
  const int file = field[0] - 'a';
  const int passed = whiteToMove ? 5 : 2, from = whiteToMove ? 6 : 1, pawnRank = whiteToMove ? 4 : 3;
  const char pawn = whiteToMove ? 'p' : 'P';
  if (squares[pawnRank][file] == pawn && squares[passed][file] == '.' && squares[from][file] == '.')
    square = std::string(field);
  return true;
}

// The move clocks: fields five and six of a FEN line, else the "hmvc" and
// "fmvn" operations after the fourth field.
void readClocks(std::string_view line, std::int64_t& halfMoves, std::int64_t& moveNumber) {
  halfMoves = 0, moveNumber = 1;
  if (allDigits(wordAt(line, 4)) && allDigits(wordAt(line, 5))) {
    halfMoves = kobubase::readInteger(wordAt(line, 4));
    moveNumber = kobubase::readInteger(wordAt(line, 5));
  } else {
    std::size_t at = 0;
    for (int field = 0; field < 4; ++field) at = line.find_first_not_of(' ', line.find(' ', at));
    for (std::string_view rest = at == std::string_view::npos ? "" : line.substr(at); !rest.empty();) {
      const std::size_t end = std::min(rest.find(';'), rest.size());
      const std::string_view operation = rest.substr(0, end);
      if (wordAt(operation, 0) == "hmvc") halfMoves = kobubase::readInteger(wordAt(operation, 1));
      if (wordAt(operation, 0) == "fmvn") moveNumber = kobubase::readInteger(wordAt(operation, 1));
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }
  halfMoves = kobubase::clampTo(halfMoves, 0, MAX_HALF_MOVE_CLOCK);
  moveNumber = kobubase::clampTo(moveNumber, 1, MAX_MOVE_NUMBER);
}

// The six-field FEN of a line, or "" with `problem` saying why there is none.
std::string fenOfLine(std::string_view line, clsBoard& board, std::string& problem) {
  Squares squares{};
  if (wordAt(line, 3).empty()) return problem = "fewer than four fields", "";
  if (!readBoard(wordAt(line, 0), squares)) return problem = "the board needs 8 ranks of 8 squares", "";
  if (problem = piecesProblem(squares); !problem.empty()) return "";
  const std::string_view side = wordAt(line, 1);
  if (side != "w" && side != "b") return problem = "the side to move is not w or b", "";
  if (!validCastlingField(wordAt(line, 2))) return problem = "bad castling field", "";
  std::string enPassant;
  if (!enPassantSquare(wordAt(line, 3), side == "w", squares, enPassant)) return problem = "bad en passant field", "";
  std::int64_t halfMoves = 0, moveNumber = 1;
  readClocks(line, halfMoves, moveNumber);
  board.readFEN(std::string(wordAt(line, 0)) + " " + std::string(side) + " " +
                castlingRights(wordAt(line, 2), squares) + " " + enPassant);
  board.finish();  // the side not to move, as if it were to move
  const bool check = board.ownKingAttacked();
  board.finish();
  if (check) return problem = "the side not to move is in check", "";
  board.resetFrames();
  const int moves = board.generateLegal();
  board.resetFrames();
  if (moves <= 0) return problem = "no legal move", "";
  return board.fen() + " " + std::to_string(halfMoves) + " " + std::to_string(moveNumber);
}

}  // namespace

std::vector<Opening> readEpdPositions(std::string_view text, kobubase::clsOutBuffer& out) {
  std::vector<Opening> positions;
  auto board = std::make_unique<clsBoard>();
  std::size_t number = 0;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string line(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    ++number;
    for (char& c : line)
      if (c == '\t' || c == '\r') c = ' ';
    const std::string trimmed = kobubase::trimmed(line);
    if (trimmed.empty() || trimmed[0] == '#') continue;
    std::string problem;
    std::string fen = fenOfLine(trimmed, *board, problem);
    if (fen.empty()) {
      out.print("# openings: line " + std::to_string(number) + " skipped: " + problem);
      continue;
    }
    positions.push_back(Opening{std::move(fen), {}});
  }
  return positions;
}

}  // namespace kbuChess
