#pragma once
// Arguments and file names of the book commands: whole numbers, and the files
// of a folder that carry one extension. Their words are split by
// kobubase::splitArguments, as every command's are.
#include <optional>
#include <string>
#include <vector>

namespace kbuChess {

// Limits, ply counts and types of the book commands are held within
// +-MAX_BOOK_NUMBER, a billion: more than any book's game count.
inline constexpr int MAX_BOOK_NUMBER = 1000000000;
// The whole number the word holds (optional sign, digits only), held within
// +-MAX_BOOK_NUMBER; nothing when the word is not a whole number.
std::optional<int> wholeNumber(const std::string& word);
// The files named by `where`, sorted by name: the file itself when it is one,
// else every file of the folder with the extension (".pgn"), in any case of
// letters. A last part "%.pgn" or "*.pgn" names the folder before it.
std::vector<std::string> filesWithExtension(const std::string& where, const std::string& extension);
// `where` without trailing separators and with the extension: a file gets its
// extension replaced, a folder gets it appended (games -> games.sbk).
std::string besidePath(const std::string& where, const std::string& extension);
// The name with the extension added when it has none.
std::string withExtension(const std::string& name, const std::string& extension);

}  // namespace kbuChess
