#include "chess/book/book_commands.h"

#include <gtest/gtest.h>

#include "book_test_util.h"
#include "chess/book/book.h"
#include "chess/book/book_file.h"

using namespace kbuChess;
using bookTest::Lines;

namespace {

class BookCommands : public ::testing::Test {
 protected:
  BookCommands() {
    std::filesystem::create_directories(games);
    bookTest::writeText(games + "/b.pgn", "1. e4 e5 1-0\n1. e4 c5 0-1\n");
    bookTest::writeText(games + "/a.PGN", "1. d4 d5 2. c4 1/2-1/2\n");
    bookTest::writeText(games + "/notes.txt", "1. h4 *\n");
  }
  // Writes a book of these records, quietly.
  void saveRecords(const std::string& path, std::initializer_list<BookRecord> records) {
    clsBook book;
    for (const BookRecord& record : records) book.add(record);
    ASSERT_TRUE(saveBook(book, path, 0, out));
    out.lines();
  }
  bookTest::TempFolder folder;
  bookTest::Quiet out;
  std::string games = folder.file("my games");
};

}  // namespace

// A command without its arguments, or with no moves to read, prints its usage.
TEST_F(BookCommands, MissingArgumentsPrintTheUsage) {
  for (const char* args : {"folder", "folder 0"}) {
    commandBuildBooks(args, out);
    EXPECT_EQ(out.lines().front(), "# buildbooks path_of_pgn_files moves_count [type]") << args;
  }
  commandMergeBooks("onlyone", out);
  EXPECT_EQ(out.lines().front(), "# mergebooks books_path new_book.sbk [limit]");
  commandCvBooks("", out);
  EXPECT_EQ(out.lines().size(), 3u);
}

TEST_F(BookCommands, BuildBooksBesideTheFolderThenLoadAndSave) {
  EXPECT_EQ(commandBuildBooks("\"" + games + "\" 20", out), 3);
  Lines lines = out.lines();
  EXPECT_EQ(lines[0], "# reading file 1 of 2 : " + games + "/a.PGN");
  EXPECT_EQ(lines[2], "# reading file 2 of 2 : " + games + "/b.pgn");
  EXPECT_EQ(lines[lines.size() - 2], "# saving book " + games + ".sbk with 6 positions");
  EXPECT_EQ(lines.back(), "# 3 games parsed!");

  clsBook book;
  commandLoadBook(book, "\"" + games + ".sbk\"", out);
  lines = out.lines();
  ASSERT_EQ(lines.size(), 2u);
  // Progress overwrites itself on one line; blanks leave no tail of a longer part.
  EXPECT_EQ(
      lines[0],
      "# wait...\r#     loading 6 positions\r# 0%                     \r# 16%                    "
      "\r# 33%                    \r# 50%                    \r# 66%                    \r# 83%                    "
      "\r# ok                     ");
  EXPECT_EQ(lines[1], "# book " + games + ".sbk loaded with 6 positions");
  commandSaveBook(book, folder.file("copy.sbk") + " 1", out);
  EXPECT_EQ(out.lines(), (Lines{"# wait...\r# book " + folder.file("copy.sbk") + " saved"}));
  commandLoadBook(book, folder.file("nothing.sbk"), out);
  EXPECT_EQ(out.lines(), (Lines{"# wait...\r# error 2: No such file or directory",
                                "# error loading " + folder.file("nothing.sbk")}));
  commandSaveBook(book, folder.file("no/dir.sbk"), out);
  EXPECT_EQ(out.lines(),
            (Lines{"# wait...\r# error 2: No such file or directory", "# error saving " + folder.file("no/dir.sbk"),
                   "# " + folder.file("no/dir.sbk") + " is as it was"}));
}

TEST_F(BookCommands, BuildBooksToANamedFileOrFromOneFile) {
  commandBuildBooks("\"" + games + "\" " + folder.file("named") + " 1", out);
  clsBook book;
  EXPECT_TRUE(loadBook(book, folder.file("named.sbk"), 0, out));
  EXPECT_EQ(book.count(), 2u);  // one ply a game: the positions after 1.d4 and 1.e4
  commandBuildBooks("\"" + games + "/b.pgn\" 2", out);
  clsBook fromFile;
  EXPECT_TRUE(loadBook(fromFile, games + "/b.sbk", 0, out));
  EXPECT_EQ(fromFile.count(), 3u);
  commandBuildBooks(folder.file("nowhere") + " 2", out);
  EXPECT_EQ(out.lines().back(), "# no .pgn files in " + folder.file("nowhere"));
}

TEST_F(BookCommands, MergeBooksAddsEveryBookOfTheFolder) {
  const std::string books = folder.file("books");
  std::filesystem::create_directories(books);
  saveRecords(books + "/one.sbk", {{10, 1, 0, 0}, {20, 1, 0, 0}});
  saveRecords(books + "/two.sbk", {{20, 0, 1, 0}});
  commandMergeBooks(books + " " + books + "/all.sbk", out);
  const std::string progress = "# 0%                     \r# ";
  EXPECT_EQ(out.lines(),
            (Lines{"#     loading 2 positions\r" + progress + "50%                    \r# ok                     ",
                   "# merging 2 positions from " + books + "/one.sbk",
                   "#     loading 1 positions\r" + progress + "ok                     ",
                   "# merging 1 positions from " + books + "/two.sbk", "# total positions 2",
                   "# saving 2 positions in " + books + "/all.sbk", "# done"}));
  clsBook all;
  ASSERT_TRUE(loadBook(all, books + "/all.sbk", 0, out));
  EXPECT_EQ(all.lookup(20)->wins + all.lookup(20)->losses, 2u);
  out.lines();
  commandMergeBooks(books + " " + books + "/all.sbk", out);  // the output book is not merged into itself
  EXPECT_EQ(out.lines()[4], "# total positions 2");
  // A folder without books writes no book at all.
  const std::string missing = folder.file("nowhere");
  commandMergeBooks(missing + " " + folder.file("empty.sbk"), out);
  EXPECT_EQ(out.lines(), (Lines{"# no .sbk files in " + missing, "# error merging books"}));
  EXPECT_FALSE(std::filesystem::exists(folder.file("empty.sbk")));
}

TEST_F(BookCommands, ConvertedBooksAreTested) {
  const std::string books = folder.file("cv");
  std::filesystem::create_directories(books);
  saveRecords(books + "/one.sbk", {{10, 1, 2, 3}});
  commandCvBooks(books, out);
  const Lines lines = out.lines();
  EXPECT_EQ(lines.front(), "# reading book 1 of 1 : " + books + "/one.sbk");
  EXPECT_EQ(lines.back(), "# ok");
  EXPECT_EQ(bookTest::readBytes(books + "/one.sb2"), bookTest::readBytes(books + "/one.sbk"));
}

TEST_F(BookCommands, StartupBookComesFromTheOptionOrBesideTheProgram) {
  clsBook book;
  kobubase::clsOptions options;
  loadStartupBook(book, options, folder.path.string(), out);
  EXPECT_TRUE(out.lines().empty());
  saveRecords(folder.file("talvena.sbk"), {{10, 1, 2, 3}});
  loadStartupBook(book, options, folder.path.string(), out);
  EXPECT_EQ(out.lines().back(), "# book " + folder.file("talvena.sbk") + " loaded with 1 positions");
  options.set("book", folder.file("other.sbk"));
  loadStartupBook(book, options, folder.path.string(), out);
  EXPECT_EQ(out.lines(),
            (Lines{"# error 2: No such file or directory", "# error loading " + folder.file("other.sbk")}));
}
