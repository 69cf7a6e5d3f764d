#pragma once
// Helpers of the book tests: a private temporary folder, whole-file bytes and
// an output sink that keeps its lines instead of printing them.
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "base/output.h"

namespace bookTest {

using Bytes = std::vector<std::uint8_t>;

// A fresh folder under /tmp, removed with everything in it at the end.
struct TempFolder {
  std::filesystem::path path = std::filesystem::temp_directory_path() /
                               ("talvena-book-" + std::to_string(::getpid()) + "-" + std::to_string(serial()++));
  TempFolder() { std::filesystem::create_directories(path); }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  std::string file(const std::string& name) const { return (path / name).string(); }
  static int& serial() {
    static int next = 0;
    return next;
  }
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

// What a terminal shows of a line whose parts are separated by carriage
// returns: each part is written over the start of the line. Trailing blanks
// are dropped.
inline std::string onScreen(const std::string& line) {
  std::string screen;
  std::size_t at = 0;
  for (const char c : line) {
    if (c == '\r') {
      at = 0;
      continue;
    }
    if (at < screen.size())
      screen[at] = c;
    else
      screen += c;
    ++at;
  }
  while (!screen.empty() && screen.back() == ' ') screen.pop_back();
  return screen;
}

// The parts of a line between carriage returns, without trailing blanks.
inline std::vector<std::string> parts(const std::string& line) {
  std::vector<std::string> result(1);
  for (const char c : line) {
    if (c == '\r')
      result.emplace_back();
    else
      result.back() += c;
  }
  for (std::string& part : result) {
    while (!part.empty() && part.back() == ' ') part.pop_back();
  }
  return result;
}

// An output sink that keeps its lines and prints nothing.
struct Quiet : kobubase::clsOutBuffer {
  Quiet() {
    setEcho(false);
    setKeep(true);
  }
  std::vector<std::string> lines() { return takeAll(); }
};

}  // namespace bookTest
