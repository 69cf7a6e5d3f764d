#pragma once
// Serialised output. clsTSafeOutput is the process-wide writer of standard
// output: every write, with its line end, happens under one lock so lines from
// the driver, the engine thread and tournament threads never interleave.
// clsOutBuffer is a sink that writes through it and can also keep a copy of
// every completed line, so that a reader in the same process (an embedded
// engine in a tournament, a test) can consume the output like a pipe.
#include <deque>
#include <mutex>
#include <string>
#include <vector>

namespace kobubase {

class clsTSafeOutput {
 public:
  static clsTSafeOutput& instance();

  // Writes text; with lineEnd a line feed follows and the stream is flushed.
  void write(const std::string& text, bool lineEnd);
  // While capturing, lines are kept in memory instead of being written.
  void setCapture(bool on);
  // Writes out and clears the captured lines.
  void flush();
  std::vector<std::string> captured();

 private:
  clsTSafeOutput() = default;
  std::mutex lock_;
  bool capture_ = false;
  std::vector<std::string> lines_;
};

class clsOutBuffer {
 public:
  clsOutBuffer() = default;
  virtual ~clsOutBuffer() = default;

  // Writes text (through clsTSafeOutput when echo is on); completed lines are
  // queued when keeping is on. A text that ends in a carriage return without a
  // line end is a progress line: whatever is printed next over it is padded
  // with blanks to its width, so no tail of it is left on the screen.
  void print(const std::string& text, bool lineEnd = true);
  void setEcho(bool on) { echo_ = on; }
  void setKeep(bool on);
  // Removes and returns the oldest kept line; false when none is queued.
  bool takeLine(std::string& line);
  std::vector<std::string> takeAll();

 private:
  std::mutex lock_;
  bool echo_ = true;
  bool keep_ = false;
  std::string overwriting(const std::string& text, bool lineEnd);

  std::string partial_;
  std::size_t carriageWidth_ = 0;  // the widest progress text on the current line
  std::deque<std::string> lines_;
};

}  // namespace kobubase
