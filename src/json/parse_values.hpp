// What the parser makes of tokens and of finished lists of items.
#pragma once

#include <cstdlib>
#include <cstring>
#include <string_view>

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

inline ZJsonValue *new_string(const Token &token) {
  if (token.needs_care) return new_string_value(up_to_zero(string_text(token)));
  // As new_string_value(), for a text in which nothing has to be left out or escaped.
  ZJsonValue *value = new_value(ZJSON_STRING);
  if (value == nullptr) return nullptr;
  value->string = new_text(string_text(token));
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

// A container of the items, with the capacity that it would have had they been appended one by one.
template <class Container, class Item>
Container *new_container_of(void *const *items, std::size_t size, Item **Container::*slots) {
  if (size > INT32_MAX - kCapacityStep) return nullptr;
  auto *container = new_record<Container>();
  if (container == nullptr) return nullptr;
  container->count = static_cast<int32_t>(size);
  container->capacity = capacity_for(container->count);
  const std::size_t bytes = static_cast<std::size_t>(container->capacity) * sizeof(Item *);
  auto *block = static_cast<char *>(std::malloc(bytes));
  if (block == nullptr) {
    std::free(container);
    return nullptr;
  }
  std::memcpy(block, items, size * sizeof(Item *));
  std::memset(block + size * sizeof(Item *), 0, bytes - size * sizeof(Item *));
  void *vector = block;
  container->*slots = static_cast<Item **>(vector);
  return container;
}

}  // namespace zorvcrt
