#pragma once
// Files for tests: a private temporary folder and whole-file reads and writes.
#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace testFiles {

using Bytes = std::vector<std::uint8_t>;

// A fresh folder under /tmp, removed with everything in it at the end.
struct TempFolder {
  std::filesystem::path path;
  TempFolder() {
    char name[] = "/tmp/talvena-test-XXXXXX";
    path = ::mkdtemp(name);
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path, ignored);
  }
  std::string file(const std::string& name) const { return (path / name).string(); }
  std::string dir() const { return path.string(); }
};

inline Bytes readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}
inline std::string readText(const std::string& path) {
  const Bytes bytes = readBytes(path);
  return std::string(bytes.begin(), bytes.end());
}
inline void writeText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}
inline void writeBytes(const std::string& path, const Bytes& bytes) {
  writeText(path, std::string(bytes.begin(), bytes.end()));
}

}  // namespace testFiles
