// One loop over the items of the document, whatever their depth: in front of an item, and behind it.
#include "quick_parser.hpp"

#include <array>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "early_vectors.hpp"
#include "item_list.hpp"
#include "late_vectors.hpp"
#include "parse_values.hpp"
#include "quick_scan.hpp"
#include "scan.hpp"

namespace zorvcrt {

namespace {

// A function that reads takes the place it reads from and gives the one behind, or null when it cannot go on;
// the outcome is set then.
//
// Records are asked for from the outer to the inner ones and in the order of the text: they stand in memory
// as a walk over the document finds them, and release_below() gives them back in the reverse of that order.
// With vectors that are asked for when their containers are closed, printing a document of many small
// containers takes 1.6 times as long.
class QuickParser {
 public:
  explicit QuickParser(const char *limit) : limit_(limit) {}
  ~QuickParser();
  QuickParser(const QuickParser &) = delete;
  QuickParser &operator=(const QuickParser &) = delete;

  QuickOutcome run(const char *text, ZJsonExpression *&document, const char *&at);

 private:
  // An open container, and where its items begin in the list.
  struct Open {
    ZJsonValue *value;
    std::size_t first;
  };

  // Whatever stands between the brackets, the other parser could not have used its stack up.
  static constexpr std::size_t kDeepest = 200;

  static constexpr std::size_t kFirstVector = kCapacityStep * sizeof(void *);

  const char *leave() {
    outcome_ = QuickOutcome::kLeft;
    return nullptr;
  }
  const char *run_out(const char *at) {
    outcome_ = QuickOutcome::kExhausted;
    at_ = at;
    return nullptr;
  }

  const char *read_document(const char *at);
  const char *begin_item(const char *at, void *&place);
  const char *read_name(const char *at, void *&place);
  const char *read_scalar(const char *at, void *place);
  const char *read_string(const char *at, void *place);
  const char *read_real_or_integer(const char *at, void *place);
  const char *read_word(const char *at, void *place, std::string_view letters, ZJsonType type,
                        uint8_t boolean);
  const char *open(const char *at, void *place);
  const char *close(const char *at);
  const char *read_token(const char *at, Token &token) const;
  static ZJsonValue *put_value(void *place, ZJsonType type);
  char *new_text_between(const char *begin, const char *end) const;
  template <class Container, class Item>
  static Container *new_open_container(Item **Container::*slots);
  template <class Container, class Item>
  bool fill(Container &container, Item **Container::*slots, const Open &open);
  template <class Container, class Item>
  bool make_longer_vector(Container &container, Item **Container::*slots, const Open &open);

