#include "chess/book/book_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "base/file_io.h"
#include "base/text.h"
#include "chess/book/book.h"

namespace kbuChess {
namespace {

constexpr std::size_t IO_BUFFER_BYTES = 1 << 16;

bool keepByLimit(const BookRecord& r, std::int32_t limit) {
  return static_cast<std::int64_t>(bookPlayed(r.wins, r.losses, r.draws)) >= limit;
}

// Buffered little-endian writer; remembers the first failure.
class clsByteWriter {
 public:
  explicit clsByteWriter(std::FILE* file) : file_(file) { buffer_.reserve(IO_BUFFER_BYTES); }
  void bytes(const char* data, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) byte(static_cast<std::uint8_t>(data[i]));
  }
  void byte(std::uint8_t value) {
    buffer_.push_back(value);
    if (buffer_.size() == IO_BUFFER_BYTES) flush();
  }
  void u32le(std::uint32_t value) {
    for (int i = 0; i < 4; ++i) byte(static_cast<std::uint8_t>(value >> (8 * i)));
  }
  void u64le(std::uint64_t value) {
    for (int i = 0; i < 8; ++i) byte(static_cast<std::uint8_t>(value >> (8 * i)));
  }
  void varint(std::uint32_t value) {
    while (value >= 0x80) {
      byte(static_cast<std::uint8_t>(value | 0x80));
      value >>= 7;
    }
    byte(static_cast<std::uint8_t>(value));
  }
  bool flush() {
    if (!buffer_.empty() && std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size() && !error_) {
      error_ = errno ? errno : EIO;
    }
    buffer_.clear();
    return error_ == 0;
  }
  int error() const { return error_; }

 private:
  std::FILE* file_;
  std::vector<std::uint8_t> buffer_;
  int error_ = 0;
};

// Buffered reader; every read past the end of the file says so.
class clsByteReader {
 public:
  explicit clsByteReader(std::FILE* file) : file_(file), buffer_(IO_BUFFER_BYTES) {}
  bool byte(std::uint8_t& value) {
    if (next_ == end_ && !refill()) return false;
    value = buffer_[next_++];
    return true;
  }
  bool bytes(char* data, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
      std::uint8_t value;
      if (!byte(value)) return false;
      data[i] = static_cast<char>(value);
    }
    return true;
  }
  bool u32le(std::uint32_t& value) {
    std::uint8_t raw[4];
    if (!bytes(reinterpret_cast<char*>(raw), 4)) return false;
    value = raw[0] | (raw[1] << 8) | (raw[2] << 16) | (std::uint32_t{raw[3]} << 24);
    return true;
  }
  bool u64le(std::uint64_t& value) {
    std::uint8_t raw[8];
    if (!bytes(reinterpret_cast<char*>(raw), 8)) return false;
    value = 0;
    for (int i = 7; i >= 0; --i) value = (value << 8) | raw[i];
    return true;
  }
  // A varint cut by the end of the file reads as 0; groups beyond 32 bits are dropped.
  std::uint32_t varint() {
    std::uint32_t value = 0;
    for (int shift = 0;; shift += 7) {
      std::uint8_t b;
      if (!byte(b)) return 0;
      if (shift < 32) value |= static_cast<std::uint32_t>(b & 0x7F) << shift;
      if ((b & 0x80) == 0) return value;
    }
  }

 private:
  bool refill() {
    next_ = 0;
    end_ = std::fread(buffer_.data(), 1, buffer_.size(), file_);
    return end_ > 0;
  }
  std::FILE* file_;
  std::vector<std::uint8_t> buffer_;
  std::size_t next_ = 0, end_ = 0;
};

// Prints "# P%" and a carriage return each time the whole percentage changes.
class clsPercentLine {
 public:
  clsPercentLine(kobubase::clsOutBuffer& out, std::uint64_t total) : out_(out), total_(total) {}
  void at(std::uint64_t index) {
    if (index < nextIndex_) return;
    const std::uint64_t percent = index * 100 / total_;
    out_.print("# " + std::to_string(percent) + "%\r", false);
    nextIndex_ = ((percent + 1) * total_ + 99) / 100;  // first index of the next percentage
  }

