#include "chess/book/book_commands.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "base/text.h"

#include "chess/book/book.h"
#include "chess/book/book_file.h"
#include "chess/book/book_paths.h"
#include "chess/book/pgn_file.h"

namespace kbuChess {
namespace {

constexpr int HANDLED = 3;

int usage(kobubase::clsOutBuffer& out, std::initializer_list<const char*> lines) {
  for (const char* line : lines) out.print(line);
  return HANDLED;
}

int loadBookUsage(kobubase::clsOutBuffer& out) {
  return usage(out, {"# loadbook book [limit]", "# book: filename.sbk",
                     "# limit: load only positions played more than 'limit' times"});
}

int saveBookUsage(kobubase::clsOutBuffer& out) {
  return usage(out, {"# savebook book [limit]", "# book: filename.sbk",
                     "# limit: save only positions played more than 'limit' times"});
}

int mergeBooksUsage(kobubase::clsOutBuffer& out) {
  return usage(out, {"# mergebooks books_path new_book.sbk [limit]", "# merge .sbk book files into new_book.sbk file"});
}

int buildBooksUsage(kobubase::clsOutBuffer& out) {
  return usage(out, {"# buildbooks path_of_pgn_files moves_count [type]", "# buildbooks d:\\games d:\\talvena\\talvena.sbk 10",
                     "# type: 0=book, 1=extract FEN", "# NB: use \"path\" if you want to use path with embedded spaces"});
}

int cvBooksUsage(kobubase::clsOutBuffer& out) {
  // These usage lines are the command's historical ones, kept as they stand.
  return usage(out, {"# filterbooks books_path filter_options", "# sort .sbk book files into new_book.sb2 file",
                     "# filter options will be available in the future"});
}

// The optional limit word at `index`: absent is 0; anything but a whole number is refused.
std::optional<int> limitArgument(const std::vector<std::string>& words, std::size_t index) {
  return words.size() > index ? wholeNumber(words[index]) : std::optional<int>(0);
}

bool sameFile(const std::string& a, const std::string& b) {
  std::error_code error;
  return std::filesystem::equivalent(a, b, error);
}

// What "\buildbooks" was asked to do.
struct BuildRequest {
  std::string source;
  std::string target;
  int movesCount = 0;
  int type = clsPGNFile::TYPE_BOOK;
};

// Either "FOLDER MOVES_COUNT [TYPE]" or "FOLDER BOOKFILE MOVES_COUNT [TYPE]".
std::optional<BuildRequest> parseBuildRequest(const std::vector<std::string>& words) {
  if (words.size() < 2) return std::nullopt;
  BuildRequest request;
  request.source = words[0];
  const bool namedTarget = !wholeNumber(words[1]).has_value();
  const std::size_t countIndex = namedTarget ? 2 : 1;
  if (words.size() <= countIndex) return std::nullopt;
  const std::optional<int> moves = wholeNumber(words[countIndex]);
  const std::optional<int> type = limitArgument(words, countIndex + 1);
  if (!moves || *moves <= 0 || !type || (*type != clsPGNFile::TYPE_BOOK && *type != clsPGNFile::TYPE_FEN)) {
    return std::nullopt;
  }
  request.movesCount = *moves;
  request.type = *type;
  const std::string extension = request.type == clsPGNFile::TYPE_BOOK ? ".sbk" : ".txt";
  request.target = namedTarget ? withExtension(words[1], extension) : besidePath(request.source, extension);
  return request;
}

// Says why a book did not load when the file itself cannot be opened; the
// loader reports what is wrong inside a file it could open.
void reportUnreadable(const std::string& path, kobubase::clsOutBuffer& out) {
  errno = 0;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) {
    out.print(kobubase::errorLine(errno ? errno : ENOENT));
  } else {
    std::fclose(file);
  }
}

}  // namespace

int commandLoadBook(clsBook& book, const std::string& args, kobubase::clsOutBuffer& out) {
  const std::vector<std::string> words = kobubase::splitArguments(args);
  const std::optional<int> limit = limitArgument(words, 1);
  if (words.empty() || !limit) return loadBookUsage(out);
  out.print("# wait...\r", false);
  if (loadBook(book, words[0], *limit, out)) {
    out.print("# book " + words[0] + " loaded with " + std::to_string(book.count()) + " positions");
  } else {
    reportUnreadable(words[0], out);
    out.print("# error loading " + words[0]);
  }
  return HANDLED;
}

int commandSaveBook(clsBook& book, const std::string& args, kobubase::clsOutBuffer& out) {
  const std::vector<std::string> words = kobubase::splitArguments(args);
  const std::optional<int> limit = limitArgument(words, 1);
  if (words.empty() || !limit) return saveBookUsage(out);
  out.print("# wait...\r", false);
  if (saveBook(book, words[0], *limit, out)) {
    out.print("# book " + words[0] + " saved");
  } else {
    out.print("# error saving " + words[0]);
  }
  return HANDLED;
}

