#pragma once
// Helpers of the book tests: a private temporary folder, whole-file bytes and
// an output sink that keeps its lines instead of printing them.
#include <stdlib.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "base/output.h"

namespace bookTest {

using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;

// A fresh folder under /tmp, removed with everything in it at the end.
struct TempFolder {
  std::filesystem::path path;
  TempFolder() {
    char name[] = "/tmp/talvena-book-XXXXXX";
    path = ::mkdtemp(name);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  std::string file(const std::string& name) const { return (path / name).string(); }
};

inline Bytes readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
inline std::string readText(const std::string& path) {
  const Bytes bytes = readBytes(path);
  return std::string(bytes.begin(), bytes.end());
}
inline void writeText(const std::string& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }
inline void writeBytes(const std::string& path, const Bytes& bytes) {
  writeText(path, std::string(bytes.begin(), bytes.end()));
}

inline std::string withoutTrailingBlanks(const std::string& text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

// The parts of a line between carriage returns, without trailing blanks.
inline Lines parts(const std::string& line) {
  Lines result;
  for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
    end = line.find('\r', start);
    result.push_back(withoutTrailingBlanks(line.substr(start, end - start)));
  }
  return result;
}

// What a terminal shows of such a line: each part is written over the start
// of the line, so a shorter part must blank the tail of a longer one.
inline std::string onScreen(const std::string& line) {
  std::string screen;
  for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1) {
    end = line.find('\r', start);
    const std::string part = line.substr(start, end - start);
    screen.replace(0, std::min(part.size(), screen.size()), part);
  }
  return withoutTrailingBlanks(screen);
}

// An output sink that keeps its lines and prints nothing.
struct Quiet : kobubase::clsOutBuffer {
  Quiet() {
    setEcho(false);
    setKeep(true);
  }
  Lines lines() { return takeAll(); }
};

}  // namespace bookTest
