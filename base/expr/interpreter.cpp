#include "base/expr/interpreter.h"

#include <bit>
#include <new>

#include "base/expr/lexer.h"
#include "base/expr/syntax.h"

namespace kobubase {

namespace {

const char* const STATEMENT_WORDS[] = {"vars", "help", "exit", "quit"};

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = text.find('\n', start);
    lines.push_back(text.substr(start, end == std::string::npos ? std::string::npos : end - start));
    if (end == std::string::npos) return lines;
    start = end + 1;
  }
}

std::string errorText(const ExprError& error) {
  return "error at column " + std::to_string(error.column) + ": " + error.message;
}

std::uint64_t integerOf(const Value& value, std::size_t column, const char* what) {
  if (value.kind == Value::INTEGER) return value.number;
  if (value.kind == Value::BOOLEAN) return value.truth ? 1 : 0;
  failAt(column, std::string(what) + " needs a number, not a string");
}

bool truthOf(const Value& value, std::size_t column, const char* what) {
  if (value.kind == Value::BOOLEAN) return value.truth;
  if (value.kind == Value::INTEGER) return value.number != 0;
  failAt(column, std::string(what) + " needs a number or a boolean, not a string");
}

// Shifts by 64 or more give 0, as if the bits were pushed out one at a time.
std::uint64_t shiftLeft(std::uint64_t a, std::uint64_t b) {
  return b >= 64 ? 0 : a << b;
}
std::uint64_t shiftRight(std::uint64_t a, std::uint64_t b) {
  return b >= 64 ? 0 : a >> b;
}

Value compareValues(const Value& a, const Value& b, const std::string& op, std::size_t column) {
  int order;
  if (a.kind == Value::STRING || b.kind == Value::STRING) {
    if (a.kind != b.kind)
      failAt(column,
             "'" + op + "' cannot compare a string with " + kindName(a.kind == Value::STRING ? b.kind : a.kind));
    order = a.text.compare(b.text);
  } else {
    const std::uint64_t x = integerOf(a, column, "comparison"), y = integerOf(b, column, "comparison");
    order = x < y ? -1 : (x > y ? 1 : 0);
  }
  if (op == "==") return Value::boolean(order == 0);
  if (op == "!=") return Value::boolean(order != 0);
  if (op == "<") return Value::boolean(order < 0);
  if (op == "<=") return Value::boolean(order <= 0);
  if (op == ">") return Value::boolean(order > 0);
  return Value::boolean(order >= 0);
}

Value arithmetic(std::uint64_t a, std::uint64_t b, const std::string& op, std::size_t column) {
  const char c = op[0];
  if ((c == '/' || c == '%') && b == 0) failAt(column, "division by zero");
  switch (c) {
    case '+': return Value::integer(a + b);
    case '-': return Value::integer(a - b);
    case '*': return Value::integer(a * b);
    case '/': return Value::integer(a / b);
    case '%': return Value::integer(a % b);
    case '&': return Value::integer(a & b);
    case '|': return Value::integer(a | b);
    case '^': return Value::integer(a ^ b);
    case '<': return Value::integer(shiftLeft(a, b));
    default: return Value::integer(shiftRight(a, b));
  }
}

}  // namespace

// --- arguments

std::uint64_t clsArgs::integer(std::size_t i) const {
  const Value& value = values_[i];
  if (value.kind == Value::STRING) fail(i, "expected a number, not a string");
  return value.kind == Value::BOOLEAN ? (value.truth ? 1 : 0) : value.number;
}

const std::string& clsArgs::string(std::size_t i) const {
  if (values_[i].kind != Value::STRING) fail(i, std::string("expected a string, not ") + kindName(values_[i].kind));
  return values_[i].text;
}

std::uint64_t clsArgs::below(std::size_t i, std::uint64_t limit) const {
  const std::uint64_t n = integer(i);
  if (n >= limit) fail(i, std::to_string(n) + " is out of range 0.." + std::to_string(limit - 1));
  return n;
}

int clsArgs::square(std::size_t i) const {
  const std::uint64_t mask = integer(i);
  if (std::popcount(mask) != 1) fail(i, "expected one square (a mask with one bit set)");
  return std::countr_zero(mask);
}

void clsArgs::fail(std::size_t i, const std::string& message) const {
  failAt(i < columns_.size() ? columns_[i] : callColumn_, message);
}

// --- registry and statements

clsInterpreter::clsInterpreter() = default;
clsInterpreter::~clsInterpreter() = default;

void clsInterpreter::addFunction(const std::string& name, int minArgs, int maxArgs, const std::string& usage,
                                 Function function) {
  functions_[name] = FunctionEntry{minArgs, maxArgs, usage, std::move(function)};
}

void clsInterpreter::addNamedValue(const std::string& name, const std::string& usage, Getter getter) {
  named_[name] = NamedEntry{usage, std::move(getter)};
}

