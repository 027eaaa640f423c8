// The rows of RapidJSON.
#ifdef HAVE_RAPIDJSON
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <string>

#include "rows.hpp"

namespace {

struct RapidJson {
  static constexpr char kName[] = "RapidJSON";
  using Document = rapidjson::Document;
  static Document *parse(const std::string &text) {
    auto *document = new Document;
    document->Parse(text.data(), text.size());
    return document;
  }
  static void release(Document *document) { delete document; }
  static std::size_t print(Document *document) {
    rapidjson::StringBuffer text;
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    document->Accept(writer);
    return text.GetSize();
  }
};

[[maybe_unused]] const bool added = bench::add_library<RapidJson>() && bench::add_growth<RapidJson>();

}  // namespace
#endif
