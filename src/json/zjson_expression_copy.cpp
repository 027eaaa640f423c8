// Deep copies, without recursion: whole, or none.
#include <memory>
#include <utility>

#include "frame_stack.hpp"
#include "records.hpp"
#include "zfxmemory.h"
#include "zjson_expression.h"

namespace {

struct ValueDeleter {
  void operator()(ZJsonValue *value) const { ZJsonValue_Delete(value); }
};
struct MemberDeleter {
  void operator()(ZJsonMember *member) const { ZJsonMember_Delete(member); }
};
using UniqueValue = std::unique_ptr<ZJsonValue, ValueDeleter>;
using UniqueMember = std::unique_ptr<ZJsonMember, MemberDeleter>;

// A container on its way into the copy, and the next of its items.
struct Frame {
  const ZJsonValue *source;
  ZJsonValue *copy;
  int32_t next;
};

// Copies a value without its items: a container comes out empty. Null when memory runs out.
UniqueValue shallow_copy(const ZJsonValue &source) {
  UniqueValue copy(zorvcrt::new_value(source.type));
  if (!copy) return copy;
  bool complete = true;
  switch (source.type) {
    case ZJSON_BOOL:
      copy->boolean = source.boolean;
      break;
    case ZJSON_ARRAY:
      if (source.array != nullptr) complete = (copy->array = zorvcrt::new_array()) != nullptr;
      break;
    case ZJSON_OBJECT:
      if (source.object != nullptr) complete = (copy->object = zorvcrt::new_object()) != nullptr;
      break;
    case ZJSON_INTEGER:
      copy->integer = source.integer;
      break;
    case ZJSON_NUMBER:
      copy->number = source.number;
      break;
    case ZJSON_STRING:
      if (source.string != nullptr) complete = (copy->string = ZfxStrDup(source.string)) != nullptr;
      break;
    default:
      break;
  }
  if (!complete) copy.reset();
  return copy;
}

bool append_copy(ZJsonValue *array, UniqueValue value) {
  if (!value || !zorvcrt::append_item(array->array, value.get())) return false;
  return value.release() != nullptr;
}

// A value without a record has one in the copy of its member only when it has one here.
bool append_copy(ZJsonValue *object, const ZJsonMember &source, UniqueValue value) {
  if (source.value != nullptr && !value) return false;
  UniqueMember member(ZJsonMember_New(source.name, value.get()));
  if (!member) return false;
  value.release();  // NOLINT(bugprone-unused-return-value): the member owns it now
  if (!zorvcrt::append_member(object->object, member.get())) return false;
  return member.release() != nullptr;
}

// The value in a slot of a container; null for an empty slot and for a member that cannot be copied, having
// no name.
const ZJsonValue *value_at(const ZJsonValue &container, int32_t index, const ZJsonMember *&member) {
  if (container.type == ZJSON_ARRAY) return container.array->items[index];
  member = container.object->members[index];
  if (member != nullptr && member->name == nullptr) member = nullptr;
  return member == nullptr ? nullptr : member->value;
}

// Copies the next item of the frame's container; gives its source when it has items to be copied in turn.
bool copy_item(Frame &frame, Frame &below) {
  const ZJsonMember *member = nullptr;
  below.source = value_at(*frame.source, frame.next++, member);
  if (below.source == nullptr && member == nullptr) return true;
  UniqueValue copy = below.source == nullptr ? nullptr : shallow_copy(*below.source);
  below.copy = copy.get();
  return member == nullptr ? append_copy(frame.copy, std::move(copy))
                           : append_copy(frame.copy, *member, std::move(copy));
}

UniqueValue deep_copy(const ZJsonValue &source) {
  UniqueValue copy = shallow_copy(source);
  if (!copy) return copy;
  zorvcrt::FrameStack<Frame> frames;
  bool complete = frames.push({&source, copy.get(), 0});
  while (complete && !frames.empty()) {
    Frame &frame = frames.top();
    if (frame.next >= zorvcrt::items_below(frame.source)) {
      frames.pop();
      continue;
    }
    Frame below = {nullptr, nullptr, 0};
    complete = copy_item(frame, below);
    if (complete && below.source != nullptr && zorvcrt::items_below(below.source) > 0) {
      complete = frames.push(below);
    }
  }
  if (!complete) copy.reset();
  return copy;
}

}  // namespace

ZJsonValue *ZJsonValue_Clone(const ZJsonValue *value) {
  return value == nullptr ? nullptr : deep_copy(*value).release();
}

ZJsonArray *ZJsonArray_Clone(const ZJsonArray *array) {
  if (array == nullptr) return nullptr;
  ZJsonValue holder = {ZJSON_ARRAY, {}};
  holder.array = const_cast<ZJsonArray *>(array);  // only read, as deep_copy() promises
  const UniqueValue copy = deep_copy(holder);
  return copy ? std::exchange(copy->array, nullptr) : nullptr;
}

ZJsonObject *ZJsonObject_Clone(const ZJsonObject *object) {
  if (object == nullptr) return nullptr;
  ZJsonValue holder = {ZJSON_OBJECT, {}};
  holder.object = const_cast<ZJsonObject *>(object);  // only read, as deep_copy() promises
  const UniqueValue copy = deep_copy(holder);
  return copy ? std::exchange(copy->object, nullptr) : nullptr;
}

ZJsonMember *ZJsonMember_Clone(const ZJsonMember *member) {
  if (member == nullptr) return nullptr;
  UniqueValue value(ZJsonValue_Clone(member->value));
  if (member->value != nullptr && !value) return nullptr;
  ZJsonMember *copy = ZJsonMember_New(member->name, value.get());
  if (copy != nullptr) value.release();  // NOLINT(bugprone-unused-return-value): the copy owns it now
  return copy;
}
