#pragma once
// Every file the program reads or writes on a user's behalf goes through
// these helpers, so that a hostile or mistaken path costs neither data nor the
// program:
// - only regular files are opened (a FIFO, a device or a folder is refused at
//   once instead of blocking the command loop or reading without end), and
//   opening never waits on a FIFO;
// - text files read whole are refused beyond MAX_TEXT_FILE_BYTES;
// - a file that replaces the user's file is written beside it under a
//   temporary name, synced and renamed over it, so a full disk or a failed
//   write leaves the old file as it was.
// Failures come back as one "# error ..." line in `error`.
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <string_view>

namespace kobubase {

// The largest text file read whole: soul files, tournament and results files,
// EPD files, FEN lists that are appended to.
inline constexpr std::uint64_t MAX_TEXT_FILE_BYTES = std::uint64_t{64} << 20;

// "# error: PATH is not a regular file".
std::string notRegularLine(const std::string& path);

// An existing regular file opened for binary reading, or nullptr.
std::FILE* openForReading(const std::string& path, std::string& error);
// A regular file, created when missing, opened for binary appending, or nullptr.
std::FILE* openForAppending(const std::string& path, std::string& error);

// The whole of a regular file of at most `limit` bytes.
bool readWholeFile(const std::string& path, std::string& text, std::string& error,
                   std::uint64_t limit = MAX_TEXT_FILE_BYTES);

// Fills the file it is given (it may seek) and returns 0 or a system error number.
using FileFiller = std::function<int(std::FILE*)>;
// Replaces `path` (a regular file or none yet; a link is followed) with what
// `fill` writes; on failure the old file stands untouched.
bool writeFileAtomically(const std::string& path, const FileFiller& fill, std::string& error);
bool writeFileAtomically(const std::string& path, std::string_view bytes, std::string& error);

}  // namespace kobubase
