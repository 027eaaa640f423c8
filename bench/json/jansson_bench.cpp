// The rows of jansson.
#ifdef HAVE_JANSSON
#include <jansson.h>

#include <cstdlib>
#include <string>

#include "rows.hpp"

namespace {

struct Jansson {
  static constexpr char kName[] = "jansson";
  using Document = json_t;
  static Document *parse(const std::string &text) { return json_loadb(text.data(), text.size(), 0, nullptr); }
  static void release(Document *document) { json_decref(document); }
  static std::size_t print(Document *document) {
    char *text = json_dumps(document, JSON_COMPACT);
    std::free(text);
    return text != nullptr ? 1 : 0;
  }
};

[[maybe_unused]] const bool added = bench::add_library<Jansson>();

}  // namespace
#endif
