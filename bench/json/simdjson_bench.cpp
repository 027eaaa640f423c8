// The rows of simdjson.
#ifdef HAVE_SIMDJSON
#include <simdjson.h>

#include <string>

#include "rows.hpp"

namespace {

// A parser owns its document, so each document has a parser of its own.
struct SimdJson {
  static constexpr char kName[] = "simdjson";
  struct Document {
    simdjson::dom::parser parser;
    simdjson::dom::element root;
  };
  static Document *parse(const std::string &text) {
    auto *document = new Document;
    if (document->parser.parse(text.data(), text.size()).get(document->root) == simdjson::SUCCESS)
      return document;
    delete document;
    return nullptr;
  }
  static void release(Document *document) { delete document; }
  static std::size_t print(Document *document) { return simdjson::minify(document->root).size(); }
};

[[maybe_unused]] const bool added = bench::add_library<SimdJson>();

}  // namespace
#endif
