#include "base/options.h"

namespace kobubase {

clsOptions::clsOptions(int argc, const char* const* argv) {
  for (int i = 1; i < argc; ++i) {
    std::string text = argv[i] ? argv[i] : "";
    const auto eq = text.find('=');
    if (eq == std::string::npos) {
      pairs_.emplace_back(text, std::string());
      bare_.push_back(text);
    } else {
      pairs_.emplace_back(text.substr(0, eq), text.substr(eq + 1));
    }
  }
}

const std::string& clsOptions::get(const std::string& name) const {
  static const std::string empty;
  for (const auto& pair : pairs_)
    if (pair.first == name) return pair.second;
  return empty;
}

bool clsOptions::has(const std::string& name) const {
  for (const auto& pair : pairs_)
    if (pair.first == name) return true;
  return false;
}

void clsOptions::set(const std::string& name, const std::string& value) {
  for (auto& pair : pairs_)
    if (pair.first == name) {
      pair.second = value;
      return;
    }
  pairs_.emplace_back(name, value);
}

void clsOptions::setPair(const std::string& text) {
  const auto eq = text.find('=');
  if (eq == std::string::npos)
    set(text, std::string());
  else
    set(text.substr(0, eq), text.substr(eq + 1));
}

}  // namespace kobubase
