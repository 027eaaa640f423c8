// The rows of nlohmann-json.
#ifdef HAVE_NLOHMANN
#include <nlohmann/json.hpp>

#include <string>

#include "rows.hpp"

namespace {

struct Nlohmann {
  static constexpr char kName[] = "nlohmann-json";
  using Document = nlohmann::json;
  static Document *parse(const std::string &text) { return new Document(Document::parse(text)); }
  static void release(Document *document) { delete document; }
  static std::size_t print(Document *document) { return document->dump().size(); }
};

[[maybe_unused]] const bool added = bench::add_library<Nlohmann>();

}  // namespace
#endif
