// A script of string-buffer operations against a model: the bytes up to the end pointer and the capacity that
// the two growth rules give.
#include <strings.h>

#include <algorithm>
#include <climits>
#include <optional>

#include "check.hpp"
#include "input.hpp"
#include "strbuf.h"
#include "support/plain_text.hpp"
#include "zfxmemory.h"

namespace {

constexpr int32_t kLongest = 700;

int sign(int value) {
  return (value > 0) - (value < 0);
}

class Model {
 public:
  explicit Model(int64_t step) : step_(step) {}

  void set(const std::string &text) {
    const auto n = static_cast<int64_t>(text.size());
    if (capacity_ <= n) capacity_ = (n / step_ + 1) * step_;
    area_ = text;
    length_ = text.size();
  }
  void append(const std::string &text) {
    if (length_ == 0) return set(text);
    reserve(static_cast<int64_t>(text.size()));
    area_ += text;
    length_ += text.size();
  }
  int32_t reserve(int64_t n) {
    const auto length = static_cast<int64_t>(length_);
    if (capacity_ - length > n) return 0;
    const int64_t capacity = ((length + n + 1) / step_ + 1) * step_;
    if (capacity > INT32_MAX) return -1;
    capacity_ = capacity;
    area_.resize(length_);
    return 0;
  }
  void clear() {
    if (length_ > 0) set("");
  }
  void insert(const std::string &text, int32_t wanted) {
    const auto position = static_cast<std::size_t>(std::max(wanted, 0));
    if (position >= length_) append(text);
    const std::string all = this->text();
    const std::string head = all.substr(0, position);
    const std::string tail = position < all.size() ? all.substr(position) : "";
    clear();
    append(head);
    append(text);
    if (!tail.empty()) append(tail);
  }
  void drop(int32_t n) {
    if (n < 1) return;
    if (static_cast<std::size_t>(n) >= length_) return clear();
    set(text().substr(static_cast<std::size_t>(n)));
  }
  void trim() {
    const std::string kept = plain::trimmed(text());
    area_.replace(0, length_, kept + std::string(length_ - kept.size(), '\0'));
    length_ = kept.size();
  }
  std::string detach() {
    const std::string text = area_;
    *this = Model(step_);
    set("");
    return text;
  }
  // What a null text adds shows what the block held there, so its bytes are taken over from the buffer.
  void take_over(const strbuf &buffer) { area_.assign(buffer.data, area_.size()); }

  [[nodiscard]] std::string text() const { return area_.substr(0, length_); }
  [[nodiscard]] std::size_t length() const { return length_; }
  [[nodiscard]] int64_t step() const { return step_; }

  void compare(const strbuf &buffer) const {
    fuzz::check_equal(std::string(buffer.data, length_), text(), "text");
    fuzz::check_equal(std::string(buffer.data, area_.size() + 1), area_ + '\0', "bytes up to the end");
    fuzz::check_equal(buffer.length, static_cast<int32_t>(length_), "length");
    fuzz::check_equal(buffer.capacity, static_cast<int32_t>(capacity_), "capacity");
    fuzz::check_equal(buffer.end - buffer.data, static_cast<std::ptrdiff_t>(area_.size()), "end");
    fuzz::check_equal(strbuf_length(&buffer), static_cast<uint32_t>(length_), "strbuf_length()");
  }

 private:
  int64_t step_;
  int64_t capacity_ = 0;
  std::string area_;  // up to the end pointer, which trimming leaves behind the text
  std::size_t length_ = 0;
};

// A text argument: a new one, part of the buffer's own, or null.
struct Argument {
  Argument(fuzz::Input &input, const strbuf &buffer, const Model &model) {
    const int kind = input.within(0, 7);
    if (kind == 7) {
      is_null = true;
      n = input.within(-1, 300);
      bytes.assign(static_cast<std::size_t>(std::max(n, 0)), '\0');
    } else if (kind == 6 && model.length() > 0) {
      const auto offset = static_cast<std::size_t>(input.within(0, kLongest)) % model.length();
      bytes = model.text().substr(offset, static_cast<std::size_t>(input.within(0, kLongest)));
      n = static_cast<int32_t>(bytes.size());
      address = buffer.data + offset;
    } else if (kind == 5) {
      bytes = fuzz::c_text(input.text(static_cast<std::size_t>(input.within(0, 60))));
      n = -1 - input.within(0, 9);
      block = fuzz::exact_copy(bytes.c_str(), bytes.size() + 1);
      address = block.get();
    } else {
      const auto wanted = static_cast<std::size_t>(input.within(0, kind == 4 ? kLongest : 60));
      bytes = kind == 4 ? std::string(wanted, static_cast<char>(input.byte())) : input.text(wanted);
      n = static_cast<int32_t>(bytes.size());
      block = fuzz::exact_copy(bytes);
      address = block.get();
    }
  }