 private:
  kobubase::clsOutBuffer& out_;
  std::uint64_t total_;
  std::uint64_t nextIndex_ = 0;
};

// Returns 0, or the system error number of the failed write.
int writeBook(std::FILE* file, const clsBook& book, std::int32_t limit) {
  clsByteWriter writer(file);
  writer.bytes(BOOK_MAGIC, sizeof BOOK_MAGIC);
  writer.u32le(BOOK_VERSION);
  writer.u32le(static_cast<std::uint32_t>(book.count()));
  for (int i = 0; i < BOOK_RESERVED_BYTES; ++i) writer.byte(0);
  std::uint32_t written = 0;
  for (const BookRecord& r : book.records()) {
    if (!keepByLimit(r, limit)) continue;
    writer.varint(r.wins);
    writer.varint(r.losses);
    writer.varint(r.draws);
    writer.u64le(r.key);
    ++written;
  }
  writer.bytes(BOOK_TRAILER, sizeof BOOK_TRAILER);
  if (!writer.flush()) return writer.error();
  if (written < book.count()) {
    std::uint8_t count[4];
    for (int i = 0; i < 4; ++i) count[i] = static_cast<std::uint8_t>(written >> (8 * i));
    if (std::fseek(file, BOOK_COUNT_OFFSET, SEEK_SET) != 0 || std::fwrite(count, 1, 4, file) != 4) {
      return errno ? errno : EIO;
    }
  }
  return 0;
}

}  // namespace

bool saveBook(const clsBook& book, const std::string& path, std::int32_t limit, kobubase::clsOutBuffer& out) {
  std::string error;
  const bool saved = kobubase::writeFileAtomically(
      path, [&](std::FILE* file) { return writeBook(file, book, limit); }, error);
  if (!saved) out.print(error);
  return saved;
}

bool loadBook(clsBook& book, const std::string& path, std::int32_t limit, kobubase::clsOutBuffer& out) {
  std::string error;
  std::FILE* file = kobubase::openForReading(path, error);
  if (file == nullptr) return false;
  clsByteReader reader(file);
  char magic[6];
  std::uint32_t version = 0, count = 0;
  if (!reader.bytes(magic, 6) || std::memcmp(magic, BOOK_MAGIC, 5) != 0 || !reader.u32le(version) ||
      version != BOOK_VERSION || !reader.u32le(count)) {
    std::fclose(file);
    return false;
  }
  out.print("#     loading " + std::to_string(count) + " positions\r", false);
  for (int i = 0; i < BOOK_RESERVED_BYTES; ++i) reader.varint();

  // Entries are appended as they come; a book that already held entries, or a
  // file out of key order, is put back in order once at the end.
  bool ordered = book.empty();
  clsPercentLine progress(out, count);
  std::uint32_t read = 0;
  for (; read < count; ++read) {
    progress.at(read);
    BookRecord r;
    r.wins = reader.varint();
    r.losses = reader.varint();
    r.draws = reader.varint();
    if (!reader.u64le(r.key)) break;
    if (!keepByLimit(r, limit)) continue;
    if (!book.empty() && book.at(book.count() - 1).key >= r.key) ordered = false;
    book.append(r);
  }
  if (!ordered) book.sortByKey();

  char trailer[6];
  const bool complete = read == count && reader.bytes(trailer, 6) && std::memcmp(trailer, BOOK_TRAILER, 5) == 0;
  std::fclose(file);
  if (complete) {
    out.print("# ok  ");
  } else if (read < count) {
    out.print("# book " + path + " ends after " + std::to_string(read) + " of " + std::to_string(count) +
              " positions");
  } else {
    out.print("# book " + path + " has no end mark");
  }
  return complete;
}

}  // namespace kbuChess
