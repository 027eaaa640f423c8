// The parser: an automaton over the tables of grammar_tables.hpp whose reductions build the document.
#include "grammar.h"

#include <cstdio>

#include "fixed_text.hpp"
#include "grammar_tables.hpp"
#include "grammar_trace.hpp"
#include "item_list.hpp"
#include "parse_stack.hpp"
#include "parse_values.hpp"
#include "parser.hpp"

namespace {

using zorvcrt::kStateRecords;
using zorvcrt::kSymbolNames;
using zorvcrt::StackValue;
using zorvcrt::StateRecord;
using zorvcrt::Symbol;

// What zjson_parse() returns.
enum Outcome : int32_t { kAccepted = 0, kSyntaxError = 1, kExhausted = 2 };

using ErrorText = zorvcrt::FixedText<128>;

// With more acceptable tokens than this a message lists none.
constexpr int kMostExpected = 4;

ErrorText syntax_error_text(const StateRecord &state, Symbol unexpected) {
  ErrorText text("syntax error, unexpected ");
  text.append(kSymbolNames[static_cast<std::size_t>(unexpected)]);
  ErrorText expected;
  int count = 0;
  for (std::size_t symbol = 0; symbol < state.shift.size(); ++symbol) {
    if (state.shift[symbol] == 0) continue;
    expected.append(count == 0 ? ", expecting " : " or ").append(kSymbolNames[symbol]);
    ++count;
  }
  if (count <= kMostExpected) text.append(expected.view());
  return text;
}

template <bool kTraced>
class Parser {
 public:
  Parser(zjson_scanner &scanner, zjson_buffer &buffer, zorvcrt::Token &token)
      : scanner_(scanner), buffer_(buffer), token_(token) {}
  ~Parser() { ZJsonExpression_Delete(document_); }
  Parser(const Parser &) = delete;
  Parser &operator=(const Parser &) = delete;

  Outcome run(ZJsonExpression *&result) {
    trace("Starting parse\n");
    const Outcome outcome = walk();
    if (outcome == kAccepted) {
      result = document_;
      document_ = nullptr;
    }
    if (outcome == kSyntaxError) report_syntax_error(result);
    if (outcome == kExhausted) zjson_error(&place_, &result, &scanner_, "memory exhausted");
    trace_stack();
    release_stack<false>("Cleanup: popping");
    return outcome;
  }

 private:
  // The automaton step by step, as the trace shows it.
  Outcome walk() {
    int16_t state = zorvcrt::kStartState;
    if (!enter(state, {}, place_)) return kExhausted;
    for (;;) {
      const StateRecord &record = kStateRecords[static_cast<std::size_t>(state)];
      if (record.rule != zorvcrt::kNoRule) {
        if (!reduce(record.rule, state)) return kExhausted;
      } else {
        read_token();
        state = record.shift[static_cast<std::size_t>(token_.symbol)];
        if (state == 0) return kSyntaxError;
        if (!shift(state)) return kExhausted;
        if (state == zorvcrt::kFinalState) return kAccepted;
      }
    }
  }

  void read_token() {
    trace("Reading a token: ");
    if (zorvcrt::next_token(scanner_, buffer_, token_)) zorvcrt::advance(place_, token_);
    if constexpr (kTraced) {
      if (token_.symbol == Symbol::kEnd) {
        trace("Now at end of input.\n");
      } else {
        trace_token("Next token is");
      }
    }
  }

  bool shift(int16_t state) {
    if constexpr (kTraced) trace_token("Shifting");
    StackValue value = {};
    // The text of a string that is a value is still at hand when the value is made of it; a name has to wait.
    if (state == zorvcrt::kNameState) {
      value.name = zorvcrt::new_name(token_);
      if (value.name == nullptr) return false;
    }
    return enter(state, value, place_);
  }

  bool enter(int16_t state, StackValue value, const ZJsonLocation &place) {
    const zorvcrt::Room room = stack_.push(state, value, place);
    if (room == zorvcrt::Room::kExhausted) return false;
    if constexpr (kTraced) {
      if (room == zorvcrt::Room::kGrown) std::fprintf(stderr, "Stack size increased to %zu\n", stack_.room());
      std::fprintf(stderr, "Entering state %d\n", state);
    }
    return true;
  }

  bool reduce(uint8_t rule, int16_t &state) {
    const zorvcrt::RuleRecord &record = zorvcrt::kRules[rule];
    if constexpr (kTraced) trace_rule(rule);
    StackValue value = {};
    if (!carry_out(rule, value)) return false;
    ZJsonLocation place = {};
    if constexpr (kTraced) {
      place = stack_.place(stack_.size() - 1);
      place.first_line = stack_.place(stack_.size() - record.length).first_line;
      place.first_column = stack_.place(stack_.size() - record.length).first_column;
      zorvcrt::trace_symbol("-> $$ =", static_cast<int>(record.left), place);
    }
    stack_.pop(record.length);
    trace_stack();
    state = zorvcrt::state_behind(stack_.top_state(), record.left);
    return enter(state, value, place);
  }

