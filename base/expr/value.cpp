#include "base/expr/value.h"

namespace kobubase {

const char* kindName(Value::Kind kind) {
  switch (kind) {
    case Value::INTEGER: return "an integer";
    case Value::STRING: return "a string";
    case Value::BOOLEAN: return "a boolean";
  }
  return "a value";
}

std::string hexDigits(std::uint64_t n) {
  static const char digits[] = "0123456789abcdef";
  std::string text;
  do {
    text.insert(text.begin(), digits[n & 15]);
    n >>= 4;
  } while (n != 0);
  return text;
}

std::string binaryDigits(std::uint64_t n) {
  std::string text;
  do {
    text.insert(text.begin(), static_cast<char>('0' + (n & 1)));
    n >>= 1;
  } while (n != 0);
  return text;
}

std::string displayText(const Value& value) {
  switch (value.kind) {
    case Value::INTEGER: return std::to_string(value.number) + " (0x" + hexDigits(value.number) + ")";
    case Value::STRING: return value.text;
    case Value::BOOLEAN: return value.truth ? "true" : "false";
  }
  return "";
}

std::string literalText(const Value& value) {
  if (value.kind != Value::STRING) return displayText(value);
  std::string text = "\"";
  for (const char c : value.text) {
    if (c == '"' || c == '\\') text += '\\';
    if (c == '\n') {
      text += "\\n";
      continue;
    }
    text += c;
  }
  return text + "\"";
}

}  // namespace kobubase
