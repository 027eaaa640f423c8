// JSON in memory: the parser against a plain restatement of scanner and grammar, printing against reading
// again.
#include "check.hpp"
#include "input.hpp"
#include "json/documents.hpp"
#include "json/plain_parser.hpp"

namespace {

documents::Document parsed(const std::string &text) {
  return documents::Document(
      ZJsonExpression_Parse(fuzz::exact_copy(text).get(), static_cast<int32_t>(text.size())));
}

// Gives the document, or nothing where there is none.
documents::Document check_parse(const std::string &text) {
  const std::string expected = plain::PlainParser(documents::without_end(text)).run();
  if (expected == "jam") return nullptr;
  documents::Document document = parsed(text);
  fuzz::check_equal(documents::outcome_of(document.get()), expected, "outcome of a parse");
  return document->root == nullptr ? nullptr : std::move(document);
}

// Names are printed as they are, a backslash before a quote changes where a string ends, and reals lose
// leading zeros: a document with none of these is printed as it is read.
bool comes_back(const std::string &text, const std::string &compact) {
  return text.find_first_of("\\'") == std::string::npos && compact.find('.') == std::string::npos;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  const std::string text(reinterpret_cast<const char *>(data), size);
  const documents::Document document = check_parse(text);
  if (document == nullptr) return 0;

  const std::string compact = documents::printed(document.get(), false);
  const documents::Document again = check_parse(compact);
  if (comes_back(text, compact)) {
    fuzz::check(again != nullptr, "a printed document is one");
    fuzz::check_equal(documents::printed(again.get(), false), compact, "printed and parsed document");
  }
  check_parse(documents::printed(document.get(), true));

  const documents::Document copy(ZJsonExpression_New());
  copy->root = ZJsonValue_Clone(document->root);
  // A copy takes the quotes off names once more, which shows where a name still has some.
  if (text.find('\'') == std::string::npos) {
    fuzz::check_equal(documents::printed(copy.get(), false), compact, "copy of a document");
  }
  return 0;
}
