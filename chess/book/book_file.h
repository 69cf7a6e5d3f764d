#pragma once
// The ".sbk" book file: the whole book written as a flat list of positions
// with their game counts, and read back into a book. These two functions are
// the only code that touches the file.
//
// Byte map, all integers little-endian:
//   offset 0     6 bytes  magic "KBUBK" and a zero byte
//   offset 6     4 bytes  version, u32, 1
//   offset 10    4 bytes  position count, u32
//   offset 14   32 bytes  reserved, zero
//   offset 46             records, back to back, no padding:
//                           wins, losses, draws as unsigned varints (7 bits a
//                           byte, low group first, 0x80 = more bytes follow),
//                           then the 8-byte book key
//   end - 6      6 bytes  trailer "*END*" and a zero byte
//
// Limits: a position is kept (on load) or written (on save) only when its
// played figure, games / 2 rounded down, is at least the limit.
#include <cstdint>
#include <string>

#include "base/output.h"

namespace kbuChess {

class clsBook;

inline constexpr char BOOK_MAGIC[6] = {'K', 'B', 'U', 'B', 'K', '\0'};
inline constexpr char BOOK_TRAILER[6] = {'*', 'E', 'N', 'D', '*', '\0'};
inline constexpr std::uint32_t BOOK_VERSION = 1;
inline constexpr long BOOK_COUNT_OFFSET = 10;
inline constexpr int BOOK_RESERVED_BYTES = 32;
inline constexpr int BOOK_HEADER_BYTES = 46;

// Writes the book through a temporary file renamed over `path`; false (with an
// "# error" line) when it cannot be written, and then the old file stands.
bool saveBook(const clsBook& book, const std::string& path, std::int32_t limit, kobubase::clsOutBuffer& out);
// Adds the file's positions to the book. False when the file is missing, is not
// a book, or ends early; the positions read before the end stay in the book.
bool loadBook(clsBook& book, const std::string& path, std::int32_t limit, kobubase::clsOutBuffer& out);

}  // namespace kbuChess
