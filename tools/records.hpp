// Results as JSON, for --output json, made with the library's own document model.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "owner.hpp"

namespace tools {

using JsonValue = Owner<ZJsonValue>;

/// A string that any JSON reader takes: escaped, and with U+FFFD for bytes that are no UTF-8.
JsonValue json_text(std::string_view text);
JsonValue json_number(int64_t number);
JsonValue json_flag(bool flag);

class JsonRecord {
 public:
  JsonRecord();
  /// Adds a member; its name needs no escaping.
  JsonRecord &add(const char *name, JsonValue value);
  JsonRecord &add(const char *name, std::string_view text) { return add(name, json_text(text)); }
  /// The record as a value; it is spent then.
  [[nodiscard]] JsonValue take();

 private:
  Owner<ZJsonObject> object_;
};

class JsonList {
 public:
  JsonList();
  void add(JsonValue value);
  [[nodiscard]] JsonValue take();

 private:
  Owner<ZJsonArray> array_;
};

/// Prints the value on a line of its own.
void print_json(JsonValue value);

}  // namespace tools
