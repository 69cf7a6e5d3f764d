#include "chess/book/book_paths.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "base/text.h"

namespace kbuChess {
namespace fs = std::filesystem;
namespace {

std::string lowerCase(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string withoutTrailingSeparators(std::string path) {
  while (path.size() > 1 && (path.back() == '/' || path.back() == '\\')) path.pop_back();
  return path;
}

}  // namespace

std::optional<int> wholeNumber(const std::string& word) {
  const std::size_t digits = !word.empty() && (word[0] == '-' || word[0] == '+') ? 1 : 0;
  if (word.size() <= digits || word.find_first_not_of("0123456789", digits) != std::string::npos) return std::nullopt;
  return static_cast<int>(kobubase::readClamped(word, -MAX_BOOK_NUMBER, MAX_BOOK_NUMBER));
}

std::vector<std::string> filesWithExtension(const std::string& where, const std::string& extension) {
  std::error_code error;
  fs::path folder(withoutTrailingSeparators(where));
  const std::string last = folder.filename().string();
  if (last == "%" + extension || last == "*" + extension) folder = folder.parent_path();
  if (folder.empty()) folder = ".";
  if (fs::is_regular_file(folder, error)) return {folder.string()};
  std::vector<std::string> files;
  for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
    if (it->is_regular_file(error) && lowerCase(it->path().extension().string()) == extension) {
      files.push_back(it->path().string());
    }
  }
  std::sort(files.begin(), files.end());
  return files;
}

std::string besidePath(const std::string& where, const std::string& extension) {
  std::error_code error;
  fs::path path(withoutTrailingSeparators(where));
  if (fs::is_regular_file(path, error)) return path.replace_extension(extension).string();
  return path.string() + extension;
}

std::string withExtension(const std::string& name, const std::string& extension) {
  return fs::path(name).has_extension() ? name : name + extension;
}

}  // namespace kbuChess
