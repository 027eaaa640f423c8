// The release of trees, without recursion and without memory, so that no depth of nesting is too deep.
#include <cstdlib>

#include "early_vectors.hpp"
#include "records.hpp"
#include "zfxmemory.h"
#include "zjson_expression.h"

namespace {

// The walk keeps what it needs in the records that it is about to release: the count of a container says how
// many items are left, and where the pointer to the item behind those was, while that item is walked through,
// stands the container above.
//
// Items go from the last to the first and each record before what it was made for: the reverse of the order
// in which the parser asks for them. What was made last is still near the processor, and as the heap gives
// out first what it got back last, the next document finds its records side by side again. With the name of a
// member released before what is below its value, six in ten records stood on another page than the record
// before them some ten documents later, and a document like twitter took four in a hundred more.

// Releases the payload of a value that has no items, or none any more.
inline void release_payload(ZJsonValue *value) {
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

// Releases a value, unless it has items: then it is given back.
inline ZJsonValue *release_leaf(ZJsonValue *value) {
  if (value == nullptr) return nullptr;
  zorvcrt::fetch_near(value, -zorvcrt::kFetchedAhead);
  if (value->type == ZJSON_STRING) {
    std::free(value->string);
  } else if (value->type == ZJSON_ARRAY || value->type == ZJSON_OBJECT) {
    if (zorvcrt::items_below(value) > 0) return value;
    release_payload(value);
  }
  std::free(value);
  return nullptr;
}

// Releases items from the last on. Gives the first that has items of its own; null when none is left.
ZJsonValue *release_leaves(ZJsonArray &array) {
  ZJsonValue *const *items = array.items;
  ZJsonValue *left = nullptr;
  int32_t count = array.count;
  while (left == nullptr && count > 0) {
    left = release_leaf(items[--count]);
  }
  array.count = count;
  return left;
}

void release_member(ZJsonMember *member) {
  std::free(member->name);
  std::free(member);
}

ZJsonValue *release_leaves(ZJsonObject &object) {
  ZJsonMember *const *members = object.members;
  ZJsonValue *left = nullptr;
  int32_t count = object.count;
  while (left == nullptr && count > 0) {
    ZJsonMember *member = members[--count];
    if (member == nullptr) continue;
    left = release_leaf(member->value);
    if (left == nullptr) release_member(member);
  }
  object.count = count;
  return left;
}

ZJsonValue *release_leaves(ZJsonValue *container) {
  return container->type == ZJSON_ARRAY ? release_leaves(*container->array)
                                        : release_leaves(*container->object);
}

void keep_above(ZJsonValue *container, ZJsonValue *above) {
  if (container->type == ZJSON_ARRAY) {
    container->array->items[container->array->count] = above;
  } else {
    container->object->members[container->object->count]->value = above;
  }
}

// Gives the container above, and releases the member whose value has been walked through.
ZJsonValue *take_above(ZJsonValue *container) {
  if (container->type == ZJSON_ARRAY) return container->array->items[container->array->count];
  ZJsonMember *member = container->object->members[container->object->count];
  ZJsonValue *above = member->value;
  release_member(member);
  return above;
}

// Takes a vector that was released early from a container whose items are released.
void forget_vector(ZJsonValue *container, const zorvcrt::EarlyVectors &early) {
  if (container->type == ZJSON_ARRAY && container->array != nullptr) {
    if (early.hold(container->array->items)) container->array->items = nullptr;
  } else if (container->type == ZJSON_OBJECT && container->object != nullptr) {
    if (early.hold(container->object->members)) container->object->members = nullptr;
  }
}

// Releases all that a value owns; the record itself stays.
void release_below(ZJsonValue *top, const zorvcrt::EarlyVectors &early) {
  ZJsonValue *above = nullptr;
  ZJsonValue *container = top;
  for (;;) {
    ZJsonValue *item = zorvcrt::items_below(container) > 0 ? release_leaves(container) : nullptr;
    if (item != nullptr) {
      keep_above(container, above);
      above = container;
      container = item;
      continue;
    }
    forget_vector(container, early);
    release_payload(container);
    if (container == top) return;
    std::free(container);
    container = above;
    above = take_above(container);
  }
}

}  // namespace

void ZJsonValue_Delete(ZJsonValue *value) {
  if (value == nullptr) return;
  release_below(value, zorvcrt::EarlyVectors(value));
  std::free(value);
}

void ZJsonArray_Delete(ZJsonArray *array) {
  if (array == nullptr) return;
  ZJsonValue holder = {ZJSON_ARRAY, {}};
  holder.array = array;
  release_below(&holder, {});
}

void ZJsonObject_Delete(ZJsonObject *object) {
  if (object == nullptr) return;
  ZJsonValue holder = {ZJSON_OBJECT, {}};
  holder.object = object;
  release_below(&holder, {});
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