  bool is_null = false;
  std::string bytes;
  std::unique_ptr<char[]> block;
  const char *address = nullptr;
  int32_t n = 0;
};

void change_text(fuzz::Input &input, strbuf *buffer, Model &model, int operation) {
  const Argument argument(input, *buffer, model);
  if (operation == 0) {
    fuzz::check(strbuf_set_str(buffer, argument.address, argument.n) == buffer->data, "set gives the text");
    model.set(argument.bytes);
  } else if (operation == 1) {
    const char *begin = strbuf_append(buffer, argument.address, argument.n);
    model.append(argument.bytes);
    fuzz::check(begin + argument.bytes.size() == buffer->end, "append gives the place of what it appended");
  } else {
    const int32_t position = input.within(-1, kLongest);
    strbuf_insert(buffer, argument.address, argument.n, position);
    model.insert(argument.bytes, position);
  }
  if (argument.is_null && argument.n > 0) model.take_over(*buffer);
}

void borrow(fuzz::Input &input, strbuf *buffer, Model &model) {
  const int32_t wanted = input.within(-1, kLongest);
  const auto size = static_cast<std::size_t>(wanted < 1 ? model.step() : wanted);
  char *scratch = strbuf_getBufferSetLength(buffer, wanted);
  std::string expected = model.text().substr(0, size - 1);
  expected.resize(size);
  fuzz::check_equal(std::string(scratch, size), expected, "scratch area");
  std::fill(scratch, scratch + std::min<std::size_t>(size, input.byte()), static_cast<char>(input.byte()));
  const std::string filled(scratch, size);
  if (input.within(0, 7) == 0) return;  // left pending
  const int32_t keep = input.within(0, 3);
  const int32_t n = input.within(-1, kLongest);
  strbuf_releaseBuffer(buffer, keep, n);
  if (keep != 0) model.set(n < 0 ? fuzz::c_text(filled) : filled.substr(0, static_cast<std::size_t>(n)));
}

void format(fuzz::Input &input, strbuf *buffer, Model &model) {
  const bool append = input.within(0, 1) == 1;
  const int32_t width = input.within(0, 20000);
  const std::string text = fuzz::c_text(input.text(20));
  std::string expected = text.size() < static_cast<std::size_t>(width)
                             ? std::string(static_cast<std::size_t>(width) - text.size(), ' ') + text
                             : text;
  const int32_t count = append ? strbuf_append_format(buffer, "%*s", width, text.c_str())
                               : strbuf_format(buffer, "%*s", width, text.c_str());
  fuzz::check_equal(count, static_cast<int32_t>(expected.size()), "count of formatted bytes");
  expected.resize(std::min<std::size_t>(expected.size(), STRBUF_FORMAT_MAX));
  append ? model.append(expected) : model.set(expected);
}

void compare_with(fuzz::Input &input, const strbuf *buffer, const Model &model) {
  const std::string other = fuzz::c_text(input.text(static_cast<std::size_t>(input.within(0, 20))));
  const std::string own = model.text();
  fuzz::check_equal(sign(strbuf_compareNoCase(buffer, other.c_str())),
                    sign(::strcasecmp(own.c_str(), other.c_str())), "order without case");
  const bool ends = own.size() >= other.size() && own.substr(own.size() - other.size()) == other;
  fuzz::check_equal(strbuf_endswith(buffer, other.c_str(), -1, 0), ends ? 1 : 0, "ending");
  const int32_t index = input.within(-1, kLongest);
  const bool inside = index >= 0 && static_cast<std::size_t>(index) < own.size();
  const int expected = inside ? static_cast<uint8_t>(own[static_cast<std::size_t>(index)]) : 0;
  fuzz::check_equal(int{strbuf_getat(buffer, index)}, expected, "byte at an offset");
}

void step(fuzz::Input &input, strbuf *buffer, Model &model) {
  const int operation = input.within(0, 15);
  switch (operation) {
    case 0:
    case 1:
    case 2:
      return change_text(input, buffer, model, operation);
    case 3: {
      const int32_t n = input.within(-1, kLongest);
      const int32_t wanted = n == kLongest ? INT32_MAX : n;
      return fuzz::check_equal(strbuf_reserve(buffer, wanted), model.reserve(wanted), "reserve");
    }
    case 4: {
      const int32_t n = input.within(-1, kLongest);
      model.drop(n);
      return fuzz::check_equal(strbuf_ltrunc(buffer, n), static_cast<uint32_t>(model.length()), "ltrunc");
    }
    case 5:
      strbuf_trim(buffer);
      return model.trim();
    case 6:
      strbuf_clear(buffer);
      return model.clear();
    case 7: {
      ZfxMemFree(buffer->scratch);  // one that is pending is the caller's from here on
      char *text = strbuf_detach(buffer);
      const std::string expected = model.detach();
      fuzz::check_equal(std::string(text, expected.size()), expected, "detached text");
      return ZfxMemFree(text);
    }
    case 8:
      return format(input, buffer, model);
    case 9:
      return borrow(input, buffer, model);
    case 10: {
      const std::string text = fuzz::c_text(input.text(static_cast<std::size_t>(input.within(0, 80))));
      strbuf *other = strbuf_create(1 + input.byte(), text.c_str());
      strbuf_copy(buffer, other);
      strbuf_destroy(other);
      return model.set(text);
    }
    case 11:
      return compare_with(input, buffer, model);
    default:
      return change_text(input, buffer, model, 1);
  }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  const int32_t step_size = input.within(0, 255);
  Model model(std::max(step_size, 1));
  model.set("");
  strbuf *buffer = strbuf_create(step_size, nullptr);
  model.compare(*buffer);
  for (int left = 200; left > 0 && !input.is_empty(); --left) {
    step(input, buffer, model);
    model.compare(*buffer);
  }
  strbuf_destroy(buffer);
  return 0;
}