std::vector<std::string> clsInterpreter::execute(const std::string& line) {
  try {
    std::vector<Token> tokens = tokenize(line);
    if (tokens.size() == 1) return {};
    const bool single = tokens.size() == 2 && tokens[0].kind == Token::NAME;
    if (single && tokens[0].text == "vars") {
      std::vector<std::string> lines;
      for (const auto& [name, value] : variables_) lines.push_back(name + " = " + literalText(value));
      if (lines.empty()) lines.push_back("no variables");
      return lines;
    }
    if (single && tokens[0].text == "help") return helpLines();
    if (tokens.size() > 2 && tokens[0].kind == Token::NAME && tokens[1].kind == Token::OPERATOR &&
        tokens[1].text == "=") {
      const std::string name = tokens[0].text;
      for (const char* word : STATEMENT_WORDS) {
        if (name == word) failAt(tokens[0].column, "'" + name + "' is a command word");
      }
      if (functions_.count(name) || named_.count(name)) failAt(tokens[0].column, "'" + name + "' is a built-in name");
      if (!variables_.count(name) && variables_.size() >= MAX_VARIABLES) failAt(tokens[0].column, "too many variables");
      clsParser parser(std::vector<Token>(tokens.begin() + 2, tokens.end()));
      const std::unique_ptr<Node> root = parser.parseAll();
      Value value = evaluateNode(*root);
      variables_[name] = value;
      return {name + " = " + literalText(value)};
    }
    clsParser parser(std::move(tokens));
    const std::unique_ptr<Node> root = parser.parseAll();
    return splitLines(displayText(evaluateNode(*root)));
  } catch (const ExprError& error) {
    return {errorText(error)};
  } catch (const std::bad_alloc&) {
    return {"error: out of memory"};
  } catch (const std::exception& e) {
    return {std::string("error: ") + e.what()};
  }
}

bool clsInterpreter::evaluate(const std::string& formula, Value& result, ExprError& error) {
  try {
    clsParser parser(tokenize(formula));
    const std::unique_ptr<Node> root = parser.parseAll();
    result = evaluateNode(*root);
    return true;
  } catch (const ExprError& caught) {
    error = caught;
  } catch (const std::exception& e) {
    error = ExprError{0, e.what()};
  }
  return false;
}

std::vector<std::string> clsInterpreter::helpLines() const {
  std::vector<std::string> lines{"NAME = formula assigns, vars lists the variables, exit leaves the console"};
  std::string text = "functions:";
  for (const auto& [name, entry] : functions_) {
    if (text.size() + entry.usage.size() > 100) {
      lines.push_back(text);
      text = "   ";
    }
    text += " " + entry.usage;
  }
  lines.push_back(text);
  text = "named values:";
  for (const auto& [name, entry] : named_) text += " " + name;
  if (!named_.empty()) lines.push_back(text);
  return lines;
}

// --- evaluation

Value clsInterpreter::evaluateNode(const Node& node) {
  switch (node.kind) {
    case Node::LITERAL: return node.value;
    case Node::NAME: return evaluateName(node);
    case Node::CALL: return evaluateCall(node);
    case Node::UNARY: return evaluateUnary(node);
    case Node::BINARY: return evaluateBinary(node);
  }
  failAt(node.column, "unknown formula element");
}

Value clsInterpreter::evaluateName(const Node& node) {
  const auto named = named_.find(node.text);
  if (named != named_.end()) return named->second.getter();
  const auto variable = variables_.find(node.text);
  if (variable != variables_.end()) return variable->second;
  if (functions_.count(node.text))
    failAt(node.column, "'" + node.text + "' is a function: write " + node.text + "(...)");
  failAt(node.column, "unknown name '" + node.text + "'");
}

Value clsInterpreter::evaluateCall(const Node& node) {
  const auto found = functions_.find(node.text);
  if (found == functions_.end()) failAt(node.column, "unknown function '" + node.text + "'");
  const FunctionEntry& entry = found->second;
  const int count = static_cast<int>(node.children.size());
  if (count < entry.minArgs || (entry.maxArgs >= 0 && count > entry.maxArgs)) {
    failAt(node.column, "wrong number of arguments, usage: " + entry.usage);
  }
  std::vector<Value> values;
  values.reserve(node.children.size());
  for (const auto& child : node.children) values.push_back(evaluateNode(*child));
  Value result = entry.function(clsArgs(values, node.childColumns, node.column));
  if (result.kind == Value::STRING && result.text.size() > Value::MAX_STRING) {
    failAt(node.column, "string longer than " + std::to_string(Value::MAX_STRING) + " bytes");
  }
  return result;
}

Value clsInterpreter::evaluateUnary(const Node& node) {
  const Value operand = evaluateNode(*node.children[0]);
  const std::string& op = node.text;
  if (op == "!") return Value::boolean(!truthOf(operand, node.column, "'!'"));
  const std::uint64_t n = integerOf(operand, node.column, op == "~" ? "'~'" : "a sign");
  if (op == "~") return Value::integer(~n);
  return Value::integer(op == "-" ? 0 - n : n);
}

Value clsInterpreter::evaluateBinary(const Node& node) {
  const std::string& op = node.text;
  const std::string quoted = "'" + op + "'";
  const Value left = evaluateNode(*node.children[0]);
  if (op == "&&" || op == "||") {  // the right side only when it decides
    const bool a = truthOf(left, node.column, quoted.c_str());
    if (op == "&&" ? !a : a) return Value::boolean(a);
    return Value::boolean(truthOf(evaluateNode(*node.children[1]), node.column, quoted.c_str()));
  }
  const Value right = evaluateNode(*node.children[1]);
  if (op == "==" || op == "!=" || op[0] == '<' || op[0] == '>') {
    if (op != "<<" && op != ">>") return compareValues(left, right, op, node.column);
  }
  if (op == "+" && left.kind == Value::STRING && right.kind == Value::STRING) {
    if (left.text.size() + right.text.size() > Value::MAX_STRING) failAt(node.column, "string too long");
    return Value::string(left.text + right.text);
  }
  return arithmetic(integerOf(left, node.column, quoted.c_str()), integerOf(right, node.column, quoted.c_str()), op,
                    node.column);
}

}  // namespace kobubase
