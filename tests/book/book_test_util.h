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
class TempFolder {
 public:
  TempFolder() {
    static int serial = 0;
    path_ = std::filesystem::temp_directory_path() /
            ("talvena-book-" + std::to_string(::getpid()) + "-" + std::to_string(serial++));
    std::filesystem::remove_all(path_);
    std::filesystem::create_directories(path_);
  }
  ~TempFolder() {
    std::error_code error;
    std::filesystem::remove_all(path_, error);
  }
  std::string file(const std::string& name) const { return (path_ / name).string(); }
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

inline Bytes readBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline void writeBytes(const std::string& path, const Bytes& bytes) {
  std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()),
                                              static_cast<std::streamsize>(bytes.size()));
}

inline void writeText(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

inline std::string readText(const std::string& path) {
  const Bytes bytes = readBytes(path);
  return std::string(bytes.begin(), bytes.end());
}

// An output sink that keeps its lines and prints nothing.
class Quiet : public kobubase::clsOutBuffer {
 public:
  Quiet() {
    setEcho(false);
    setKeep(true);
  }
  std::vector<std::string> lines() { return takeAll(); }
};

}  // namespace bookTest
