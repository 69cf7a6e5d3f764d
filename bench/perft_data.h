#pragma once
// The perft data file: one position a line, "name | FEN | depth:count ...",
// '#' starting a comment line. Shared by the perft benchmark and its test.
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

struct PerftCase {
  std::string name, fen;
  std::vector<std::pair<int, unsigned long long>> counts;  // (depth, leaves), by rising depth
};

inline std::string trimBlanks(const std::string& s) {
  const auto b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
  return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
}

inline std::vector<PerftCase> readPerftCases(const std::string& path) {
  std::vector<PerftCase> cases;
  std::ifstream in(path);
  for (std::string line; std::getline(in, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream fields(line);
    PerftCase c;
    std::string counts;
    std::getline(fields, c.name, '|');
    std::getline(fields, c.fen, '|');
    std::getline(fields, counts);
    c.name = trimBlanks(c.name);
    c.fen = trimBlanks(c.fen);
    std::istringstream items(counts);
    for (std::string item; items >> item;) {
      const auto colon = item.find(':');
      if (colon == std::string::npos) continue;
      c.counts.emplace_back(std::atoi(item.substr(0, colon).c_str()),
                            std::strtoull(item.substr(colon + 1).c_str(), nullptr, 10));
    }
    if (!c.counts.empty()) cases.push_back(c);
  }
  return cases;
}
