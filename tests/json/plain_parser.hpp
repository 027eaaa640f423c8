// A plain restatement of the grammar and its messages, against which the parser is compared.
#pragma once

#include <cstring>
#include <string>

#include "plain_scanner.hpp"
#include "realconv.h"

namespace plain {

/// Grammar and messages restated as recursive descent over the plain scanner. Gives the printed document or
/// the message; "jam" where the scanner would end the process.
struct PlainParser {
  explicit PlainParser(const std::string &text) : scanner{text} {}

  struct Stop {
    std::string text;
  };

  PlainScanner scanner;
  Seen token;
  std::string output;

  static std::string name_of(int code) {
    static const char *const names[] = {"INTEGER", "NUMBER", "STRING",  "TRUE_SYM", "FALSE_SYM", "NULL_SYM",
                                        "O_BEGIN", "O_END",  "A_BEGIN", "A_END",    "COMMA",     "COLON"};
    return code == 0 ? "$end" : code < 256 ? "$undefined" : names[code - 258];
  }
  void read() {
    token = scanner.next();
    if (token.code == kJam) throw Stop{"jam"};
  }
  [[noreturn]] void fail(const std::string &expected) const {
    throw Stop{"line #" + std::to_string(token.line) + "." + std::to_string(token.column) +
               ": syntax error, unexpected " + name_of(token.code) + expected};
  }
  static std::string stripped(const std::string &text, const std::string &quotes) {
    if (text.size() > 1 && text.front() == text.back() && quotes.find(text.front()) != std::string::npos)
      return text.substr(1, text.size() - 2);
    return text;
  }
  std::string string_text() const { return token.value.substr(1).c_str(); }
  static std::string escaped(const std::string &text) {
    bool needed = false;
    for (std::size_t i = 0; i < text.size(); ++i)
      needed = needed || std::strchr("\b\t\n\r", text[i]) != nullptr ||
               (text[i] == '"' && (i == 0 || text[i - 1] != '\\'));
    if (!needed) return text;
    std::string result;
    for (const char c : text) {
      const std::size_t which = std::string("\b\t\n\r\"").find(c);
      result += which == std::string::npos ? std::string(1, c) : std::string("\\") + "btnr\""[which];
    }
    return result;
  }
  void value() {
    switch (token.code) {
      case 258:
        output += token.value.substr(1);
        break;
      case 259: {
        char text[64];
        realconv_ftoa(text, sizeof text, realconv_atof(token.text.c_str(), 0));
        output += text;
        break;
      }
      case 260:
        output += "\"" + escaped(stripped(string_text(), "\"")) + "\"";
        break;
      case 261:
        output += "true";
        break;
      case 262:
        output += "false";
        break;
      case 263:
        output += "null";
        break;
      case 264:
        return object();
      case 266:
        return array();
      default:
        fail("");
    }
  }
  void array() {
    output += "[";
    read();
    if (token.code != 267) {
      value();
      for (read(); token.code == 268; read()) {
        output += ",";
        read();
        value();
      }
      if (token.code != 267) fail(", expecting A_END or COMMA");
    }
    output += "]";
  }
  void pair() {
    output += "\"" + stripped(string_text(), "\"'") + "\":";
    read();
    if (token.code != 269) fail(", expecting COLON");
    read();
    value();
  }
  void object() {
    output += "{";
    read();
    if (token.code != 265) {
      if (token.code != 260) fail(", expecting STRING or O_END");
      pair();
      for (read(); token.code == 268; read()) {
        output += ",";
        read();
        if (token.code != 260) fail(", expecting STRING");
        pair();
      }
      if (token.code != 265) fail(", expecting O_END or COMMA");
    }
    output += "}";
  }
  std::string run() {
    try {
      read();
      if (token.code != 264 && token.code != 266) fail(", expecting O_BEGIN or A_BEGIN");
      value();
      read();
      if (token.code != 0) fail(", expecting $end");
      return output;
    } catch (const Stop &stop) {
      return stop.text;
    }
  }
};

}  // namespace plain
