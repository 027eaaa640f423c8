// Arrays, objects and members: their making, look-up and change.
#include <malloc.h>

#include <algorithm>
#include <cstdarg>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "records.hpp"
#include "zfxmemory.h"
#include "zjson_expression.h"

namespace zorvcrt {

namespace {

// From this capacity on a vector's block grows by half at a time, so that appending stays linear in the
// number of items where the heap cannot grow a block in place. The capacity keeps growing in its fixed steps.
constexpr int32_t kGeometricFrom = 100;

// Makes sure that the vector's block holds so many slots. What the block really holds is asked of the
// allocator, because a vector may come from a caller.
template <class Item>
bool reserve(Item **&slots, int32_t capacity) {
  const std::size_t wanted = static_cast<std::size_t>(capacity) * sizeof(Item *);
  void *grown = nullptr;
  if (capacity >= kGeometricFrom) {
    if (malloc_usable_size(slots) >= wanted) return true;
    grown = std::realloc(slots, wanted + wanted / 2);
  }
  if (grown == nullptr) grown = std::realloc(slots, wanted);
  if (grown == nullptr) return false;
  slots = static_cast<Item **>(grown);
  return true;
}

template <class Item>
bool append(int32_t &count, int32_t &capacity, Item **&slots, Item *item) {
  if (count < 0 || capacity < 0) return false;
  if (count >= capacity - 1) {
    // A count beyond the capacity, or a vector of more than 2^31 - 1 slots, is left alone.
    if (count > capacity || capacity > INT32_MAX - kCapacityStep) return false;
    if (!reserve(slots, capacity + kCapacityStep)) return false;
    capacity += kCapacityStep;
  }
  if (slots == nullptr) return false;
  slots[count++] = item;
  return true;
}

bool has_name(const ZJsonMember *member, const char *name) {
  return member != nullptr && member->name != nullptr && std::strcmp(member->name, name) == 0;
}

constexpr int32_t kNotFound = -1;

int32_t index_of(const ZJsonObject *object, const char *name) {
  const int32_t count = items_of(object);
  for (int32_t i = 0; i < count; ++i) {
    if (has_name(object->members[i], name)) return i;
  }
  return kNotFound;
}

int32_t index_of(const ZJsonObject *object, const ZJsonMember *member) {
  const int32_t count = items_of(object);
  for (int32_t i = 0; i < count; ++i) {
    if (object->members[i] == member) return i;
  }
  return kNotFound;
}

void remove_at(ZJsonObject *object, int32_t index) {
  if (index == kNotFound) return;
  ZJsonMember **slot = object->members + index;
  ZJsonMember_Delete(*slot);
  std::copy(slot + 1, object->members + object->count, slot);
  object->members[--object->count] = nullptr;
}

// A member that stands further back in the object already moves forward, and its place is closed.
void replace_at(ZJsonObject *object, int32_t index, ZJsonMember *member) {
  ZJsonMember **const end = object->members + object->count;
  ZJsonMember **const before = std::find(object->members + index + 1, end, member);
  ZJsonMember *const old = std::exchange(object->members[index], member);
  if (before == end) {
    ZJsonMember_Delete(old);
  } else {
    *before = old;
    remove_at(object, static_cast<int32_t>(before - object->members));
  }
}

}  // namespace

bool append_item(ZJsonArray *array, ZJsonValue *value) {
  return array != nullptr && value != nullptr && append(array->count, array->capacity, array->items, value);
}

bool append_member(ZJsonObject *object, ZJsonMember *member) {
  return object != nullptr && member != nullptr &&
         append(object->count, object->capacity, object->members, member);
}

}  // namespace zorvcrt

