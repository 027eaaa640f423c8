// The stack of the parser: states, values and, where they are asked for, places, side by side.
#pragma once

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>

#include "grammar_tables.hpp"
#include "scanner.h"

namespace zorvcrt {

/// The value of a symbol on the stack. Values and members that wait for their container to be closed stand in
/// the parser's list of items; MEMBERS and ELEMENTS know where theirs begin.
union StackValue {
  ZJsonValue *value;
  ZJsonMember *member;
  ZJsonObject *object;
  ZJsonArray *array;
  char *name;
  std::size_t first_item;
};

inline constexpr std::size_t kFirstStackRoom = 200;
inline constexpr std::size_t kLastStackRoom = 10000;

enum class Room { kEnough, kGrown, kExhausted };

template <bool kWithPlaces>
class ParseStack {
 public:
  ParseStack() {
    states_ = in_place_.states.data();
    values_ = in_place_.values.data();
    places_ = in_place_.places.data();
  }
  ~ParseStack() { std::free(block_); }
  ParseStack(const ParseStack &) = delete;
  ParseStack &operator=(const ParseStack &) = delete;

  [[nodiscard]] std::size_t size() const { return size_; }
  [[nodiscard]] std::size_t room() const { return room_; }
  [[nodiscard]] int16_t state(std::size_t index) const { return states_[index]; }
  [[nodiscard]] int16_t top_state() const { return states_[size_ - 1]; }
  [[nodiscard]] const StackValue &value(std::size_t index) const { return values_[index]; }
  [[nodiscard]] const ZJsonLocation &place(std::size_t index) const { return places_[index]; }

  /// The value of a right-hand symbol of a rule of the length; the first is number 1.
  [[nodiscard]] StackValue &right(std::size_t length, std::size_t number) {
    return values_[size_ - length + number - 1];
  }

  void pop(std::size_t count) { size_ -= count; }

  /// An entry is always left for the next push: a full stack grows at once.
  Room push(int16_t state, StackValue value, const ZJsonLocation &place) {
    states_[size_] = state;
    values_[size_] = value;
    if constexpr (kWithPlaces) places_[size_] = place;
    ++size_;
    return size_ < room_ ? Room::kEnough : grow();
  }

 private:
  static constexpr std::size_t kPlaceSize = kWithPlaces ? sizeof(ZJsonLocation) : 0;

  struct InPlace {
    std::array<int16_t, kFirstStackRoom> states;
    std::array<StackValue, kFirstStackRoom> values;
    std::array<ZJsonLocation, kWithPlaces ? kFirstStackRoom : 0> places;
  };

  Room grow() {
    if (room_ >= kLastStackRoom) return Room::kExhausted;
    const std::size_t room = std::min(2 * room_, kLastStackRoom);
    void *block = std::malloc(room * (sizeof(StackValue) + kPlaceSize + sizeof(int16_t)));
    if (block == nullptr) return Room::kExhausted;
    // The widest first, so that all are aligned.
    auto *values = static_cast<StackValue *>(block);
    void *behind_values = values + room;
    auto *places = static_cast<ZJsonLocation *>(behind_values);
    void *behind_places = static_cast<char *>(behind_values) + room * kPlaceSize;
    auto *states = static_cast<int16_t *>(behind_places);
    std::copy_n(values_, size_, values);
    if constexpr (kWithPlaces) std::copy_n(places_, size_, places);
    std::copy_n(states_, size_, states);
    std::free(block_);
    block_ = block;
    values_ = values;
    places_ = places;
    states_ = states;
    room_ = room;
    return Room::kGrown;
  }

  InPlace in_place_;
  int16_t *states_ = nullptr;
  StackValue *values_ = nullptr;
  ZJsonLocation *places_ = nullptr;
  void *block_ = nullptr;
  std::size_t size_ = 0;
  std::size_t room_ = kFirstStackRoom;
};

}  // namespace zorvcrt
