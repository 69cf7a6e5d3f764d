#include "chess/book/book_file.h"

#include <gtest/gtest.h>

#include "book_test_util.h"
#include "chess/book/book.h"

using namespace kbuChess;
using bookTest::Bytes;

namespace {

Bytes header(std::uint32_t count) {
  Bytes bytes{'K', 'B', 'U', 'B', 'K', 0, 1, 0, 0, 0};
  for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<std::uint8_t>(count >> (8 * i)));
  bytes.resize(46, 0);
  return bytes;
}

const Bytes TRAILER{'*', 'E', 'N', 'D', '*', 0};

// Three positions played 1, 2 and 100 times ((w + l + d) / 2 = 0, 1, 50).
clsBook threeBook() {
  clsBook book;
  for (const BookRecord& record : {BookRecord{0x1111, 1, 0, 0}, {0x2222, 1, 1, 1}, {0x3333, 50, 25, 25}})
    book.add(record);
  return book;
}

class BookFile : public ::testing::Test {
 protected:
  bookTest::TempFolder folder;
  bookTest::Quiet out;
  std::string path = folder.file("book.sbk");
};

}  // namespace

TEST_F(BookFile, RecordsAreVarintsAndLittleEndianKeysAndReloadToTheSameBytes) {
  clsBook book;
  ASSERT_TRUE(saveBook(book, path, 0, out));
  Bytes empty = header(0);
  empty.insert(empty.end(), TRAILER.begin(), TRAILER.end());
  EXPECT_EQ(bookTest::readBytes(path), empty);  // 52 bytes
  book.add(BookRecord{0x0102030405060708ull, 200, 0, 1});
  book.add(BookRecord{0xF1F2F3F4F5F6F7F8ull, 128, 300, 0});
  ASSERT_TRUE(saveBook(book, path, 0, out));
  Bytes expected = header(2);
  expected.insert(expected.end(), {0xC8, 0x01, 0x00, 0x01, 0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01,  //
                                   0x80, 0x01, 0xAC, 0x02, 0x00, 0xF8, 0xF7, 0xF6, 0xF5, 0xF4, 0xF3, 0xF2, 0xF1});
  expected.insert(expected.end(), TRAILER.begin(), TRAILER.end());
  EXPECT_EQ(bookTest::readBytes(path), expected);
  clsBook loaded;
  ASSERT_TRUE(loadBook(loaded, path, 0, out));
  ASSERT_TRUE(saveBook(loaded, folder.file("again.sbk"), 0, out));
  EXPECT_EQ(bookTest::readBytes(folder.file("again.sbk")), expected);
}

TEST_F(BookFile, LimitsCountHalfTheGamesAsExistingBooksExpect) {
  ASSERT_TRUE(saveBook(threeBook(), path, 0, out));
  EXPECT_EQ(bookTest::readBytes(path)[10], 3);
  ASSERT_TRUE(saveBook(threeBook(), path, 1, out));
  const Bytes bytes = bookTest::readBytes(path);
  EXPECT_EQ(Bytes(bytes.begin() + 10, bytes.begin() + 14), (Bytes{2, 0, 0, 0}));
  EXPECT_EQ(bytes.size(), 46u + 11 + 11 + 6);
  clsBook loaded;
  ASSERT_TRUE(loadBook(loaded, path, 0, out));
  EXPECT_EQ(loaded.count(), 2u);
  EXPECT_EQ(loaded.lookup(0x1111), nullptr);
  // Loading with a limit keeps the positions played at least that often.
  ASSERT_TRUE(saveBook(threeBook(), path, 0, out));
  for (auto [limit, kept] : {std::pair{0, 3u}, {1, 2u}, {2, 1u}, {50, 1u}, {51, 0u}}) {
    clsBook loaded;
    EXPECT_TRUE(loadBook(loaded, path, limit, out));
    EXPECT_EQ(loaded.count(), kept) << "limit " << limit;
  }
}

TEST_F(BookFile, ForeignAndMissingFilesAreRefusedAndTheBookKept) {
  ASSERT_TRUE(saveBook(threeBook(), path, 0, out));
  const Bytes good = bookTest::readBytes(path);
  clsBook book;
  book.add(BookRecord{0x9999, 1, 1, 1});
  for (auto [at, value] : {std::pair{4, 'X'}, {6, '\2'}}) {  // the magic word, the version
    Bytes bad = good;
    bad[at] = static_cast<std::uint8_t>(value);
    bookTest::writeBytes(path, bad);
    EXPECT_FALSE(loadBook(book, path, 0, out)) << at;
  }
  EXPECT_FALSE(loadBook(book, folder.file("missing.sbk"), 0, out));
  EXPECT_EQ(book.count(), 1u);
  EXPECT_TRUE(out.lines().empty());
}

TEST_F(BookFile, CutAtEveryLengthKeepsTheWholeRecordsRead) {
  ASSERT_TRUE(saveBook(threeBook(), path, 0, out));
  const Bytes good = bookTest::readBytes(path);
  const std::size_t recordEnds[] = {46 + 11, 46 + 22, 46 + 33};  // each record: 3 varint bytes and 8 key bytes
  for (std::size_t length = 0; length <= good.size(); ++length) {
    bookTest::writeBytes(path, Bytes(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length)));
    clsBook book;
    book.add(BookRecord{0x2222, 0, 0, 7});  // shares a key with the file
    book.add(BookRecord{0x9999, 1, 1, 1});
    const bool loaded = loadBook(book, path, 0, out);
    EXPECT_EQ(loaded, length == good.size()) << length;
    const std::size_t whole = static_cast<std::size_t>(
        std::count_if(std::begin(recordEnds), std::end(recordEnds), [&](std::size_t end) { return length >= end; }));
    const std::size_t newKeys = whole - (whole >= 2 ? 1 : 0);
    EXPECT_EQ(book.count(), 2 + newKeys) << length;
    EXPECT_TRUE(book.isSorted());
    EXPECT_EQ(book.lookup(0x9999)->draws, 1u);
    EXPECT_EQ(book.lookup(0x2222)->draws, whole >= 2 ? 8u : 7u) << length;
  }
  const std::vector<std::string> lines = out.lines();
  const std::string progress =
      "#     loading 3 positions\r# 0%                     \r# 33%                    \r# 66%                    \r";
  EXPECT_EQ(lines[lines.size() - 2], progress + "# book " + path + " has no end mark");
}
