#pragma once
// The parse tree of a formula and the hand-written parser that builds it by
// precedence climbing, with the operators and precedence of C:
//   ||  &&  |  ^  &  == !=  < <= > >=  << >>  + -  * / %  unary ! ~ - +
// Nesting deeper than MAX_DEPTH, and a tree taller than MAX_HEIGHT (a chain
// such as 1+1+...+1 of more than MAX_HEIGHT operands), are refused, so that
// neither parsing nor evaluating nor freeing the tree can exhaust the stack.
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "base/expr/lexer.h"

namespace kobubase {

struct Node {
  enum Kind : int { LITERAL, NAME, CALL, UNARY, BINARY };
  Kind kind = LITERAL;
  std::string text;                             // name, function or operator
  Value value;                                  // literal
  std::vector<std::unique_ptr<Node>> children;  // operands or arguments
  std::vector<std::size_t> childColumns;        // where each argument begins
  std::size_t column = 0;
  int height = 1;  // nodes on the longest path down from this one
};

class clsParser {
 public:
  static constexpr int MAX_DEPTH = 200;
  static constexpr int MAX_HEIGHT = 400;

  explicit clsParser(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}
  // The whole token list as one expression; throws ExprError.
  std::unique_ptr<Node> parseAll();

 private:
  std::unique_ptr<Node> binary(int level);
  std::unique_ptr<Node> unary();
  std::unique_ptr<Node> primary();
  std::unique_ptr<Node> call(const Token& name);
  const Token& peek() const { return tokens_[at_]; }
  bool isOperator(const char* text) const;
  void expect(const char* text);
  void enter();
  // Takes the node's height from its children; refuses a tree taller than MAX_HEIGHT.
  std::unique_ptr<Node> measured(std::unique_ptr<Node> node);

  std::vector<Token> tokens_;
  std::size_t at_ = 0;
  int depth_ = 0;
};

}  // namespace kobubase