namespace {

bool is_simple(int32_t type) {
  return type >= ZJSON_NULL && type <= ZJSON_STRING && type != ZJSON_ARRAY && type != ZJSON_OBJECT;
}

// Reads the argument that belongs to a simple type.
ZJsonValue *value_of_argument(int32_t type, va_list *arguments) {
  switch (type) {
    case ZJSON_BOOL:
      return ZJsonValue_NewBool(va_arg(*arguments, int));
    case ZJSON_INTEGER:
      return ZJsonValue_NewInteger(va_arg(*arguments, int64_t));
    case ZJSON_NUMBER:
      return ZJsonValue_NewNumber(va_arg(*arguments, double));
    case ZJSON_STRING:
      return ZJsonValue_NewString(va_arg(*arguments, const char *));
    default:
      return ZJsonValue_NewNull();
  }
}

// Takes the value over in every case. What there is no memory for is left out.
void append_simple(ZJsonObject *object, const char *name, ZJsonValue *value) {
  ZJsonMember *member = value == nullptr ? nullptr : ZJsonMember_New(name, value);
  if (member == nullptr) {
    ZJsonValue_Delete(value);
  } else if (!zorvcrt::append_member(object, member)) {
    ZJsonMember_Delete(member);
  }
}

// Appends the members of the list; false when a name or a type is none that can be given.
bool append_listed(ZJsonObject *object, int32_t type, va_list *arguments) {
  for (; type != ZJSON_END; type = va_arg(*arguments, int32_t)) {
    const char *name = va_arg(*arguments, const char *);
    if (name == nullptr || *name == '\0' || !is_simple(type)) return false;
    append_simple(object, name, value_of_argument(type, arguments));
  }
  return true;
}

}  // namespace

ZJsonArray *ZJsonArray_New(void) {
  return zorvcrt::new_array();
}

void ZJsonArray_Append(ZJsonArray *array, ZJsonValue *value) {
  zorvcrt::append_item(array, value);
}

ZJsonObject *ZJsonObject_New(void) {
  return zorvcrt::new_object();
}

ZJsonObject *ZJsonObject_NewSimple(int32_t type, ...) {
  ZJsonObject *object = ZJsonObject_New();
  if (object == nullptr) return nullptr;
  va_list arguments;
  va_start(arguments, type);
  const bool complete = append_listed(object, type, &arguments);
  va_end(arguments);
  if (complete) return object;
  ZJsonObject_Delete(object);
  return nullptr;
}

void ZJsonObject_Append(ZJsonObject *object, ZJsonMember *member) {
  zorvcrt::append_member(object, member);
}

ZJsonMember *ZJsonObject_GetMember(const ZJsonObject *object, const char *name) {
  if (name == nullptr) return nullptr;
  const int32_t index = zorvcrt::index_of(object, name);
  return index == zorvcrt::kNotFound ? nullptr : object->members[index];
}

void ZJsonObject_Replace(ZJsonObject *object, ZJsonMember *member) {
  if (object == nullptr || member == nullptr) return;
  const int32_t count = zorvcrt::items_of(object);
  for (int32_t i = 0; i < count; ++i) {
    ZJsonMember *old = object->members[i];
    if (old == member) return;
    if (member->name != nullptr && zorvcrt::has_name(old, member->name)) {
      zorvcrt::replace_at(object, i, member);
      return;
    }
  }
  ZJsonObject_Append(object, member);
}

void ZJsonObject_DeleteMemberByRef(ZJsonObject *object, ZJsonMember *member) {
  if (member != nullptr) zorvcrt::remove_at(object, zorvcrt::index_of(object, member));
}

void ZJsonObject_DeleteMember(ZJsonObject *object, const char *name) {
  if (name != nullptr) zorvcrt::remove_at(object, zorvcrt::index_of(object, name));
}

ZJsonMember *ZJsonMember_New(const char *name, ZJsonValue *value) {
  if (name == nullptr) return nullptr;
  auto *member = zorvcrt::new_record<ZJsonMember>();
  if (member == nullptr) return nullptr;
  member->name = zorvcrt::new_text(zorvcrt::without_quotes(name, zorvcrt::kNameQuotes));
  if (member->name == nullptr) {
    std::free(member);
    return nullptr;
  }
  member->value = value;
  return member;
}
