#include "base/output.h"

#include <algorithm>
#include <cstdio>

namespace kobubase {

clsTSafeOutput& clsTSafeOutput::instance() {
  static clsTSafeOutput output;
  return output;
}

void clsTSafeOutput::write(const std::string& text, bool lineEnd) {
  std::lock_guard<std::mutex> guard(lock_);
  if (!capture_) {
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (lineEnd) {
      std::fputc('\n', stdout);
      std::fflush(stdout);
    }
    return;
  }
  if (lines_.empty()) lines_.emplace_back();
  lines_.back() += text;
  if (lineEnd) lines_.emplace_back();
}

void clsTSafeOutput::setCapture(bool on) {
  std::lock_guard<std::mutex> guard(lock_);
  capture_ = on;
}

void clsTSafeOutput::flush() {
  std::lock_guard<std::mutex> guard(lock_);
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    std::fwrite(lines_[i].data(), 1, lines_[i].size(), stdout);
    if (i + 1 < lines_.size()) std::fputc('\n', stdout);
  }
  std::fflush(stdout);
  lines_.clear();
}

std::vector<std::string> clsTSafeOutput::captured() {
  std::lock_guard<std::mutex> guard(lock_);
  return lines_;
}

void clsOutBuffer::print(const std::string& text, bool lineEnd) {
  std::lock_guard<std::mutex> guard(lock_);
  const std::string shown = overwriting(text, lineEnd);
  if (echo_) clsTSafeOutput::instance().write(shown, lineEnd);
  if (!keep_) return;
  if (!lineEnd) {
    partial_ += shown;
    return;
  }
  lines_.push_back(partial_ + shown);
  partial_.clear();
}

// The text padded to cover the progress text it overwrites; notes the width
// of a new progress text.
std::string clsOutBuffer::overwriting(const std::string& text, bool lineEnd) {
  std::string shown = text;
  if (carriageWidth_ > 0 && (shown.empty() || shown.front() != '\n')) {
    const std::size_t width = std::min(shown.find('\r'), shown.size());
    if (width < carriageWidth_) shown.insert(width, carriageWidth_ - width, ' ');
  }
  if (lineEnd || shown.empty() || shown.back() != '\r') {
    carriageWidth_ = 0;
  } else {
    const std::size_t before = shown.size() > 1 ? shown.rfind('\r', shown.size() - 2) : std::string::npos;
    const std::size_t width = shown.size() - 1 - (before == std::string::npos ? 0 : before + 1);
    carriageWidth_ = std::max(carriageWidth_, width);
  }
  return shown;
}

void clsOutBuffer::setKeep(bool on) {
  std::lock_guard<std::mutex> guard(lock_);
  keep_ = on;
}

bool clsOutBuffer::takeLine(std::string& line) {
  std::lock_guard<std::mutex> guard(lock_);
  if (lines_.empty()) return false;
  line = std::move(lines_.front());
  lines_.pop_front();
  return true;
}

std::vector<std::string> clsOutBuffer::takeAll() {
  std::lock_guard<std::mutex> guard(lock_);
  std::vector<std::string> all(lines_.begin(), lines_.end());
  lines_.clear();
  return all;
}

}  // namespace kobubase
