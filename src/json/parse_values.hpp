// What the parser makes of tokens and of finished lists of items.
#pragma once

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <type_traits>

#include "late_vectors.hpp"
#include "records.hpp"
#include "scan.hpp"

namespace zorvcrt {

inline std::string_view string_text(const Token &token) {
  return {token.begin + 1, static_cast<std::size_t>(token.end - token.begin) - 2};
}

// What remains of a text as a terminated one.
inline std::string_view up_to_zero(std::string_view text) {
  const std::size_t zero = text.find('\0');
  return zero == std::string_view::npos ? text : std::string_view(text.data(), zero);
}

inline char *new_name(const Token &token) {
  std::string_view text = string_text(token);
  if (token.needs_care) text = up_to_zero(text);
  return new_text(without_quotes(text, kNameQuotes));
}

/// The text that a string value holds for the token.
inline char *new_string_text(const Token &token) {
  // As new_stored_text(), for a text in which nothing has to be left out or escaped.
  return token.needs_care ? new_stored_text(up_to_zero(string_text(token))) : new_text(string_text(token));
}

inline ZJsonValue *new_string(const Token &token) {
  ZJsonValue *value = new_value(ZJSON_STRING);
  if (value == nullptr) return nullptr;
  value->string = new_string_text(token);
  if (value->string != nullptr) return value;
  std::free(value);
  return nullptr;
}

inline ZJsonValue *new_integer(int64_t integer) {
  ZJsonValue *value = new_value(ZJSON_INTEGER);
  if (value != nullptr) value->integer = integer;
  return value;
}

inline ZJsonValue *new_number(double number) {
  ZJsonValue *value = new_value(ZJSON_NUMBER);
  if (value != nullptr) value->number = number;
  return value;
}

/// A container for so many items, with the capacity that it would have had they been appended one by one, and
/// without its vector. Null when memory runs out, and for more items than a container can count.
template <class Container>
Container *new_container_for(std::size_t size) {
  if (size > INT32_MAX - kCapacityStep) return nullptr;
  auto *container = new_record<Container>();
  if (container == nullptr) return nullptr;
  container->count = static_cast<int32_t>(size);
  container->capacity = capacity_for(container->count);
  return container;
}

}  // namespace zorvcrt
