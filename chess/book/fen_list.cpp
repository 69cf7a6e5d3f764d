// The FEN list of clsPGNFile (type 1): every position of the first plies of
// each game, written as text, one line per distinct position:
//   <FEN: placement, side, castling, en passant> <wins> <losses> <draws>
// with the counts from the point of view of the side to move, lines ended by
// CR LF, appended to the file. The old lines and the new ones are written to a
// temporary file that replaces the list only when all of it was written.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "base/file_io.h"
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

int writeFailure() {
  return errno ? errno : EIO;
}

// The lines already in the list, copied ahead of the new ones (the list is appended to).
int copyExisting(const std::string& path, std::FILE* to) {
  std::error_code missing;
  if (!std::filesystem::exists(path, missing)) return 0;
  std::string error;
  std::FILE* from = kobubase::openForReading(path, error);
  if (from == nullptr) return writeFailure();
  std::vector<char> chunk(1 << 16);
  int result = 0;
  std::size_t got;
  while (result == 0 && (got = std::fread(chunk.data(), 1, chunk.size(), from)) > 0) {
    if (std::fwrite(chunk.data(), 1, got, to) != got) result = writeFailure();
  }
  if (result == 0 && std::ferror(from)) result = writeFailure();
  std::fclose(from);
  return result;
}

int writeLine(const clsFENResult& item, std::FILE* file) {
  const std::string line = item.fen + " " + std::to_string(item.wins) + " " + std::to_string(item.losses) + " " +
                           std::to_string(item.draws) + "\r\n";
  return std::fwrite(line.data(), 1, line.size(), file) == line.size() ? 0 : writeFailure();
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
  std::string error;
  const bool saved = kobubase::writeFileAtomically(
      path,
      [&](std::FILE* file) {
        int result = copyExisting(path, file);
        for (std::size_t i = 0; i < fens_.size() && result == 0; ++i) result = writeLine(fens_[i], file);
        return result;
      },
      error);
  if (!saved) {
    out_.print(error);
    out_.print("# FEN list " + path + " not saved");
    return false;
  }
  out_.print("# saved " + std::to_string(fens_.size()) + " fens - cleaning up...");
  std::vector<clsFENResult>().swap(fens_);
  return true;
}

}  // namespace kbuChess
