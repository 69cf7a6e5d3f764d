#pragma once
// clsBoard holds a position and everything needed to walk a line of play
// through it: 128 ply frames, each with a saved copy of the position and a
// slice of one 12,800-record move buffer. Moves are generated into the current
// frame's slice, made on the position, and undone by restoring the copy saved
// in the frame. The engine derives from this class and adds search and souls.
//
// The functions are grouped by source file: board.cpp (frames, keys),
// fen.cpp (FEN, board text), movegen.cpp (generation), makemove.cpp (make,
// legality, play move), notation.cpp (move text, coordinate and SAN reading),
// perft.cpp (perft and divide).
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "base/output.h"
#include "chess/board/types.h"

namespace kbuChess {

// One ply of the line being walked.
struct PlyFrame {
  Move* first;     // slice of the move buffer
  Move* current;
  Move* end;
  Position saved;  // the position before any move of this frame was made
  u64 kingMask;    // side to move's king at generation time
  bool inCheck;
  void* ttEntry;   // transposition entry of this node (root only)
  i32 moveCount;   // records in the slice
  i32 bestScore;
  i32 ply;
  i32 sign;        // -1 at even plies, +1 at odd
  u64 colourMask[2];  // all ones / all zeros, alternating with the ply
  // Search state.
  u64 pawnKey;      // pawns the cached pawn score was computed for
  u64 openFiles;    // squares of files without pawns
  u64 lineMask;     // squares from which a move could expose the own king
  i32 pawnScore;
  i32 movesInStage;
  i32 legalMoves;   // legal moves made at this node
  i32 stage;
};

// A position as a game keeps it: the record with its move clocks. Copied by
// value: a game's undo list holds these, and a search starts from a copy.
struct GamePosition {
  Position position;
  i32 halfMoveClock;
  i32 fullMoveNumber;
};

class clsBoard {
 public:
  static constexpr int FRAME_COUNT = 128;
  static constexpr int MOVE_BUFFER_SIZE = 12800;
  static constexpr const char* START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

  clsBoard();
  virtual ~clsBoard() = default;
  clsBoard(const clsBoard&) = delete;
  clsBoard& operator=(const clsBoard&) = delete;

  // --- position and keys (board.cpp)
  const Position& position() const { return pos_; }
  Position& position() { return pos_; }
  // (epSquare - unmoved) ^ sideKey ^ pieceKey ^ occupied
  u64 positionKey() const;
  u64 computePieceKey() const;
  kobubase::clsOutBuffer& output() { return output_; }
  GamePosition gamePosition() const { return GamePosition{pos_, halfMoveClock_, fullMoveNumber_}; }
  // Takes the record as it stands (its incremental score included) and resets the frames.
  void setGamePosition(const GamePosition& game);

  // --- frames (board.cpp)
  void resetFrames();
  // Copies the position into the current frame and rebuilds the last-move record.
  void savePosition();
  void restorePosition() { pos_ = frame_->saved; }
  PlyFrame& frame() { return *frame_; }
  PlyFrame* rootFrame() { return frames_; }
  PlyFrame* currentFrame() { return frame_; }
  // Steps to the child frame, whose move slice starts empty where this one ends.
  void pushFrame() {
    Move* start = frame_->end;
    ++frame_;
    frame_->first = frame_->current = frame_->end = start;
    frame_->moveCount = 0;
  }
  void popFrame() { --frame_; }
  const Move& lastMoveRecord() const { return lastMove_; }

  // --- FEN and board text (fen.cpp)
  void readFEN(std::string_view text);
  std::string fen() const;  // four fields, no clocks
  std::string boardText() const;
  char pieceAt(u64 square) const;
  void printBoard() { printBoard(output_); }
  void printBoard(kobubase::clsOutBuffer& out);
  i32 halfMoveClock() const { return halfMoveClock_; }
  i32 fullMoveNumber() const { return fullMoveNumber_; }
  const std::vector<std::string>& epdOperations() const { return epdOperations_; }

  // --- generation (movegen.cpp)
  // Stage -1: all moves; 0..5: one group each, appended. Returns the frame's move count.
  int generate(int stage);

