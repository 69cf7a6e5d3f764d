#include "chess/tourney/soul_file.h"

#include <charconv>
#include <sstream>
#include <string_view>

#include "base/file_io.h"

namespace kbuChess {

namespace {

constexpr std::string_view GENERATION_PREFIX = "# generation ";

bool readInt(const std::string& text, i32& value) {
  const char* begin = text.data();
  const char* end = begin + text.size();
  if (begin != end && *begin == '+') ++begin;
  if (begin == end) return false;
  const auto [ptr, ec] = std::from_chars(begin, end, value);
  return ec == std::errc() && ptr == end;
}

std::vector<std::string> splitBlanks(const std::string& text) {
  std::vector<std::string> fields;
  std::size_t at = 0;
  while (true) {
    const std::size_t blank = text.find(' ', at);
    fields.push_back(text.substr(at, blank == std::string::npos ? std::string::npos : blank - at));
    if (blank == std::string::npos) return fields;
    at = blank + 1;
  }
}

// "N to play seed S ms_per_move M max_moves X opening_plies P" of a generation to play.
bool readToPlayLine(const std::vector<std::string>& words, SoulGeneration& generation) {
  static const char* const keys[] = {"to", "play", "seed", "", "ms_per_move", "", "max_moves", "", "opening_plies"};
  if (words.size() != 11) return false;
  for (std::size_t i = 0; i < std::size(keys); ++i) {
    if (*keys[i] != '\0' && words[i + 1] != keys[i]) return false;
  }
  i32 number = 0, ms = 0, moves = 0, plies = 0;
  const auto [end, ec] = std::from_chars(words[4].data(), words[4].data() + words[4].size(), generation.seed);
  if (ec != std::errc() || end != words[4].data() + words[4].size() || !readInt(words[0], number) || number <= 0 ||
      !readInt(words[6], ms) || ms <= 0 || !readInt(words[8], moves) || moves <= 0 || !readInt(words[10], plies) ||
      plies < 0)
    return false;
  generation.number = number;
  generation.toPlay = true;
  generation.msPerMove = ms;
  generation.maxMoves = moves;
  generation.openingPlies = plies;
  return true;
}

// "# generation N games G scores S1 ... Sn" into the generation's header fields.
bool readGenerationLine(const std::string& line, SoulGeneration& generation) {
  const std::vector<std::string> words = splitBlanks(line.substr(GENERATION_PREFIX.size()));
  if (words.size() > 1 && words[1] == "to") return readToPlayLine(words, generation);
  if (words.size() < 4 || words[1] != "games" || words[3] != "scores") return false;
  i32 number = 0, games = 0;
  if (!readInt(words[0], number) || number <= 0 || !readInt(words[2], games) || games < 0) return false;
  generation.number = number;
  generation.games = games;
  for (std::size_t i = 4; i < words.size(); ++i) {
    i32 score = 0;
    if (!readInt(words[i], score)) return false;
    generation.scores.push_back(score);
  }
  return true;
}

// Reads the file's lines into blocks; one instance per parse.
class clsSoulFileReader {
 public:
  clsSoulFileReader(SoulFile& file, const std::string& source) : file_(file), source_(source) {}

  void line(std::string text, int number) {
    if (!text.empty() && text.back() == '\r') text.pop_back();
    if (text.empty()) return;
    if (text.rfind(GENERATION_PREFIX, 0) == 0) {
      closeBlock();
      SoulGeneration generation;
      if (!readGenerationLine(text, generation)) {
        const bool toPlay = splitBlanks(text).size() > 3 && splitBlanks(text)[3] == "to";
        problem(number, toPlay ? "not a generation to play (# generation N to play seed S ms_per_move M max_moves X "
                                 "opening_plies P)"
                               : "not a generation line (# generation N games G scores S1 ... Sn)");
        generation = SoulGeneration{};
      }
      open(generation, number);
      return;
    }
    if (text[0] == '#') return;
    if (!open_) open(SoulGeneration{}, number);
    ++soulLines_;
    Soul soul;
    std::string why;
    if (!readSoul(text, SoulReading::STRICT, soul, why)) {
      problem(number, why);
      return;
    }
    const std::size_t index = static_cast<std::size_t>(soulLines_ - 1);
    scores_.push_back(index < declared_.size() ? declared_[index] : 0);
    block_.souls.push_back(soul);
  }

  void closeBlock() {
    if (!open_) return;
    if (block_.played()) {
      if (declared_.size() != static_cast<std::size_t>(soulLines_)) {
        problem(headerLine_, "generation " + std::to_string(block_.number) + " lists " +
                                 std::to_string(declared_.size()) + " scores for " + std::to_string(soulLines_) +
                                 " souls");
      }
      block_.scores = scores_;
    }
    if (!block_.souls.empty()) file_.generations.push_back(block_);
    open_ = false;
  }

 private:
  void open(const SoulGeneration& header, int number) {
    block_ = header;
    declared_ = header.scores;
    block_.scores.clear();
    scores_.clear();
    soulLines_ = 0;
    headerLine_ = number;
    open_ = true;
  }

  void problem(int number, const std::string& why) {
    file_.problems.push_back("# soul file " + source_ + " line " + std::to_string(number) + ": " + why);
  }

  SoulFile& file_;
  std::string source_;
  SoulGeneration block_;
  std::vector<int> declared_;
  std::vector<int> scores_;
  int soulLines_ = 0;
  int headerLine_ = 0;
  bool open_ = false;
};

}  // namespace

std::string soulFileText(const SoulFile& file) {
  std::string text = file.readText;
  if (!text.empty() && text.back() != '\n') text += '\n';
  for (std::size_t i = file.readGenerations; i < file.generations.size(); ++i) {
    const SoulGeneration& generation = file.generations[i];
    if (generation.toPlay) {
      text += std::string(GENERATION_PREFIX) + std::to_string(generation.number) + " to play seed " +
              std::to_string(generation.seed) + " ms_per_move " + std::to_string(generation.msPerMove) + " max_moves " +
              std::to_string(generation.maxMoves) + " opening_plies " + std::to_string(generation.openingPlies) + "\n";
    } else if (generation.number > 0) {
      text += std::string(GENERATION_PREFIX) + std::to_string(generation.number) + " games " +
              std::to_string(generation.games) + " scores";
      for (const int score : generation.scores) {
        text += ' ';
        text += std::to_string(score);
      }
      text += '\n';
    }
    for (const Soul& soul : generation.souls) text += soulText(soul) + '\n';
  }
  return text;
}

SoulFile parseSoulFile(const std::string& text, const std::string& source) {
  SoulFile file;
  clsSoulFileReader reader(file, source);
  std::istringstream lines(text);
  std::string line;
  for (int number = 1; std::getline(lines, line); ++number) reader.line(line, number);
  reader.closeBlock();
  return file;
}

bool readSoulFile(const std::string& path, SoulFile& file) {
  file = SoulFile{};
  std::string text, error;
  if (!kobubase::readWholeFile(path, text, error)) {
    file.problems.push_back(error + " reading " + path);
    return false;
  }
  file = parseSoulFile(text, path);
  file.readGenerations = file.generations.size();
  file.readText = std::move(text);
  return true;
}

bool writeSoulFile(const std::string& path, const SoulFile& file, std::string& error) {
  if (kobubase::writeFileAtomically(path, soulFileText(file), error)) return true;
  error += " writing " + path;
  return false;
}

}  // namespace kbuChess
