// JSON records on standard output.
#include "records.hpp"

#include <cstdio>
#include <new>
#include <string>

namespace tools {

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

template <class T>
T *made(T *record) {
  if (record == nullptr) throw std::bad_alloc();
  return record;
}

unsigned at(std::string_view text, std::size_t i) {
  return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U;
}

// The length of the UTF-8 sequence at the start of the text, or 0 when there is none (RFC 3629).
std::size_t sequence_length(std::string_view text) {
  const unsigned lead = at(text, 0);
  if (lead < 0x80) return 1;
  const std::size_t length = lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 0;
  // Overlong forms, surrogates and what lies above U+10FFFF show in the second byte.
  const unsigned least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const unsigned most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  if (length == 0 || at(text, 1) < least || at(text, 1) > most) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if ((at(text, i) & 0xC0U) != 0x80U) return 0;
  }
  return length;
}

void append_escaped(std::string &escaped, unsigned char c) {
  if (c == '"' || c == '\\') {
    escaped += '\\';
    escaped += static_cast<char>(c);
  } else if (c < ' ') {
    char code[8];
    std::snprintf(code, sizeof code, "\\u%04x", c);
    escaped += code;
  } else {
    escaped += static_cast<char>(c);
  }
}

std::string escaped_text(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    const std::size_t length = sequence_length(text);
    if (length == 1) {
      append_escaped(escaped, static_cast<unsigned char>(text[0]));
    } else {
      escaped += length == 0 ? kReplacement : text.substr(0, length);
    }
    text.remove_prefix(length == 0 ? 1 : length);
  }
  return escaped;
}

}  // namespace

// ZJsonValue_NewString() would leave out quotes around the text, which here belong to it.
JsonValue json_text(std::string_view text) {
  JsonValue value(made(ZJsonValue_NewNull()));
  value->string = made(ZfxStrDup(escaped_text(text).c_str()));
  value->type = ZJSON_STRING;
  return value;
}

JsonValue json_number(int64_t number) {
  return JsonValue(made(ZJsonValue_NewInteger(number)));
}

JsonValue json_flag(bool flag) {
  return JsonValue(made(ZJsonValue_NewBool(flag ? 1 : 0)));
}

JsonRecord::JsonRecord() : object_(made(ZJsonObject_New())) {}

JsonRecord &JsonRecord::add(const char *name, JsonValue value) {
  Owner<ZJsonMember> member(made(ZJsonMember_New(name, value.get())));
  static_cast<void>(value.release());
  const int32_t count = object_->count;
  ZJsonObject_Append(object_.get(), member.get());
  if (object_->count == count) throw std::bad_alloc();
  static_cast<void>(member.release());
  return *this;
}

JsonValue JsonRecord::take() {
  JsonValue value(made(ZJsonValue_NewObject(object_.get())));
  static_cast<void>(object_.release());
  return value;
}

JsonList::JsonList() : array_(made(ZJsonArray_New())) {}

void JsonList::add(JsonValue value) {
  const int32_t count = array_->count;
  ZJsonArray_Append(array_.get(), value.get());
  if (array_->count == count) throw std::bad_alloc();
  static_cast<void>(value.release());
}

JsonValue JsonList::take() {
  JsonValue value(made(ZJsonValue_NewArray(array_.get())));
  static_cast<void>(array_.release());
  return value;
}

void print_json(JsonValue value) {
  char *text = nullptr;
  ZJsonValue_ToString(value.get(), &text, 0, -1);
  const Owner<char> owner(made(text));
  std::printf("%s\n", text);
}

}  // namespace tools
