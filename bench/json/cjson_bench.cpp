// The rows of cJSON.
#ifdef HAVE_CJSON
#include <cJSON.h>

#include <cstdlib>
#include <string>

#include "rows.hpp"

namespace {

struct CJson {
  static constexpr char kName[] = "cJSON";
  using Document = cJSON;
  static Document *parse(const std::string &text) { return cJSON_ParseWithLength(text.data(), text.size()); }
  static void release(Document *document) { cJSON_Delete(document); }
  static std::size_t print(Document *document) {
    char *text = cJSON_PrintUnformatted(document);
    std::free(text);
    return text != nullptr ? 1 : 0;
  }
};

[[maybe_unused]] const bool added = bench::add_library<CJson>();

}  // namespace
#endif