  const char *const limit_;
  QuickOutcome outcome_ = QuickOutcome::kParsed;
  const char *at_ = nullptr;
  ZJsonExpression *document_ = nullptr;
  char closing_ = '\0';  // what ends the innermost open container
  std::size_t depth_ = 0;
  std::array<Open, kDeepest> open_;
  ItemList items_;
  LateVectors late_vectors_;
};

QuickParser::~QuickParser() {
  // Containers that are open or wait for their vectors have none yet: their items are released here.
  late_vectors_.release();
  for (; depth_ > 0; --depth_) {
    const Open &innermost = open_[depth_ - 1];
    for (std::size_t i = innermost.first; i < items_.size(); ++i) {
      delete_item(*items_.from(i), innermost.value->type == ZJSON_ARRAY);
    }
    items_.cut(innermost.first);
  }
  ZJsonExpression_Delete(document_);
}

// Makes a value, without its payload, where the place holds a pointer to it. Null when memory runs out.
//
// The blocks of the last document of this size are given out again in the same order, and malloc reads each
// of them first: unless they are fetched, a document larger than the caches takes three in a hundred more.
inline ZJsonValue *QuickParser::put_value(void *place, ZJsonType type) {
  ZJsonValue *value = new_value(type);
  fetch_near(value, kFetchedAhead);
  const void *pointer = value;
  std::memcpy(place, &pointer, sizeof pointer);
  return value;
}

// A text of the input. One that fits in the smallest block that the heap gives out is copied with what stands
// behind it: a copy of the exact length takes a document of short texts three in a hundred more.
inline char *QuickParser::new_text_between(const char *begin, const char *end) const {
  constexpr std::ptrdiff_t kSmallestBlock = 24;
  if (end - begin >= kSmallestBlock || limit_ - begin < kSmallestBlock) {
    return new_text({begin, static_cast<std::size_t>(end - begin)});
  }
  auto *text = static_cast<char *>(std::malloc(kSmallestBlock));
  if (text == nullptr) return nullptr;
  std::memcpy(text, begin, kSmallestBlock);
  text[end - begin] = '\0';
  return text;
}

// Reads a token that the quick scan has left.
[[gnu::noinline]] const char *QuickParser::read_token(const char *at, Token &token) const {
  return TokenScan(at, limit_, true, token).run() == Scan::kMatched ? token.end : nullptr;
}

// Begins a member: reads its name, the colon and the white space. Gives the place of the value.
inline const char *QuickParser::read_name(const char *at, void *&place) {
  auto *member = new_record<ZJsonMember>();
  if (member == nullptr) return run_out(at + 1);
  if (!items_.push(member)) {
    std::free(member);
    return run_out(at + 1);
  }
  place = &member->value;
  const char *end = *at == '"' ? find_string_end(at + 1, limit_) : nullptr;
  if (end != nullptr && at[1] != '\'') {
    member->name = new_text_between(at + 1, end);
    ++end;
  } else {
    Token token = {};
    end = read_token(at, token);
    if (end == nullptr || token.symbol != Symbol::kString) return leave();
    member->name = new_name(token);
  }
  if (member->name == nullptr) return run_out(at + 1);
  end = skip_spaces(end, limit_);
  return *end == ':' ? skip_spaces(end + 1, limit_) : leave();
}

inline const char *QuickParser::read_string(const char *at, void *place) {
  ZJsonValue *value = put_value(place, ZJSON_STRING);
  if (value == nullptr) return run_out(at + 1);
  const char *end = *at == '"' ? find_string_end(at + 1, limit_) : nullptr;
  if (end != nullptr) {
    value->string = new_text_between(at + 1, end);
    ++end;
  } else {
    Token token = {};
    end = read_token(at, token);
    if (end == nullptr || token.symbol != Symbol::kString) return leave();
    value->string = new_string_text(token);
  }
  return value->string == nullptr ? run_out(at + 1) : end;
}

inline const char *QuickParser::read_real_or_integer(const char *at, void *place) {
  Number number;
  const char *end = read_number(at, limit_, number);
  if (end == nullptr) {
    Token token = {};
    end = read_token(at, token);
    const bool is_number = token.symbol == Symbol::kNumber || token.symbol == Symbol::kInteger;
    if (end == nullptr || !is_number) return leave();
    number.is_real = token.symbol == Symbol::kNumber;
    number.integer = token.integer;
    if (number.is_real) number.real = token.number;
  }
  ZJsonValue *value = put_value(place, number.is_real ? ZJSON_NUMBER : ZJSON_INTEGER);
  if (value == nullptr) return run_out(at + 1);
  if (number.is_real) {
    value->number = number.real;
  } else {
    value->integer = number.integer;
  }
  return end;
}

inline const char *QuickParser::read_word(const char *at, void *place, std::string_view letters,
                                          ZJsonType type, uint8_t boolean) {
  if (static_cast<std::size_t>(limit_ - at) < letters.size()) return leave();
  if (std::memcmp(at, letters.data(), letters.size()) != 0) return leave();
  ZJsonValue *value = put_value(place, type);
  if (value == nullptr) return run_out(at + 1);
  value->boolean = boolean;
  return at + letters.size();
}

inline const char *QuickParser::read_scalar(const char *at, void *place) {
  if (*at == '"' || *at == '\'') return read_string(at, place);
  if (is_decimal_digit(*at) || *at == '-') return read_real_or_integer(at, place);
  switch (*at) {
    case 't':
      return read_word(at, place, "true", ZJSON_BOOL, 1);
    case 'f':
      return read_word(at, place, "false", ZJSON_BOOL, 0);
    case 'n':
      return read_word(at, place, "null", ZJSON_NULL, 0);
    default:
      return leave();
  }
}

// Makes the record of a container that is being opened, and its first vector, which is not filled yet.
template <class Container, class Item>
inline Container *QuickParser::new_open_container(Item **Container::*slots) {
  auto *container = new_record<Container>();
  if (container == nullptr) return nullptr;
  container->*slots = static_cast<Item **>(std::malloc(kFirstVector));
  container->capacity = kCapacityStep;
  if (container->*slots != nullptr) return container;
  std::free(container);
  return nullptr;
}

// Begins a container; the bracket and the white space behind it are read.
inline const char *QuickParser::open(const char *at, void *place) {
  if (depth_ == kDeepest) return leave();
  const bool is_object = *at == '{';
  ZJsonValue *value = put_value(place, is_object ? ZJSON_OBJECT : ZJSON_ARRAY);
  if (value == nullptr) return run_out(at + 1);
  if (is_object) {
    value->object = new_open_container(&ZJsonObject::members);
    if (value->object == nullptr) return run_out(at + 1);
  } else {
    value->array = new_open_container(&ZJsonArray::items);
    if (value->array == nullptr) return run_out(at + 1);
  }
  closing_ = is_object ? '}' : ']';
  open_[depth_++] = {value, items_.size()};
  return skip_spaces(at + 1, limit_);
}

// Gives a container its items. False when memory runs out; they then stay in the list.
template <class Container, class Item>
inline bool QuickParser::fill(Container &container, Item **Container::*slots, const Open &open) {
  const std::size_t count = items_.size() - open.first;
  if (count < kCapacityStep) {
    // All slots, whatever the count: the list has room for that many behind its last item.
    void **items = items_.from(open.first);
    std::memset(items + count, 0, kFirstVector);
    std::memcpy(container.*slots, items, kFirstVector);
  } else if (!make_longer_vector(container, slots, open)) {
    return false;
  }
  container.count = static_cast<int32_t>(count);
  items_.cut(open.first);
  return true;
}

// Gives a container a vector for more items than its first one has room for.
template <class Container, class Item>
[[gnu::noinline]] bool QuickParser::make_longer_vector(Container &container, Item **Container::*slots,
                                                       const Open &open) {
  void *const *items = items_.from(open.first);
  const std::size_t count = items_.size() - open.first;
  container.capacity = capacity_for(static_cast<int32_t>(count));
  std::free(std::exchange(container.*slots, nullptr));
  const auto capacity = static_cast<std::size_t>(container.capacity);
  if (LateVectors::are_for(capacity)) {
    VectorHint::add(open.value, VectorHint::kOwn);
    for (std::size_t i = 0; i + 1 < depth_; ++i) {
      VectorHint::add(open_[i].value, VectorHint::kBelow);
    }
    return late_vectors_.take(open.value, items, count);
  }
  container.*slots = new_vector<Item>(items, count, capacity);
  return container.*slots != nullptr;
}

inline const char *QuickParser::close(const char *at) {
  if (*at != closing_) return leave();
  const Open &innermost = open_[depth_ - 1];
  ZJsonValue *value = innermost.value;
  const bool filled = closing_ == '}' ? fill(*value->object, &ZJsonObject::members, innermost)
                                      : fill(*value->array, &ZJsonArray::items, innermost);
  if (!filled) return run_out(at + 1);
  --depth_;
  if (depth_ > 0) closing_ = open_[depth_ - 1].value->type == ZJSON_OBJECT ? '}' : ']';
  return at + 1;
}

// Begins an item of the innermost container, or the document. Gives the place of its value.
inline const char *QuickParser::begin_item(const char *at, void *&place) {
  if (closing_ == '}') return read_name(at, place);
  place = closing_ == ']' ? items_.add() : static_cast<void *>(&document_->root);
  return place != nullptr ? at : run_out(at + 1);
}

// From the first bracket to the last.
const char *QuickParser::read_document(const char *at) {
  if (*at != '{' && *at != '[') return leave();
  for (;;) {
    void *place = nullptr;
    at = begin_item(at, place);
    if (at == nullptr) return nullptr;
    if (*at == '{' || *at == '[') {
      at = open(at, place);
      if (at == nullptr) return nullptr;
      if (*at != closing_) continue;
    } else {
      at = read_scalar(at, place);
      if (at == nullptr) return nullptr;
      at = skip_spaces(at, limit_);
    }
    while (*at != ',') {
      at = close(at);
      if (at == nullptr || depth_ == 0) return at;
      if (at == limit_) return leave();
      at = skip_spaces(at, limit_);
    }
    at = skip_spaces(at + 1, limit_);
  }
}

QuickOutcome QuickParser::run(const char *text, ZJsonExpression *&document, const char *&at) {
  document_ = new_record<ZJsonExpression>();
  if (document_ == nullptr) {
    run_out(text);
  } else if (const char *end = read_document(skip_spaces(text, limit_)); end != nullptr) {
    if (end != limit_) leave();
    if (end == limit_ && !late_vectors_.finish()) run_out(end);
  }
  at = at_;
  if (outcome_ == QuickOutcome::kParsed) document = std::exchange(document_, nullptr);
  return outcome_;
}

}  // namespace

QuickOutcome parse_quickly(const char *text, const char *limit, ZJsonExpression *&document, const char *&at) {
  if (text == limit || (limit[-1] != ']' && limit[-1] != '}')) return QuickOutcome::kLeft;
  QuickParser parser(limit);
  return parser.run(text, document, at);
}

}  // namespace zorvcrt
