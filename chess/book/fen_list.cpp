// The FEN list of clsPGNFile (type 1): every position of the first plies of
// each game, written as text, one line per distinct position:
//   <FEN: placement, side, castling, en passant> <wins> <losses> <draws>
// with the counts from the point of view of the side to move, lines ended by
// CR LF, appended to the file.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "base/text.h"
#include "chess/book/pgn_file.h"

namespace kbuChess {
namespace {

std::uint64_t gamesOf(const clsFENResult& item) { return bookGames(item.wins, item.losses, item.draws); }

// Keeps the positions whose played figure (games / 2) is at least the limit.
void applyLimit(std::vector<clsFENResult>& list, std::int32_t limit) {
  std::size_t write = 0;
  for (std::size_t run = 0; run < list.size();) {
    std::size_t next = run;
    std::uint64_t games = 0;
    while (next < list.size() && list[next].fen == list[run].fen) games += gamesOf(list[next++]);
    if (static_cast<std::int64_t>(games / 2) >= limit) {
      for (std::size_t i = run; i < next; ++i, ++write) {
        if (write != i) list[write] = std::move(list[i]);
      }
    }
    run = next;
  }
  list.resize(write);
}

// Sums the counts of equal neighbours into one item; "...->" marks each tenth done.
void compact(std::vector<clsFENResult>& list, kobubase::clsOutBuffer& out) {
  std::size_t write = 0;
  const std::size_t tenth = std::max<std::size_t>(list.size() / 10, 1);
  for (std::size_t read = 0; read < list.size(); ++read) {
    if (write > 0 && list[write - 1].fen == list[read].fen) {
      list[write - 1].wins += list[read].wins;
      list[write - 1].losses += list[read].losses;
      list[write - 1].draws += list[read].draws;
    } else {
      if (write != read) list[write] = std::move(list[read]);
      ++write;
    }
    if ((read + 1) % tenth == 0) out.print("...->", false);
  }
  out.print("");
  list.resize(write);
}

}  // namespace

bool clsPGNFile::saveFENs(const std::string& path, std::int32_t limit) {
  out_.print("# sorting FEN(s) book...");
  std::stable_sort(fens_.begin(), fens_.end(),
                   [](const clsFENResult& a, const clsFENResult& b) { return a.fen < b.fen; });
  out_.print("# applying limit " + std::to_string(limit) + " to " + std::to_string(fens_.size()) + " fen strings");
  applyLimit(fens_, limit);
  out_.print("# compact...");
  compact(fens_, out_);
  out_.print("# saving FENs book (" + path);
  std::FILE* file = std::fopen(path.c_str(), "ab+");
  if (file == nullptr) {
    const int error = errno;
    out_.print(kobubase::errorLine(error));
    return false;
  }
  bool written = true;
  for (const clsFENResult& item : fens_) {
    const std::string line = item.fen + " " + std::to_string(item.wins) + " " + std::to_string(item.losses) + " " +
                             std::to_string(item.draws) + "\r\n";
    written = written && std::fwrite(line.data(), 1, line.size(), file) == line.size();
  }
  const int error = errno;
  if (std::fclose(file) != 0 || !written) {
    out_.print(kobubase::errorLine(error));
    return false;
  }
  out_.print("# saved " + std::to_string(fens_.size()) + " fens - cleaning up...");
  std::vector<clsFENResult>().swap(fens_);
  return true;
}

}  // namespace kbuChess
