// A script of changes to a JSON document against a tree of plain records, which is printed in both forms.
#include <cstring>
#include <utility>
#include <vector>

#include "check.hpp"
#include "input.hpp"
#include "json/documents.hpp"
#include "json/plain_parser.hpp"
#include "realconv.h"

namespace {

// A scalar holds its printed text; a container its items, which in an object have names.
struct Node {
  char kind = 's';  // 's', '[' or '{'
  std::string text;
  std::vector<Node> items;
  std::string name;
};

std::string stripped(const std::string &text, const std::string &quotes) {
  const bool quoted =
      text.size() > 1 && text.front() == text.back() && quotes.find(text[0]) != std::string::npos;
  return quoted ? text.substr(1, text.size() - 2) : text;
}

void new_line(std::string &out, int level) {
  if (level >= 0) out += '\n' + std::string(static_cast<std::size_t>(level), '\t');
}

void print(const Node &node, bool after_name, int level, std::string &out) {
  if (node.kind == 's') {
    out += node.text;
    return;
  }
  const bool is_object = node.kind == '{';
  const int inner = level < 0 ? -1 : level + 1;
  if (!after_name && !out.empty()) new_line(out, level);
  out += node.kind;
  const char *separator = "";
  for (const Node &item : node.items) {
    out += std::exchange(separator, ",");
    if (is_object) new_line(out, inner);
    if (is_object) out += '"' + item.name + "\":";
    print(item, is_object, inner, out);
  }
  if (is_object && !node.items.empty()) new_line(out, level);
  out += is_object ? '}' : ']';
}

// A new value and what it prints as. A text keeps what has no need of escaping, which has a model of its own.
std::pair<ZJsonValue *, Node> new_value(fuzz::Input &input) {
  switch (input.within(0, 7)) {
    case 0:
      return {ZJsonValue_NewNull(), {'s', "null", {}, {}}};
    case 1: {
      const int32_t boolean = input.within(-1, 1);
      return {ZJsonValue_NewBool(boolean), {'s', boolean != 0 ? "true" : "false", {}, {}}};
    }
    case 2: {
      const auto integer = input.integer<int64_t>();
      return {ZJsonValue_NewInteger(integer), {'s', std::to_string(integer), {}, {}}};
    }
    case 3: {
      const double number = input.integer<int32_t>() / 8.0;
      char text[64];
      realconv_ftoa(text, sizeof text, number);
      return {ZJsonValue_NewNumber(number), {'s', text, {}, {}}};
    }
    case 4: {
      const std::string text = fuzz::c_text(input.line());
      return {ZJsonValue_NewString(text.c_str()),
              {'s', '"' + plain::PlainParser::escaped(stripped(text, "\"")) + '"', {}, {}}};
    }
    case 5:
      return {ZJsonValue_NewArray(ZJsonArray_New()), {'[', "", {}, {}}};
    case 6:
      return {ZJsonValue_NewObject(ZJsonObject_New()), {'{', "", {}, {}}};
    default:
      return {ZJsonValue_NewInt(input.byte()), {'s', "", {}, {}}};
  }
}

class Editor {
 public:
  explicit Editor(bool object) : document_(ZJsonExpression_New()) {
    void *container = object ? static_cast<void *>(ZJsonObject_New()) : static_cast<void *>(ZJsonArray_New());
    ZJsonExpression_SetRoot(document_.get(), object ? ZJSON_OBJECT : ZJSON_ARRAY, container);
    root_.kind = object ? '{' : '[';
    go_to_root();
  }

  void step(fuzz::Input &input) {
    switch (input.within(0, 9)) {
      case 0:
        return remove(input);
      case 1:
        return go_down(static_cast<std::size_t>(input.byte()));
      case 2:
        return go_to_root();
      case 3:
        return replace(input);
      case 4:
        return copy_root();
      case 5:
        return look_up(fuzz::c_text(input.line()));
      default:
        return append(input);
    }
  }

  // Where the script works, printed behind another text and at any depth.
  void compare_part(int32_t after_name, int32_t level) const {
    std::string expected = "before";
    print(*node_, after_name != 0, level, expected);
    char *out = ZfxStrDup("before");
    const uint32_t length = ZJsonValue_ToString(value_, &out, after_name, level);
    const documents::Owned<char> owner(out);
    fuzz::check_equal(std::string(out, length), expected, "part of a document");
  }

