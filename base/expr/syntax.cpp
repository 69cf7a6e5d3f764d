#include "base/expr/syntax.h"

#include <algorithm>

#include "base/expr/error.h"

namespace kobubase {

namespace {

// Binary operators by level, loosest first.
const std::vector<std::vector<std::string>> LEVELS = {
    {"||"},       {"&&"},     {"|"},          {"^"}, {"&"}, {"==", "!="}, {"<", "<=", ">", ">="},
    {"<<", ">>"}, {"+", "-"}, {"*", "/", "%"}};

// The text in single quotes (built by appending, which keeps GCC 12's
// overlap warning for operator+ on string literals quiet).
std::string quoted(const std::string& text) {
  std::string result(1, '\'');
  result += text;
  result += '\'';
  return result;
}

std::string describe(const Token& token) {
  switch (token.kind) {
    case Token::END: return "end of line";
    case Token::OPERATOR: return quoted(token.text);
    case Token::NAME: return "name " + quoted(token.text);
    default: return "value";
  }
}

}  // namespace

std::unique_ptr<Node> clsParser::parseAll() {
  if (peek().kind == Token::END) failAt(peek().column, "empty formula");
  std::unique_ptr<Node> root = binary(0);
  if (peek().kind != Token::END) failAt(peek().column, "unexpected " + describe(peek()));
  return root;
}

bool clsParser::isOperator(const char* text) const {
  return peek().kind == Token::OPERATOR && peek().text == text;
}

void clsParser::expect(const char* text) {
  if (!isOperator(text)) failAt(peek().column, "expected " + quoted(text) + ", found " + describe(peek()));
  ++at_;
}

void clsParser::enter() {
  if (++depth_ > MAX_DEPTH) failAt(peek().column, "formula nested too deeply");
}

std::unique_ptr<Node> clsParser::measured(std::unique_ptr<Node> node) {
  for (const auto& child : node->children) node->height = std::max(node->height, child->height + 1);
  if (node->height > MAX_HEIGHT) {
    failAt(node->column, "formula more than " + std::to_string(MAX_HEIGHT) + " levels deep");
  }
  return node;
}

std::unique_ptr<Node> clsParser::binary(int level) {
  if (level == static_cast<int>(LEVELS.size())) return unary();
  std::unique_ptr<Node> left = binary(level + 1);
  for (;;) {
    const Token& token = peek();
    bool match = false;
    if (token.kind == Token::OPERATOR) {
      for (const std::string& op : LEVELS[level]) match = match || token.text == op;
    }
    if (!match) break;
    ++at_;
    auto node = std::make_unique<Node>();
    node->kind = Node::BINARY;
    node->text = token.text;
    node->column = token.column;
    node->children.push_back(std::move(left));
    node->children.push_back(binary(level + 1));
    left = measured(std::move(node));
  }
  return left;
}

std::unique_ptr<Node> clsParser::unary() {
  const Token& token = peek();
  if (token.kind == Token::OPERATOR &&
      (token.text == "!" || token.text == "~" || token.text == "-" || token.text == "+")) {
    enter();
    ++at_;
    auto node = std::make_unique<Node>();
    node->kind = Node::UNARY;
    node->text = token.text;
    node->column = token.column;
    node->children.push_back(unary());
    --depth_;
    return measured(std::move(node));
  }
  return primary();
}

std::unique_ptr<Node> clsParser::primary() {
  const Token token = peek();
  if (token.kind == Token::NUMBER || token.kind == Token::STRING || token.kind == Token::BOOLEAN) {
    ++at_;
    auto node = std::make_unique<Node>();
    node->value = token.value;
    node->column = token.column;
    return node;
  }
  if (token.kind == Token::NAME) {
    ++at_;
    if (isOperator("(")) return call(token);
    auto node = std::make_unique<Node>();
    node->kind = Node::NAME;
    node->text = token.text;
    node->column = token.column;
    return node;
  }
  if (token.kind == Token::OPERATOR && token.text == "(") {
    enter();
    ++at_;
    std::unique_ptr<Node> inner = binary(0);
    expect(")");
    --depth_;
    return inner;
  }
  failAt(token.column, "expected a value, found " + describe(token));
}

std::unique_ptr<Node> clsParser::call(const Token& name) {
  enter();
  auto node = std::make_unique<Node>();
  node->kind = Node::CALL;
  node->text = name.text;
  node->column = name.column;
  expect("(");
  if (!isOperator(")")) {
    for (;;) {
      node->childColumns.push_back(peek().column);
      node->children.push_back(binary(0));
      if (!isOperator(",")) break;
      ++at_;
    }
  }
  expect(")");
  --depth_;
  return measured(std::move(node));
}

}  // namespace kobubase
