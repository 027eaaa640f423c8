// The rows of a JSON library: parsing a document and releasing it, printing it compactly, and printing
// documents of growing size. A Library has a name, a Document, and the three things that are measured:
// parse() a text into a Document of its own, print() the document as compact text and drop that, and
// release() it.
#pragma once

#include <string>

#include "contender.hpp"
#include "documents.hpp"

namespace bench {

inline constexpr char kParse[] = "json-parse";
inline constexpr char kPrint[] = "json-to-text";
inline constexpr char kGrowth[] = "json-to-text-growth";

template <class Library>
void add_parser(const Document &input) {
  contender(kParse, input.name, Library::kName, [&input](benchmark::State &state) {
    for (auto _ : state) {
      auto *document = Library::parse(input.text);
      if (document == nullptr) state.SkipWithError("does not parse");
      if (document != nullptr) Library::release(document);
    }
  });
}

template <class Library>
void print_parsed(benchmark::State &state, const std::string &text) {
  auto *document = Library::parse(text);
  for (auto _ : state) {
    if (Library::print(document) == 0) state.SkipWithError("does not print");
  }
  Library::release(document);
}

/// Parsing and printing of every document.
template <class Library>
bool add_library() {
  for (const Document &input : documents()) {
    add_parser<Library>(input);
    contender(kPrint, input.name, Library::kName,
              [&input](benchmark::State &state) { print_parsed<Library>(state, input.text); });
  }
  return true;
}

template <class Library>
bool add_growth() {
  for (const int megabytes : {1, 10, 100}) {
    contender(kGrowth, std::to_string(megabytes) + " MB", Library::kName, [=](benchmark::State &state) {
      print_parsed<Library>(state, generated_document(static_cast<std::size_t>(megabytes) * 1000000));
    });
  }
  return true;
}

}  // namespace bench
