#pragma once
// clsInterpreter runs the lines of the expression console. A line is one of
//   NAME = formula     assigns a variable and shows its value
//   vars               lists the variables
//   help               lists the functions and named values
//   formula            shows the value of the formula
// and gives back the lines to show, without the comment prefix. A fault in a
// line gives one line "error at column N: what", and nothing else changes.
//
// Functions and named values live in a registry: the generic ones are added
// by addGenericFunctions(), the owner of the interpreter adds its own (board
// positions, tables). A named value is read-only and is written without
// parentheses, like a variable.
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/expr/error.h"
#include "base/expr/value.h"

namespace kobubase {

struct Node;

// The arguments of one function call, with the columns where they begin so
// that a function can point at the argument it refuses.
class clsArgs {
 public:
  clsArgs(const std::vector<Value>& values, const std::vector<std::size_t>& columns, std::size_t callColumn)
      : values_(values), columns_(columns), callColumn_(callColumn) {}
  std::size_t size() const { return values_.size(); }
  const Value& operator[](std::size_t i) const { return values_[i]; }
  // The argument as an integer (booleans count as 0 and 1); a string is an error.
  std::uint64_t integer(std::size_t i) const;
  // The argument as a string; any other kind is an error.
  const std::string& string(std::size_t i) const;
  // An integer argument that must be below limit.
  std::uint64_t below(std::size_t i, std::uint64_t limit) const;
  // An integer argument that must be a single square (one set bit); its bit number.
  int square(std::size_t i) const;
  [[noreturn]] void fail(std::size_t i, const std::string& message) const;
  [[noreturn]] void failCall(const std::string& message) const { failAt(callColumn_, message); }

 private:
  const std::vector<Value>& values_;
  const std::vector<std::size_t>& columns_;
  std::size_t callColumn_;
};

class clsInterpreter {
 public:
  using Function = std::function<Value(const clsArgs&)>;
  using Getter = std::function<Value()>;
  static constexpr std::size_t MAX_VARIABLES = 1000;

  clsInterpreter();
  ~clsInterpreter();

  // Registers (or replaces) a function taking minArgs..maxArgs arguments
  // (maxArgs -1: any number); usage is shown by "help", e.g. "popcount(mask)".
  void addFunction(const std::string& name, int minArgs, int maxArgs, const std::string& usage, Function function);
  void addNamedValue(const std::string& name, const std::string& usage, Getter getter);

  // Runs one line and returns the lines to show.
  std::vector<std::string> execute(const std::string& line);
  // Evaluates a formula; false with the error filled when it fails.
  bool evaluate(const std::string& formula, Value& result, ExprError& error);

  const std::map<std::string, Value>& variables() const { return variables_; }
  bool hasFunction(const std::string& name) const { return functions_.count(name) != 0; }

 private:
  struct FunctionEntry {
    int minArgs;
    int maxArgs;
    std::string usage;
    Function function;
  };
  struct NamedEntry {
    std::string usage;
    Getter getter;
  };

  Value run(const std::string& formula);
  std::vector<std::string> assign(const std::string& name, const std::string& formula, std::size_t offset);
  std::vector<std::string> helpLines() const;
  Value evaluateNode(const Node& node);
  Value evaluateName(const Node& node);
  Value evaluateCall(const Node& node);
  Value evaluateUnary(const Node& node);
  Value evaluateBinary(const Node& node);

  std::map<std::string, FunctionEntry> functions_;
  std::map<std::string, NamedEntry> named_;
  std::map<std::string, Value> variables_;
};

// popcount, lsb, msb, bit, file, rank, flip, mirror, the eight shifts,
// squares, board, and the string functions len, concat, upper, lower,
// substr, hex, bin, str.
void addGenericFunctions(clsInterpreter& interpreter);
// The 8x8 diagram of a mask, rank 8 first and file a on the left, 'x' for a
// set square; lines separated by '\n'.
std::string maskDiagram(std::uint64_t mask);

}  // namespace kobubase
