#pragma once
// ExprError is how the lexer, the parser, the evaluator and the functions
// report a fault in a formula: the column (1-based) where it lies and what is
// wrong. It is thrown inside the interpreter only; clsInterpreter::execute
// catches it and turns it into one error line.
#include <cstddef>
#include <string>

namespace kobubase {

struct ExprError {
  std::size_t column = 0;
  std::string message;
};

[[noreturn]] inline void failAt(std::size_t column, std::string message) {
  throw ExprError{column, std::move(message)};
}

}  // namespace kobubase
