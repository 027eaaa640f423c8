// What the parser makes of tokens and of finished lists of items.
#pragma once

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <type_traits>

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

/// The vector of a container; null when memory runs out.
template <class Item>
Item **new_vector(void *const *items, int32_t count, int32_t capacity) {
  const std::size_t used = static_cast<std::size_t>(count) * sizeof(Item *);
  const std::size_t size = static_cast<std::size_t>(capacity) * sizeof(Item *);
  auto *block = static_cast<char *>(std::malloc(size));
  if (block == nullptr) return nullptr;
  std::memcpy(block, items, used);
  std::memset(block + used, 0, size - used);
  void *vector = block;
  return static_cast<Item **>(vector);
}

/// Long containers that are closed while the rest of the document is still being parsed, and that get their
/// vectors at its end. Before this libc's heap gives out a large block it merges all small ones that were
/// ever released; at the end most of those are in use again. Asked for in between, such blocks took a seventh
/// of the time of a document with long lists. What finds no place here gets its vector at once.
class LateVectors {
 public:
  LateVectors() = default;
  LateVectors(const LateVectors &) = delete;
  LateVectors &operator=(const LateVectors &) = delete;
  ~LateVectors() {
    for (std::size_t i = 0; i < containers_; ++i) {
      release(late_[i]);
    }
  }

  /// Takes the items of a container over, if it is long enough and there is a place.
  template <class Container>
  bool take(Container *container, void *const *items) {
    const auto size = static_cast<std::size_t>(container->count);
    if (static_cast<std::size_t>(container->capacity) * sizeof(void *) < kLargeBlock) return false;
    if (containers_ == kContainers || size > kItems - used_) return false;
    late_[containers_++] = {container, std::is_same_v<Container, ZJsonArray>, used_, size};
    std::copy_n(items, size, items_.data() + used_);
    used_ += size;
    return true;
  }

  /// Gives all containers their vectors. False when memory runs out.
  bool finish() {
    for (; containers_ > 0; --containers_) {
      const Late &late = late_[containers_ - 1];
      void *const *items = items_.data() + late.first;
      if (late.is_array) {
        auto *array = static_cast<ZJsonArray *>(late.container);
        array->items = new_vector<ZJsonValue>(items, array->count, array->capacity);
        if (array->items == nullptr) return false;
      } else {
        auto *object = static_cast<ZJsonObject *>(late.container);
        object->members = new_vector<ZJsonMember>(items, object->count, object->capacity);
        if (object->members == nullptr) return false;
      }
    }
    return true;
  }

 private:
  struct Late {
    void *container;  // owned by what holds it; only its items are owned here
    bool is_array;
    std::size_t first;
    std::size_t size;
  };

  static constexpr std::size_t kLargeBlock = 1024;
  static constexpr std::size_t kContainers = 16;
  static constexpr std::size_t kItems = 512;

  void release(const Late &late) {
    for (std::size_t i = late.first; i < late.first + late.size; ++i) {
      if (late.is_array) {
        ZJsonValue_Delete(static_cast<ZJsonValue *>(items_[i]));
      } else {
        ZJsonMember_Delete(static_cast<ZJsonMember *>(items_[i]));
      }
    }
  }

  std::size_t containers_ = 0;
  std::size_t used_ = 0;
  std::array<Late, kContainers> late_;
  std::array<void *, kItems> items_;
};

}  // namespace zorvcrt
