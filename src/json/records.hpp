// The document's records as the room makes and fills them: one heap block for each record, vector and text.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "small_block.hpp"
#include "zjson_expression.h"

namespace zorvcrt {

/// The slots of a new vector, and by how many it grows.
inline constexpr int32_t kCapacityStep = 10;

/// The capacity that a container of so many items has when they were appended one by one.
inline int32_t capacity_for(int32_t count) {
  return (count / kCapacityStep + 1) * kCapacityStep;
}

inline ZJsonValue *new_value(ZJsonType type) {
  auto *value = new_record<ZJsonValue>();
  if (value != nullptr) value->type = type;
  return value;
}

/// How far ahead of a walk over a document its memory is fetched.
inline constexpr std::ptrdiff_t kFetchedAhead = 1024;

/// Has what stands that far from a record fetched. The records of a parsed document stand in memory mostly in
/// the order in which they were parsed.
[[gnu::always_inline]] inline void fetch_near(const void *record, std::ptrdiff_t distance) {
  // A number first: no pointer may be moved out of its record.
  const auto place = reinterpret_cast<std::intptr_t>(record) + distance;
  __builtin_prefetch(reinterpret_cast<const void *>(place));  // NOLINT(performance-no-int-to-ptr)
}

/// The text without a pair of equal characters around it, when that character is one of the quotes.
inline std::string_view without_quotes(std::string_view text, std::string_view quotes) {
  const bool quoted =
      text.size() > 1 && text.front() == text.back() && quotes.find(text.front()) != std::string_view::npos;
  return quoted ? std::string_view(text.data() + 1, text.size() - 2) : text;
}

inline constexpr std::string_view kNameQuotes = "\"'";
inline constexpr std::string_view kStringQuotes = "\"";

/// The text that a string value holds for a text, by the rules of ZJsonValue_NewStringL(); null when memory
/// runs out.
char *new_stored_text(std::string_view text);

/// A string value for a text, by the rules of ZJsonValue_NewStringL(); null when memory runs out.
ZJsonValue *new_string_value(std::string_view text);

/// An empty container with room for the first kCapacityStep items; null when memory runs out.
template <class Container, class Item>
Container *new_container(Item **Container::*slots) {
  auto *container = new_record<Container>();
  if (container == nullptr) return nullptr;
  container->*slots = static_cast<Item **>(zero_filled_small(kCapacityStep * sizeof(Item *)));
  if (container->*slots == nullptr) {
    std::free(container);
    return nullptr;
  }
  container->capacity = kCapacityStep;
  return container;
}

inline ZJsonArray *new_array() {
  return new_container(&ZJsonArray::items);
}
inline ZJsonObject *new_object() {
  return new_container(&ZJsonObject::members);
}

/// Appends by the rules of the public functions; false when nothing was stored.
bool append_item(ZJsonArray *array, ZJsonValue *value);
bool append_member(ZJsonObject *object, ZJsonMember *member);

/// The items of a container that can be looked at: none of a missing vector.
inline int32_t items_of(const ZJsonArray *array) {
  return array == nullptr || array->items == nullptr ? 0 : std::max(array->count, 0);
}
inline int32_t items_of(const ZJsonObject *object) {
  return object == nullptr || object->members == nullptr ? 0 : std::max(object->count, 0);
}

inline int32_t items_below(const ZJsonValue *value) {
  if (value->type == ZJSON_ARRAY) return items_of(value->array);
  if (value->type == ZJSON_OBJECT) return items_of(value->object);
  return 0;
}

}  // namespace zorvcrt
