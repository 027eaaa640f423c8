// Documents in tests: their owners, documents of a text and texts of a document.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "zfxmemory.h"
#include "zjson_expression.h"
#include "zjson_util.h"
#include "zjsondriver.h"

namespace documents {

struct Release {
  void operator()(ZJsonExpression *document) const { ZJsonExpression_Delete(document); }
  void operator()(ZJsonValue *value) const { ZJsonValue_Delete(value); }
  void operator()(ZJsonArray *array) const { ZJsonArray_Delete(array); }
  void operator()(ZJsonObject *object) const { ZJsonObject_Delete(object); }
  void operator()(ZJsonMember *member) const { ZJsonMember_Delete(member); }
  void operator()(char *text) const { ZfxMemFree(text); }
};

template <class Record>
using Owned = std::unique_ptr<Record, Release>;
using Document = Owned<ZJsonExpression>;

inline Document parse(const std::string &text) {
  return Document(ZJsonExpression_Parse(text.data(), static_cast<int32_t>(text.size())));
}

inline std::string printed(const ZJsonExpression *document, bool pretty = false) {
  char *out = nullptr;
  const uint32_t length = ZJsonExpression_ToString(document, &out, pretty ? 1 : 0);
  const Owned<char> owner(out);
  return out == nullptr ? "" : std::string(out, length);
}

/// The document printed, or its message; a sentence about it where it has not just one of the two.
inline std::string outcome_of(const ZJsonExpression *document) {
  if (document == nullptr) return "no document";
  if (document->root == nullptr && document->errorMessage == nullptr) return "neither a root nor a message";
  if (document->root != nullptr && document->errorMessage != nullptr) return "a root and a message";
  return document->root == nullptr ? document->errorMessage : printed(document);
}

inline std::string repeated(const std::string &text, int count) {
  std::string all;
  while (count-- > 0)
    all += text;
  return all;
}

/// The item so many times, with commas between.
inline std::string list_of(const std::string &item, int count) {
  return count == 0 ? "" : item + repeated("," + item, count - 1);
}

/// What ZJsonExpression_Parse() looks at of a text.
inline std::string without_end(std::string text) {
  while (!text.empty() && std::string(" \t\n\r\0", 5).find(text.back()) != std::string::npos)
    text.pop_back();
  return text;
}

}  // namespace documents
