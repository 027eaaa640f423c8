// The grammar as tables: its symbols, its rules and the states of its LALR(1) automaton, numbered as they are
// shown in the trace.
#pragma once

#include <array>
#include <cstdint>

#include "scan.hpp"

namespace zorvcrt {

/// The nonterminals, by their numbers among the symbols.
enum class Nonterminal : uint8_t {
  kAccept = 15,
  kStart,
  kObject,
  kMembers,
  kPair,
  kArray,
  kElements,
  kValue
};

inline constexpr int kFirstNonterminal = static_cast<int>(Nonterminal::kAccept);
inline constexpr int kNonterminals = 8;
inline constexpr int kTerminals = 15;
inline constexpr int kStates = 30;

/// Names of all symbols in the order of their numbers, as messages and the trace show them.
inline constexpr std::array<const char *, kTerminals + kNonterminals> kSymbolNames = {
    "$end",     "error",   "$undefined", "INTEGER", "NUMBER", "STRING",   "TRUE_SYM", "FALSE_SYM",
    "NULL_SYM", "O_BEGIN", "O_END",      "A_BEGIN", "A_END",  "COMMA",    "COLON",    "$accept",
    "START",    "OBJECT",  "MEMBERS",    "PAIR",    "ARRAY",  "ELEMENTS", "VALUE"};

/// The rules by their numbers; 0 is none and 1, which ends the parse, is never carried out.
enum Rule : uint8_t {
  kNoRule,
  kAcceptStart,
  kStartIsArray,
  kStartIsObject,
  kEmptyObject,
  kObjectOfMembers,
  kFirstMember,
  kNextMember,
  kPairOfNameAndValue,
  kEmptyArray,
  kArrayOfElements,
  kFirstElement,
  kNextElement,
  kValueIsString,
  kValueIsNumber,
  kValueIsInteger,
  kValueIsObject,
  kValueIsArray,
  kValueIsTrue,
  kValueIsFalse,
  kValueIsNull,
};

struct RuleRecord {
  Nonterminal left;
  uint8_t length;  // symbols on the right
  uint8_t line;    // as the trace shows it
};

// left side, symbols on the right, line
inline constexpr std::array<RuleRecord, 21> kRules = {{
    {Nonterminal::kAccept, 0, 0},      // no rule
    {Nonterminal::kAccept, 2, 75},     // START $end
    {Nonterminal::kStart, 1, 75},      // ARRAY
    {Nonterminal::kStart, 1, 80},      // OBJECT
    {Nonterminal::kObject, 2, 89},     // O_BEGIN O_END
    {Nonterminal::kObject, 3, 93},     // O_BEGIN MEMBERS O_END
    {Nonterminal::kMembers, 1, 99},    // PAIR
    {Nonterminal::kMembers, 3, 104},   // MEMBERS COMMA PAIR
    {Nonterminal::kPair, 3, 111},      // STRING COLON VALUE
    {Nonterminal::kArray, 2, 119},     // A_BEGIN A_END
    {Nonterminal::kArray, 3, 123},     // A_BEGIN ELEMENTS A_END
    {Nonterminal::kElements, 1, 130},  // VALUE
    {Nonterminal::kElements, 3, 135},  // ELEMENTS COMMA VALUE
    {Nonterminal::kValue, 1, 143},     // STRING
    {Nonterminal::kValue, 1, 148},     // NUMBER
    {Nonterminal::kValue, 1, 152},     // INTEGER
    {Nonterminal::kValue, 1, 156},     // OBJECT
    {Nonterminal::kValue, 1, 160},     // ARRAY
    {Nonterminal::kValue, 1, 164},     // TRUE_SYM
    {Nonterminal::kValue, 1, 168},     // FALSE_SYM
    {Nonterminal::kValue, 1, 172},     // NULL_SYM
}};

/// The states that the code names.
inline constexpr int16_t kStartState = 0;
inline constexpr int16_t kNameState = 6;    // behind a member's name
inline constexpr int16_t kFinalState = 21;  // behind the end

/// A state either has a rule that is carried out whatever comes, or waits for one of the tokens in its row.
/// The symbol is the one that leads into the state; the row holds the next state for each terminal that may
/// come, 0 for the others.
struct StateRecord {
  uint8_t symbol;
  uint8_t rule;
  std::array<int16_t, kTerminals> shift;
};

// Terminals in the columns of a row:
//   $end error undefined, INTEGER NUMBER STRING TRUE FALSE NULL, { } [ ] , :
inline constexpr std::array<int16_t, kTerminals> kNoShift = {};
inline constexpr std::array<int16_t, kTerminals> kShiftValue = {0,  0, 0, 10, 11, 12, 13, 14,
                                                                15, 1, 0, 2,  0,  0,  0};

// leads in, rule, row
inline constexpr std::array<StateRecord, kStates> kStateRecords = {{
    {0, kNoRule, {0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0, 2, 0, 0, 0}},          //  0 at the start
    {9, kNoRule, {0, 0, 0, 0, 0, 6, 0, 0, 0, 0, 7, 0, 0, 0, 0}},          //  1 O_BEGIN
    {11, kNoRule, {0, 0, 0, 10, 11, 12, 13, 14, 15, 1, 0, 2, 16, 0, 0}},  //  2 A_BEGIN
    {16, kNoRule, {21, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}},        //  3 START
    {17, kStartIsObject, kNoShift},                                       //  4 OBJECT as the document
    {20, kStartIsArray, kNoShift},                                        //  5 ARRAY as the document
    {5, kNoRule, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 22}},         //  6 STRING as a name
    {10, kEmptyObject, kNoShift},                                         //  7 O_END of an empty object
    {18, kNoRule, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 23, 0, 0, 24, 0}},       //  8 MEMBERS
    {19, kFirstMember, kNoShift},                                         //  9 first PAIR
    {3, kValueIsInteger, kNoShift},                                       // 10 INTEGER
    {4, kValueIsNumber, kNoShift},                                        // 11 NUMBER
    {5, kValueIsString, kNoShift},                                        // 12 STRING as a value
    {6, kValueIsTrue, kNoShift},                                          // 13 TRUE_SYM
    {7, kValueIsFalse, kNoShift},                                         // 14 FALSE_SYM
    {8, kValueIsNull, kNoShift},                                          // 15 NULL_SYM
    {12, kEmptyArray, kNoShift},                                          // 16 A_END of an empty array
    {17, kValueIsObject, kNoShift},                                       // 17 OBJECT as a value
    {20, kValueIsArray, kNoShift},                                        // 18 ARRAY as a value
    {21, kNoRule, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 25, 26, 0}},       // 19 ELEMENTS
    {22, kFirstElement, kNoShift},                                        // 20 first VALUE
    {0, kNoRule, kNoShift},                                               // 21 $end: accepted
    {14, kNoRule, kShiftValue},                                           // 22 COLON
    {10, kObjectOfMembers, kNoShift},                                     // 23 O_END
    {13, kNoRule, {0, 0, 0, 0, 0, 6, 0, 0, 0, 0, 0, 0, 0, 0, 0}},         // 24 COMMA between members
    {12, kArrayOfElements, kNoShift},                                     // 25 A_END
    {13, kNoRule, kShiftValue},                                           // 26 COMMA between elements
    {22, kPairOfNameAndValue, kNoShift},                                  // 27 VALUE of a member
    {19, kNextMember, kNoShift},                                          // 28 next PAIR
    {22, kNextElement, kNoShift},                                         // 29 next VALUE
}};

/// The state behind a nonterminal, by the state before it; 0 where it cannot come.
// $accept START OBJECT MEMBERS PAIR ARRAY ELEMENTS VALUE
inline constexpr auto kGoto = [] {
  std::array<std::array<int16_t, kNonterminals>, kStates> rows{};
  rows[0] = {0, 3, 4, 0, 0, 5, 0, 0};
  rows[1] = {0, 0, 0, 8, 9, 0, 0, 0};
  rows[2] = {0, 0, 17, 0, 0, 18, 19, 20};
  rows[22] = {0, 0, 17, 0, 0, 18, 0, 27};
  rows[24] = {0, 0, 0, 0, 28, 0, 0, 0};
  rows[26] = {0, 0, 17, 0, 0, 18, 0, 29};
  return rows;
}();

inline int16_t state_behind(int16_t state, Nonterminal nonterminal) {
  return kGoto[static_cast<std::size_t>(state)]
              [static_cast<std::size_t>(nonterminal) - static_cast<std::size_t>(kFirstNonterminal)];
}

}  // namespace zorvcrt