  // Builds the container that the last token closes; as carry_out().
  bool make_container(uint8_t rule, StackValue &value) {
    switch (rule) {
      case zorvcrt::kEmptyObject:
        return (value.object = zorvcrt::new_object()) != nullptr;
      case zorvcrt::kObjectOfMembers:
        return close(stack_.right(3, 2).first_item, value.object, &ZJsonObject::members);
      case zorvcrt::kEmptyArray:
        return (value.array = zorvcrt::new_array()) != nullptr;
      default:
        return close(stack_.right(3, 2).first_item, value.array, &ZJsonArray::items);
    }
  }

  // Builds the value of the left side. False when memory runs out; what stands on the stack then stays there.
  bool carry_out(uint8_t rule, StackValue &value) {
    switch (rule) {
      case zorvcrt::kStartIsArray:
        return make_document(ZJSON_ARRAY, stack_.right(1, 1).array);
      case zorvcrt::kStartIsObject:
        return make_document(ZJSON_OBJECT, stack_.right(1, 1).object);
      case zorvcrt::kEmptyObject:
      case zorvcrt::kObjectOfMembers:
      case zorvcrt::kEmptyArray:
      case zorvcrt::kArrayOfElements:
        return make_container(rule, value);
      case zorvcrt::kFirstMember:
        value.first_item = items_.size();
        return items_.push(stack_.right(1, 1).member);
      case zorvcrt::kNextMember:
        value = stack_.right(3, 1);
        return items_.push(stack_.right(3, 3).member);
      case zorvcrt::kPairOfNameAndValue:
        value.member = zorvcrt::new_record<ZJsonMember>();
        if (value.member == nullptr) return false;
        value.member->name = stack_.right(3, 1).name;
        value.member->value = stack_.right(3, 3).value;
        return true;
      case zorvcrt::kFirstElement:
        value.first_item = items_.size();
        return items_.push(stack_.right(1, 1).value);
      case zorvcrt::kNextElement:
        value = stack_.right(3, 1);
        return items_.push(stack_.right(3, 3).value);
      case zorvcrt::kValueIsString:
        return (value.value = zorvcrt::new_string(token_)) != nullptr;
      case zorvcrt::kValueIsNumber:
        return (value.value = zorvcrt::new_number(token_.number)) != nullptr;
      case zorvcrt::kValueIsInteger:
        return (value.value = zorvcrt::new_integer(token_.integer)) != nullptr;
      case zorvcrt::kValueIsObject:
        return (value.value = ZJsonValue_NewObject(stack_.right(1, 1).object)) != nullptr;
      case zorvcrt::kValueIsArray:
        return (value.value = ZJsonValue_NewArray(stack_.right(1, 1).array)) != nullptr;
      case zorvcrt::kValueIsTrue:
        return (value.value = ZJsonValue_NewBool(1)) != nullptr;
      case zorvcrt::kValueIsFalse:
        return (value.value = ZJsonValue_NewBool(0)) != nullptr;
      default:
        return (value.value = ZJsonValue_NewNull()) != nullptr;
    }
  }

  // When this fails the container is still the stack's.
  bool make_document(ZJsonType type, void *container) {
    document_ = ZJsonExpression_New();
    ZJsonExpression_SetRoot(document_, type, container);
    if (document_ != nullptr && document_->root != nullptr) return true;
    ZJsonExpression_Delete(document_);
    document_ = nullptr;
    return false;
  }

  // Makes the container of the items from the first on, which leave the list.
  template <class Container, class Item>
  bool close(std::size_t first, Container *&container, Item **Container::*slots) {
    container = zorvcrt::new_container_for<Container>(items_.size() - first);
    if (container == nullptr) return false;
    container->*slots =
        zorvcrt::new_vector<Item>(items_.from(first), static_cast<std::size_t>(container->count),
                                  static_cast<std::size_t>(container->capacity));
    if (container->*slots == nullptr) {
      std::free(container);
      return false;
    }
    items_.cut(first);
    return true;
  }

  void report_syntax_error(ZJsonExpression *&result) {
    const StateRecord &state = kStateRecords[static_cast<std::size_t>(stack_.top_state())];
    zjson_error(&place_, &result, &scanner_, syntax_error_text(state, token_.symbol).c_str());
    release_stack<true>("Error: popping");
    if constexpr (kTraced) trace_token("Cleanup: discarding lookahead");
  }

  // Releases what the symbols on the stack own, down to the state of the start.
  template <bool kStackTraced>
  void release_stack(const char *title) {
    while (stack_.size() > 1) {
      const std::size_t top = stack_.size() - 1;
      if constexpr (kTraced) {
        const StateRecord &state = kStateRecords[static_cast<std::size_t>(stack_.state(top))];
        zorvcrt::trace_symbol(title, state.symbol, stack_.place(top));
      }
      release(stack_.state(top), stack_.value(top));
      stack_.pop(1);
      if constexpr (kStackTraced) trace_stack();
    }
  }

