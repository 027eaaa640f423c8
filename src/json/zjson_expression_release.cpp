// The release of trees, without recursion and without memory, so that no depth of nesting is too deep.
#include <cstdlib>

#include "records.hpp"
#include "zfxmemory.h"
#include "zjson_expression.h"

namespace {

// The walk goes down by the containers' own vectors. While the items of a container are being released, its
// slot 0, whose item is taken first, holds the container above, and its count the number of slots left.

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

int32_t &slots_left(ZJsonValue *container) {
  return container->type == ZJSON_ARRAY ? container->array->count : container->object->count;
}

ZJsonValue *container_above(const ZJsonValue *container) {
  if (container->type == ZJSON_ARRAY) return container->array->items[0];
  return reinterpret_cast<ZJsonValue *>(container->object->members[0]);
}

void set_container_above(ZJsonValue *container, ZJsonValue *above) {
  if (container->type == ZJSON_ARRAY) {
    container->array->items[0] = above;
  } else {
    container->object->members[0] = reinterpret_cast<ZJsonMember *>(above);
  }
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
  ZJsonValue *item = take(top, 0);
  set_container_above(top, nullptr);
  --slots_left(top);
  for (;;) {
    if (item != nullptr && zorvcrt::items_below(item) > 0) {
      ZJsonValue *first = take(item, 0);
      set_container_above(item, container);
      --slots_left(item);
      container = item;
      item = first;
      continue;
    }
    if (item != nullptr) {
      release_payload(item);
      std::free(item);
    }
    while (slots_left(container) == 0) {
      ZJsonValue *above = container_above(container);
      release_payload(container);
      if (container == top) return;
      std::free(container);
      container = above;
    }
    item = take(container, slots_left(container)--);
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
