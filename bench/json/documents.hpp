// The documents: twitter.json, citm_catalog.json and canada.json where ZORVCRT_BENCH_JSON names their folder,
// one made here in their place otherwise, and one of 300 bytes.
#pragma once

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace bench {

struct Document {
  std::string name;
  std::string text;
};

inline constexpr char kSmallDocument[] =
    R"({"id":48213,"name":"Ada Example","mail":"ada@example.org","active":true,"score":87.25,
 "tags":["alpha","beta","gamma"],"address":{"street":"1 Long Road","city":"Springfield","zip":"12345"},
 "orders":[{"no":1,"total":19.5},{"no":2,"total":7.75}],"note":null,"comment":"nothing to add, really"})";

/// Records with values of every kind, at least size bytes of them.
inline std::string generated_document(std::size_t size) {
  std::string text = "[";
  for (int i = 0; text.size() < size; ++i) {
    const std::string number = std::to_string(i);
    if (i != 0) text += ",\n";
    text += R"({"id": )" + number + R"(, "name": "record number )" + number + R"(", "path": "\/data\/)" +
            number + R"(\"\u00e4\n", "ratio": )" + std::to_string(i % 997) + "." + std::to_string(i % 89) +
            R"(25, "flags": [true, false, null, )" + std::to_string(i * 7919L) + R"(], "nested": {"x": -)" +
            number + R"(.5, "text": "a somewhat longer text that needs no escapes"}})";
  }
  return text + "]";
}

inline std::string text_of_file(const std::string &path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

inline const std::vector<Document> &documents() {
  static const std::vector<Document> all = [] {
    std::vector<Document> found;
    const char *folder = std::getenv("ZORVCRT_BENCH_JSON");
    for (const char *name : {"twitter", "citm_catalog", "canada"}) {
      if (folder == nullptr) break;
      std::string text = text_of_file(std::string(folder) + "/" + name + ".json");
      if (!text.empty()) found.push_back({name, std::move(text)});
    }
    if (found.empty()) found.push_back({"generated", generated_document(500000)});
    found.push_back({"300 bytes", kSmallDocument});
    return found;
  }();
  return all;
}

}  // namespace bench
