// The release of trees, without recursion and without memory, so that no depth of nesting is too deep.
#include <cstdlib>

#include "records.hpp"
#include "zfxmemory.h"
#include "zjson_expression.h"

namespace {

// The walk goes down by the containers' own vectors. While the items of a container are being released, its
// slot 0, whose item is taken first, holds the container above, and its capacity the index of the next item.
// Items go in the order in which they came: blocks that the heap gets back in that order it gives out
// quickest.

// Takes a value out of a container and releases what holds it there. Null when the slot is empty.
ZJsonValue *take(ZJsonValue *container, int32_t index) {
  if (container->type == ZJSON_ARRAY) return container->array->items[index];
  ZJsonMember *member = container->object->members[index];
  if (member == nullptr) return nullptr;
  ZJsonValue *value = member->value;
  std::free(member->name);
  std::free(member);
  return value;
}

// Tells whether there is a next item, and which.
bool next_index(ZJsonValue *container, int32_t &index) {
  int32_t &next = container->type == ZJSON_ARRAY ? container->array->capacity : container->object->capacity;
  if (next == zorvcrt::items_below(container)) return false;
  index = next++;
  return true;
}

ZJsonValue *container_above(const ZJsonValue *container) {
  if (container->type == ZJSON_ARRAY) return container->array->items[0];
  return reinterpret_cast<ZJsonValue *>(container->object->members[0]);
}

// Begins with the items of a container; gives the first one.
ZJsonValue *enter(ZJsonValue *container, ZJsonValue *above) {
  ZJsonValue *first = take(container, 0);
  if (container->type == ZJSON_ARRAY) {
    container->array->items[0] = above;
    container->array->capacity = 1;
  } else {
    container->object->members[0] = reinterpret_cast<ZJsonMember *>(above);
    container->object->capacity = 1;
  }
  return first;
}

// Releases the payload of a value that has no items, or none any more.
void release_payload(ZJsonValue *value) {
  if (value->type == ZJSON_STRING) {
    std::free(value->string);
  } else if (value->type == ZJSON_ARRAY && value->array != nullptr) {
    std::free(value->array->items);
    std::free(value->array);
  } else if (value->type == ZJSON_OBJECT && value->object != nullptr) {
    std::free(value->object->members);
    std::free(value->object);
  }
}

// Releases all that a value owns; the record itself stays.
void release_below(ZJsonValue *top) {
  if (zorvcrt::items_below(top) == 0) {
    release_payload(top);
    return;
  }
  ZJsonValue *container = top;
  ZJsonValue *item = enter(top, nullptr);
  for (;;) {
    if (item != nullptr && zorvcrt::items_below(item) > 0) {
      ZJsonValue *first = enter(item, container);
      container = item;
      item = first;
      continue;
    }
    if (item != nullptr) {
      release_payload(item);
      std::free(item);
    }
    int32_t index = 0;
    while (!next_index(container, index)) {
      ZJsonValue *above = container_above(container);
      release_payload(container);
      if (container == top) return;
      std::free(container);
      container = above;
    }
    item = take(container, index);
  }
}

}  // namespace

void ZJsonValue_Delete(ZJsonValue *value) {
  if (value == nullptr) return;
  release_below(value);
  std::free(value);
}

void ZJsonArray_Delete(ZJsonArray *array) {
  if (array == nullptr) return;
  ZJsonValue holder = {ZJSON_ARRAY, {}};
  holder.array = array;
  release_below(&holder);
}

void ZJsonObject_Delete(ZJsonObject *object) {
  if (object == nullptr) return;
  ZJsonValue holder = {ZJSON_OBJECT, {}};
  holder.object = object;
  release_below(&holder);
}

void ZJsonMember_Delete(ZJsonMember *member) {
  if (member == nullptr) return;
  std::free(member->name);
  ZJsonValue_Delete(member->value);
  std::free(member);
}

void ZJsonExpression_Delete(ZJsonExpression *document) {
  if (document == nullptr) return;
  std::free(document->errorMessage);
  ZJsonValue_Delete(document->root);
  std::free(document);
}
