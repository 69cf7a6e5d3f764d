#pragma once
// The book commands of the console: each takes the text after the command
// word, prints its usage lines or its messages through `out`, and returns the
// dispatcher's code (0 handled, 3 handled with output).
#include <string>

#include "base/options.h"
#include "base/output.h"
#include "chess/board/board.h"

namespace kbuChess {

class clsBook;

int commandLoadBook(clsBook& book, const std::string& args, kobubase::clsOutBuffer& out);
int commandSaveBook(clsBook& book, const std::string& args, kobubase::clsOutBuffer& out);
int commandMergeBooks(const std::string& args, kobubase::clsOutBuffer& out);
int commandBuildBooks(const std::string& args, kobubase::clsOutBuffer& out);
int commandCvBooks(const std::string& args, kobubase::clsOutBuffer& out);
// Candidates of the board's position, one per line.
int commandListBook(clsBook& book, clsBoard& board, kobubase::clsOutBuffer& out);
// The xboard "bk" reply for the board's position.
int commandBk(clsBook& book, clsBoard& board, kobubase::clsOutBuffer& out);
// Loads the book named by the run-time option "book", else "talvena.sbk" from the
// working directory or beside the program (programDir); no book is no error.
void loadStartupBook(clsBook& book, const kobubase::clsOptions& options, const std::string& programDir,
                     kobubase::clsOutBuffer& out);

}  // namespace kbuChess