// A book that does not load whole is reported, what it held is still merged,
// and the run ends with the error line instead of "# done".
int commandMergeBooks(const std::string& args, kobubase::clsOutBuffer& out) {
  const std::vector<std::string> words = kobubase::splitArguments(args);
  const std::optional<int> limit = limitArgument(words, 2);
  if (words.size() < 2 || !limit) return mergeBooksUsage(out);
  const std::string& target = words[1];
  clsBook merged;
  bool failed = false;
  std::size_t inputs = 0;
  for (const std::string& file : filesWithExtension(words[0], ".sbk")) {
    if (sameFile(file, target)) continue;  // the book being written is no input
    ++inputs;
    clsBook work;
    if (!loadBook(work, file, 0, out)) {
      out.print("# error loading " + file);
      failed = true;
    }
    out.print("# merging " + std::to_string(work.count()) + " positions from " + file);
    merged.merge(work);
  }
  if (inputs == 0) {  // a mistyped folder must not leave an empty book behind
    out.print("# no .sbk files in " + words[0]);
    out.print("# error merging books");
    return HANDLED;
  }
  out.print("# total positions " + std::to_string(merged.count()));
  out.print("# saving " + std::to_string(merged.count()) + " positions in " + target);
  if (!saveBook(merged, target, *limit, out)) {
    out.print("# can't save " + target);
    failed = true;
  }
  out.print(failed ? "# error merging books" : "# done");
  return HANDLED;
}

int commandBuildBooks(const std::string& args, kobubase::clsOutBuffer& out) {
  const std::optional<BuildRequest> request = parseBuildRequest(kobubase::splitArguments(args));
  if (!request) return buildBooksUsage(out);
  const std::vector<std::string> files = filesWithExtension(request->source, ".pgn");
  if (files.empty()) {
    out.print("# no .pgn files in " + request->source);
    return HANDLED;
  }
  clsPGNFile reader(out, request->movesCount, request->type);
  for (std::size_t i = 0; i < files.size(); ++i) {
    out.print("# reading file " + std::to_string(i + 1) + " of " + std::to_string(files.size()) + " : " + files[i]);
    reader.readFile(files[i]);
  }
  if (request->type == clsPGNFile::TYPE_BOOK) {
    out.print("# saving book " + request->target + " with " + std::to_string(reader.book().count()) + " positions");
    saveBook(reader.book(), request->target, 0, out);
  } else {
    reader.saveFENs(request->target, 0);
  }
  out.print("# " + std::to_string(reader.games()) + " games parsed!");
  return HANDLED;
}

// Each book is written again in key order as ".sb2", then written as ".sb3"
// and read back to check that the copy holds the same positions.
int commandCvBooks(const std::string& args, kobubase::clsOutBuffer& out) {
  const std::vector<std::string> words = kobubase::splitArguments(args);
  if (words.empty()) return cvBooksUsage(out);
  const std::vector<std::string> files = filesWithExtension(words[0], ".sbk");
  if (files.empty()) out.print("# no .sbk files in " + words[0]);
  for (std::size_t i = 0; i < files.size(); ++i) {
    out.print("# reading book " + std::to_string(i + 1) + " of " + std::to_string(files.size()) + " : " + files[i]);
    clsBook book;
    if (!loadBook(book, files[i], 0, out)) {
      out.print("# error loading " + files[i]);
      continue;
    }
    const std::string base = std::filesystem::path(files[i]).replace_extension().string();
    saveBook(book, base + ".sb2", 0, out);
    out.print("\n# test");
    clsBook copy;
    const bool same = saveBook(book, base + ".sb3", 0, out) && loadBook(copy, base + ".sb3", 0, out) &&
                      copy.count() == book.count() &&
                      std::equal(book.records().begin(), book.records().end(), copy.records().begin(),
                                 [](const BookRecord& a, const BookRecord& b) {
                                   return a.key == b.key && a.wins == b.wins && a.losses == b.losses &&
                                          a.draws == b.draws;
                                 });
    out.print(same ? "# ok" : "# bad saved book!");
  }
  return HANDLED;
}

// One line per candidate, worst first: "# e2e4  wins 10 losses 4 draws 6 score 650".
int commandListBook(clsBook& book, clsBoard& board, kobubase::clsOutBuffer& out) {
  std::vector<clsBookEntryExt> list;
  if (book.listCandidates(board, list) == 0) {
    out.print("# no book moves found");
    return HANDLED;
  }
  for (std::size_t i = 0; i < list.size(); ++i) {
    const clsBookEntryExt& c = list[i];
    const bool noText = c.move.empty() || c.move == "------";
    out.print("# " + (noText ? std::string(" ???") : c.move) + "  wins " + std::to_string(c.wins) + " losses " +
              std::to_string(c.losses) + " draws " + std::to_string(c.draws) + " score " +
              std::to_string(c.score()) + (i + 1 == list.size() ? " <--- best entry" : ""));
  }
  return HANDLED;
}

int commandBk(clsBook& book, clsBoard& board, kobubase::clsOutBuffer& out) {
  std::vector<clsBookEntryExt> list;
  if (book.listCandidates(board, list) == 0) {
    out.print(" no book moves found\n\n");
  } else {
    out.print(" best book move: " + list.back().move + "\n\n");
  }
  return HANDLED;
}

void loadStartupBook(clsBook& book, const kobubase::clsOptions& options, const std::string& programDir,
                     kobubase::clsOutBuffer& out) {
  std::string file = options.get("book");
  if (file.empty()) {
    std::error_code error;
    const std::string beside = (std::filesystem::path(programDir) / "talvena.sbk").string();
    if (std::filesystem::is_regular_file("talvena.sbk", error)) {
      file = "talvena.sbk";
    } else if (!programDir.empty() && std::filesystem::is_regular_file(beside, error)) {
      file = beside;
    } else {
      return;  // playing without a book is normal
    }
  }
  if (loadBook(book, file, 0, out)) {
    out.print("# book " + file + " loaded with " + std::to_string(book.count()) + " positions");
  } else {
    reportUnreadable(file, out);
    out.print("# error loading " + file);
  }
}

}  // namespace kbuChess
