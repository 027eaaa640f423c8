// The rows of json-c.
#ifdef HAVE_JSONC
#include <json.h>

#include <string>

#include "rows.hpp"

namespace {

// The buffer of the text stays with the document: only the first print() of a document needs memory.
struct JsonC {
  static constexpr char kName[] = "json-c";
  using Document = json_object;
  static Document *parse(const std::string &text) {
    json_tokener *tokener = json_tokener_new();
    json_object *document = json_tokener_parse_ex(tokener, text.data(), static_cast<int>(text.size()));
    json_tokener_free(tokener);
    return document;
  }
  static void release(Document *document) { json_object_put(document); }
  static std::size_t print(Document *document) {
    std::size_t size = 0;
    json_object_to_json_string_length(document, JSON_C_TO_STRING_PLAIN, &size);
    return size;
  }
};

[[maybe_unused]] const bool added = bench::add_library<JsonC>();

}  // namespace
#endif
