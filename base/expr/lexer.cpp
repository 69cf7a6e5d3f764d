#include "base/expr/lexer.h"

#include <cctype>

#include "base/expr/error.h"

namespace kobubase {

namespace {

bool isNameStart(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}
bool isNameChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

int digitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return 99;
}

// Reads a number in the given base from line[at]; at is left after it.
Value readNumber(const std::string& line, std::size_t& at, unsigned base, std::size_t column) {
  std::uint64_t n = 0;
  std::size_t digits = 0;
  while (at < line.size() && isNameChar(line[at])) {
    const int d = digitValue(line[at]);
    if (d >= static_cast<int>(base)) failAt(at + 1, std::string("bad digit '") + line[at] + "' in a number");
    if (n > (UINT64_MAX - static_cast<unsigned>(d)) / base) failAt(column, "number does not fit in 64 bits");
    n = n * base + static_cast<unsigned>(d);
    ++at;
    ++digits;
  }
  if (digits == 0) failAt(column, "number without digits");
  return Value::integer(n);
}

Token numberToken(const std::string& line, std::size_t& at) {
  Token token{Token::NUMBER, {}, {}, at + 1};
  unsigned base = 10;
  if (line[at] == '0' && at + 1 < line.size() && (line[at + 1] == 'x' || line[at + 1] == 'X')) base = 16;
  if (line[at] == '0' && at + 1 < line.size() && (line[at + 1] == 'b' || line[at + 1] == 'B')) base = 2;
  if (base != 10) at += 2;
  token.value = readNumber(line, at, base, token.column);
  return token;
}

Token stringToken(const std::string& line, std::size_t& at) {
  Token token{Token::STRING, {}, {}, at + 1};
  const char quote = line[at++];
  for (;;) {
    if (at >= line.size()) failAt(token.column, "string without its closing quote");
    char c = line[at++];
    if (c == quote) break;
    if (c == '\\') {
      if (at >= line.size()) failAt(token.column, "string without its closing quote");
      c = line[at++];
      if (c == 'n') c = '\n';
      if (c == 't') c = '\t';
    }
    token.text += c;
  }
  token.value = Value::string(token.text);
  return token;
}

Token nameToken(const std::string& line, std::size_t& at) {
  Token token{Token::NAME, {}, {}, at + 1};
  while (at < line.size() && isNameChar(line[at])) token.text += line[at++];
  if (const std::uint64_t square = squareNameMask(token.text)) {
    token.kind = Token::NUMBER;
    token.value = Value::integer(square);
  } else if (token.text == "true" || token.text == "false") {
    token.kind = Token::BOOLEAN;
    token.value = Value::boolean(token.text == "true");
  }
  return token;
}

// Two-character operators first, so that "<<" is not read as "<" "<".
const char* const OPERATORS[] = {"<<", ">>", "<=", ">=", "==", "!=", "&&", "||", "+", "-", "*", "/",
                                 "%",  "&",  "|",  "^",  "~",  "!",  "<",  ">",  "(", ")", ",", "="};

Token operatorToken(const std::string& line, std::size_t& at) {
  for (const char* op : OPERATORS) {
    const std::string text(op);
    if (line.compare(at, text.size(), text) == 0) {
      Token token{Token::OPERATOR, text, {}, at + 1};
      at += text.size();
      return token;
    }
  }
  const unsigned char c = static_cast<unsigned char>(line[at]);
  if (std::isprint(c)) failAt(at + 1, std::string("unexpected character '") + line[at] + "'");
  failAt(at + 1, "unexpected character code " + std::to_string(c));
}

}  // namespace

std::uint64_t squareNameMask(const std::string& name) {
  if (name.size() != 2 || name[0] < 'a' || name[0] > 'h' || name[1] < '1' || name[1] > '8') return 0;
  return std::uint64_t{1} << ((name[1] - '1') * 8 + (7 - (name[0] - 'a')));
}

std::vector<Token> tokenize(const std::string& line) {
  std::vector<Token> tokens;
  std::size_t at = 0;
  while (at < line.size()) {
    const char c = line[at];
    if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
      ++at;
    } else if (std::isdigit(static_cast<unsigned char>(c))) {
      tokens.push_back(numberToken(line, at));
      if (at < line.size() && isNameStart(line[at])) failAt(at + 1, "a name cannot follow a number");
    } else if (c == '"' || c == '\'') {
      tokens.push_back(stringToken(line, at));
    } else if (isNameStart(c)) {
      tokens.push_back(nameToken(line, at));
    } else {
      tokens.push_back(operatorToken(line, at));
    }
  }
  tokens.push_back(Token{Token::END, {}, {}, line.size() + 1});
  return tokens;
}

}  // namespace kobubase
