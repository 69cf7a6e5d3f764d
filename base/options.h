#pragma once
// An ordered table of name/value option pairs, as given on the command line
// (name=value) or written at run time by the "option", "memory" and "cores"
// commands. Names are kept exactly as typed; an absent name reads as "".
#include <string>
#include <utility>
#include <vector>

namespace kobubase {

class clsOptions {
 public:
  clsOptions() = default;
  // Builds the table from argv[1..argc-1], each split at its first '='.
  clsOptions(int argc, const char* const* argv);

  const std::string& get(const std::string& name) const;
  bool has(const std::string& name) const;
  // Replaces the value of an existing name, or appends the pair.
  void set(const std::string& name, const std::string& value);
  // Splits "name=value" at the first '=' and sets it.
  void setPair(const std::string& text);
  std::size_t size() const { return pairs_.size(); }
  // The arguments given without "=", in the order given (such as "-random").
  const std::vector<std::string>& bareNames() const { return bare_; }
  const std::vector<std::pair<std::string, std::string>>& pairs() const { return pairs_; }

 private:
  std::vector<std::pair<std::string, std::string>> pairs_;
  std::vector<std::string> bare_;
};

}  // namespace kobubase
