// What a parse gives, as one text: the document printed compact, or its message.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "check.hpp"
#include "json/plain_parser.hpp"
#include "zfxmemory.h"
#include "zjson_expression.h"
#include "zjson_util.h"

namespace fuzz {

struct JsonDeleter {
  void operator()(ZJsonExpression *document) const { ZJsonExpression_Delete(document); }
  void operator()(char *text) const { ZfxMemFree(text); }
};
using JsonDocument = std::unique_ptr<ZJsonExpression, JsonDeleter>;

inline std::string printed(const ZJsonExpression *document, bool pretty) {
  char *out = nullptr;
  const uint32_t length = ZJsonExpression_ToString(document, &out, pretty ? 1 : 0);
  const std::unique_ptr<char, JsonDeleter> owner(out);
  return out == nullptr ? "" : std::string(out, length);
}

inline std::string outcome_of(const ZJsonExpression *document) {
  check((document->root == nullptr) == (document->errorMessage != nullptr), "a root or a message");
  return document->root == nullptr ? document->errorMessage : printed(document, false);
}

/// What the plain grammar says of a text; "jam" where a parse would end the process.
inline std::string plain_outcome(const std::string &text) {
  return plain::PlainParser(text).run();
}

}  // namespace fuzz