  void release(int16_t state, const StackValue &value) {
    switch (static_cast<zorvcrt::Nonterminal>(kStateRecords[static_cast<std::size_t>(state)].symbol)) {
      case zorvcrt::Nonterminal::kObject:
        ZJsonObject_Delete(value.object);
        break;
      case zorvcrt::Nonterminal::kArray:
        ZJsonArray_Delete(value.array);
        break;
      case zorvcrt::Nonterminal::kPair:
        ZJsonMember_Delete(value.member);
        break;
      case zorvcrt::Nonterminal::kValue:
        ZJsonValue_Delete(value.value);
        break;
      case zorvcrt::Nonterminal::kMembers:
        release_items(value.first_item,
                      [](void *member) { ZJsonMember_Delete(static_cast<ZJsonMember *>(member)); });
        break;
      case zorvcrt::Nonterminal::kElements:
        release_items(value.first_item,
                      [](void *item) { ZJsonValue_Delete(static_cast<ZJsonValue *>(item)); });
        break;
      default:
        if (state == zorvcrt::kNameState) std::free(value.name);
        break;
    }
  }

  template <class Delete>
  void release_items(std::size_t first, Delete delete_item) {
    for (std::size_t i = first; i < items_.size(); ++i) {
      delete_item(*items_.from(i));
    }
    items_.cut(first);
  }

  static void trace(const char *text) {
    if constexpr (kTraced) std::fputs(text, stderr);
  }

  void trace_token(const char *title) const {
    zorvcrt::trace_symbol(title, static_cast<int>(token_.symbol), place_);
  }

  void trace_rule(uint8_t rule) const {
    const zorvcrt::RuleRecord &record = zorvcrt::kRules[rule];
    std::fprintf(stderr, "Reducing stack by rule %d (line %d):\n", rule, record.line);
    for (std::size_t number = 1; number <= record.length; ++number) {
      const std::size_t index = stack_.size() - record.length + number - 1;
      const StateRecord &state = kStateRecords[static_cast<std::size_t>(stack_.state(index))];
      const char title[] = {' ', ' ', ' ', '$', static_cast<char>('0' + number), ' ', '=', '\0'};
      zorvcrt::trace_symbol(title, state.symbol, stack_.place(index));
    }
  }

  void trace_stack() const {
    if constexpr (kTraced) {
      std::fputs("Stack now", stderr);
      for (std::size_t i = 0; i < stack_.size(); ++i) {
        std::fprintf(stderr, " %d", stack_.state(i));
      }
      std::fputs("\n", stderr);
    }
  }

  zjson_scanner &scanner_;
  zjson_buffer &buffer_;
  zorvcrt::Token &token_;
  ZJsonLocation place_ = {1, 1, 1, 1};
  ZJsonExpression *document_ = nullptr;
  zorvcrt::ItemList items_;
  zorvcrt::ParseStack<kTraced> stack_;
};

}  // namespace

int32_t zjson_debug = 0;

namespace zorvcrt {

int32_t parse_input(ZJsonExpression *&result, zjson_scanner &scanner, zjson_buffer &buffer, Token &token) {
  if (__atomic_load_n(&zjson_debug, __ATOMIC_RELAXED) != 0) {
    return Parser<true>(scanner, buffer, token).run(result);
  }
  return Parser<false>(scanner, buffer, token).run(result);
}

}  // namespace zorvcrt

int32_t zjson_parse(ZJsonExpression **result, zjson_scanner *scanner) {
  zjson_scanner empty = {};
  zjson_buffer no_input = {};
  no_input.has_ended = true;
  if (scanner != nullptr) zorvcrt::restore_text(*scanner);
  zjson_scanner &handle = scanner == nullptr ? empty : *scanner;
  zjson_buffer &buffer = scanner == nullptr ? no_input : zorvcrt::begin_scanning(*scanner);

  ZJsonExpression *unwanted = nullptr;
  zorvcrt::Token token = {};
  const int32_t outcome = zorvcrt::parse_input(result == nullptr ? unwanted : *result, handle, buffer, token);
  if (result == nullptr) ZJsonExpression_Delete(unwanted);
  if (scanner != nullptr && token.begin != token.end) zorvcrt::expose_text(*scanner, buffer, token);
  return outcome;
}

int32_t zjson_error(const ZJsonLocation *loc, ZJsonExpression **result, zjson_scanner * /*scanner*/,
                    const char *message) {
  if (result == nullptr) return 0;
  *result = ZJsonExpression_New();
  std::array<char, 1024> text;
  std::snprintf(text.data(), text.size(), "line #%d.%d: %s", loc == nullptr ? 0 : loc->last_line,
                loc == nullptr ? 0 : loc->last_column, message == nullptr ? "" : message);
  ZJsonExpression_SetErrorMessage(*result, text.data());
  if (*result != nullptr && (*result)->errorMessage == nullptr) {
    ZJsonExpression_Delete(*result);
    *result = nullptr;
  }
  return 0;
}