  void compare() const {
    for (const bool pretty : {false, true}) {
      std::string expected;
      print(root_, false, pretty ? 0 : -1, expected);
      fuzz::check_equal(documents::printed(document_.get(), pretty), expected, pretty ? "pretty" : "compact");
    }
    const int32_t count = is_object() ? value_->object->count : value_->array->count;
    const int32_t capacity = is_object() ? value_->object->capacity : value_->array->capacity;
    fuzz::check_equal(static_cast<std::size_t>(count), node_->items.size(), "count");
    fuzz::check(capacity % 10 == 0 && capacity > count, "the capacity is a multiple of ten above the count");
  }

 private:
  [[nodiscard]] bool is_object() const { return node_->kind == '{'; }

  void go_to_root() {
    node_ = &root_;
    value_ = document_->root;
  }
  void go_down(std::size_t index) {
    if (index >= node_->items.size() || node_->items[index].kind == 's') return;
    value_ = is_object() ? value_->object->members[index]->value : value_->array->items[index];
    node_ = &node_->items[index];
  }

  static std::pair<ZJsonValue *, Node> value_of(fuzz::Input &input) {
    auto made = new_value(input);
    if (made.second.kind == 's' && made.second.text.empty()) {
      made.second.text = std::to_string(made.first->integer);
    }
    return made;
  }
  std::pair<ZJsonMember *, Node> new_member(fuzz::Input &input) {
    const std::string name = fuzz::c_text(input.line());
    auto [value, node] = value_of(input);
    ZJsonMember *member = ZJsonMember_New(name.c_str(), value);
    fuzz::check_equal(std::string(member->name), stripped(name, "\"'"), "name of a member");
    node.name = member->name;
    return {member, std::move(node)};
  }

  void append(fuzz::Input &input) {
    if (is_object()) {
      auto [member, item] = new_member(input);
      ZJsonObject_Append(value_->object, member);
      node_->items.push_back(std::move(item));
    } else {
      auto [value, node] = value_of(input);
      ZJsonArray_Append(value_->array, value);
      node_->items.push_back(std::move(node));
    }
  }
  [[nodiscard]] auto find(const std::string &name) const {
    return std::find_if(node_->items.begin(), node_->items.end(),
                        [&](const auto &item) { return item.name == name; });
  }
  void look_up(const std::string &name) const {
    if (!is_object()) return;
    const ZJsonMember *member = ZJsonObject_GetMember(value_->object, name.c_str());
    const auto place = find(name);
    const auto index = static_cast<std::size_t>(place - node_->items.begin());
    const ZJsonMember *expected = place == node_->items.end() ? nullptr : value_->object->members[index];
    fuzz::check(member == expected, "the first member of a name is found");
  }
  void replace(fuzz::Input &input) {
    if (!is_object()) return;
    auto [member, item] = new_member(input);
    ZJsonObject_Replace(value_->object, member);
    const auto place = find(item.name);
    if (place == node_->items.end()) {
      node_->items.push_back(std::move(item));
    } else {
      *place = std::move(item);
    }
  }
  void remove(fuzz::Input &input) {
    if (!is_object()) return;
    const std::string name = fuzz::c_text(input.line());
    const auto index = static_cast<std::size_t>(input.byte());
    if (index < node_->items.size()) {
      ZJsonObject_DeleteMemberByRef(value_->object, value_->object->members[index]);
      node_->items.erase(node_->items.begin() + static_cast<std::ptrdiff_t>(index));
    }
    ZJsonObject_DeleteMember(value_->object, name.c_str());
    if (const auto place = find(name); place != node_->items.end()) node_->items.erase(place);
  }

  static void strip_names(Node &node) {
    for (Node &item : node.items) {
      item.name = stripped(item.name, "\"'");
      strip_names(item);
    }
  }
  // The document goes on with a copy, in which quoted names have lost their quotes once more.
  void copy_root() {
    ZJsonValue *copy = ZJsonValue_Clone(document_->root);
    void *container = copy->type == ZJSON_OBJECT ? static_cast<void *>(std::exchange(copy->object, nullptr))
                                                 : static_cast<void *>(std::exchange(copy->array, nullptr));
    ZJsonExpression_SetRoot(document_.get(), copy->type, container);
    ZJsonValue_Delete(copy);
    strip_names(root_);
    go_to_root();
  }

  documents::Document document_;
  Node root_;
  Node *node_ = nullptr;  // where the script works, and the value that belongs to it
  ZJsonValue *value_ = nullptr;
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  Editor editor(input.within(0, 1) == 1);
  editor.compare();
  for (int left = 150; left > 0 && !input.is_empty(); --left) {
    editor.step(input);
    if (left % 8 == 0) editor.compare();
    editor.compare_part(left % 3 == 0 ? 1 : 0, left % 4 - 1);
  }
  editor.compare();
  return 0;
}