  // --- make and legality (makemove.cpp)
  void make(const Move& move);
  void finish() {
    std::swap(pos_.masks[US], pos_.masks[THEM]);
    pos_.side ^= 1;
    pos_.score = -pos_.score;
  }
  bool squareAttacked(u64 square) const;
  bool ownKingAttacked() const { return squareAttacked(pos_.masks[KING] & pos_.masks[US]); }
  // Squares from which a moving piece could expose the side to move's king:
  // the rays from the king that hold an opponent's slider of their kind.
  u64 lineMask() const;
  // Whether a move needs the attack test after it is made: when in check, for
  // king moves and en passant, and for pieces leaving the line mask.
  static bool mayExposeKing(const Move& move, u64 lineMask, bool inCheck) {
    return inCheck || (move.from & lineMask) || (move.flags & (mf::TYPE | mf::EN_PASSANT)) == KING ||
           (move.flags & mf::EN_PASSANT);
  }
  // Drops the current frame's illegal records; returns the number kept.
  int legalFilter();
  // Saves, generates and filters; returns the legal move count of the current frame.
  int generateLegal();
  // The legal move with these squares and promotion letter, left in the current frame, or null.
  const Move* findLegalMove(u64 from, u64 to, char promotion);
  // The legal move with the record's squares and promotion, left in the current frame, or null.
  const Move* findLegalMove(const Move& record) {
    return findLegalMove(record.from, record.to, PIECE_LETTERS[record.promotionType() & 7]);
  }
  // Plays the legal move with these squares and promotion letter; false leaves the position.
  bool playMove(u64 from, u64 to, char promotion);
  // Makes a generated move for real: en-passant square, make, finish, the
  // move clocks, and the new position saved into the current frame.
  void playRecord(const Move& move);
  // The position part of playRecord only: make, en-passant square, finish.
  void makePlayed(const Move& move);
  i32 castlingBonus() const { return castlingBonus_; }
  void setCastlingBonus(i32 bonus) { castlingBonus_ = bonus; }

  // --- notation (notation.cpp)
  // Coordinate form (e2e4, e7e8=q) or long form (Pe2-e4, Pe4xPd5); "------" for none.
  static std::string moveText(const Move* move, bool longForm);
  bool readCoordinateMove(std::string_view text);
  // The legal move the coordinate text names, left in the current frame, or null.
  const Move* findCoordinateMove(std::string_view text);
  // Standard algebraic notation of a legal move of the current position, with
  // "+" or "#" when it checks or mates (Nbd7, exd6, e8=Q+, O-O-O#). For the
  // root frame of a played game: the position is left as it was, the frame's
  // move list is not.
  std::string sanText(const Move& move);
  // The matching legal move of the current position (left in the current frame), or null.
  const Move* readSANMove(std::string_view text);
  static std::string sanPattern(std::string_view san);

  // --- perft (perft.cpp)
  // What perft answers when the side to move can capture a king: the count
  // is all ones then, as programs that compare perft output expect.
  static constexpr u64 KING_CAPTURE_COUNT = ~u64{0};
  u64 perft(int depth, bool divide);
  u64 nodes() const { return nodes_; }
  // A long count talks to its caller: perftPoll is asked about every
  // PERFT_POLL_NODES inner nodes and a true answer ends the count early (the
  // count so far is returned and perftStopped() holds); perftRootDone hears
  // each root move with its count. Either may be empty.
  static constexpr int PERFT_POLL_NODES = 4096;
  std::function<bool()> perftPoll;
  std::function<void(const Move& move, u64 count)> perftRootDone;
  bool perftStopped() const { return perftStop_; }

 protected:
  // Called after a move typed by the user or sent by the interface was played.
  virtual void onMovePlayed() {}
  void prepareCheckInfo();

  Position pos_{};
  PlyFrame* frame_ = frames_;
  PlyFrame frames_[FRAME_COUNT]{};
  Move moveBuffer_[MOVE_BUFFER_SIZE + 1]{};
  Move lastMove_{};
  Move* write_ = moveBuffer_;  // generation write pointer
  u32 template_ = 0;           // generator flags template
  i32 castlingBonus_ = 0;
  i32 halfMoveClock_ = 0;
  i32 fullMoveNumber_ = 1;
  std::vector<std::string> epdOperations_;
  u64 nodes_ = 0;
  int maxDepth_ = 0;
  bool divide_ = false;
  bool perftStop_ = false;
  int perftCountdown_ = PERFT_POLL_NODES;
  kobubase::clsOutBuffer output_;

 private:
  // Generators (movegen.cpp).
  void addMove(u64 from, u64 to);
  void addCapture(u64 from, u64 to);
  void addPromotions(Move* record);
  void pawnCaptures();
  void enPassantCaptures();
  void pawnPushes();
  void leaperMoves(const u64* attacks, u64 pieces, bool captures);
  void sliderMoves(int firstDirection, u64 pieces, bool captures);
  void castlingMoves();
  void generateGroup(int group);
  u64 perftNode(int remaining);
};

}  // namespace kbuChess

#include "chess/board/make_inline.h"  // IWYU pragma: export
