// The fields of a delimited line, and trimming, against the rules said again over strings.
#include "NextToken.h"
#include "TrimString.h"
#include "check.hpp"
#include "foundation/plain_tokenizer.hpp"
#include "input.hpp"
#include "support/plain_text.hpp"

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const auto delimiter = static_cast<char>(input.byte());
  const auto room = static_cast<std::size_t>(input.byte());
  const std::string line = fuzz::c_text(input.rest());
  const auto copy = fuzz::exact_copy(line.c_str(), line.size() + 1);

  const auto out = std::make_unique<char[]>(room + 1);
  int32_t position = 0;
  plain::Tokenizer model{line, delimiter, room};
  for (bool more = true; more;) {
    more = model.next();
    const int32_t got =
        ZfxNextToken(copy.get(), delimiter, out.get(), static_cast<int32_t>(room + 1), &position);
    fuzz::check_equal(got, more ? 1 : 0, "whether there is a field");
    fuzz::check_equal(std::string(out.get()), model.token, "field");
    fuzz::check_equal(static_cast<std::size_t>(position), model.position, "position");
  }
  TrimString(copy.get());
  fuzz::check_equal(std::string(copy.get()), plain::trimmed(line), "trimmed line");
  return 0;
}
