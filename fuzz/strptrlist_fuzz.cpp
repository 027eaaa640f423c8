// A script over a list of texts, sorted or not, against a vector of strings.
#include <algorithm>
#include <vector>

#include "check.hpp"
#include "input.hpp"
#include "strptrlist.h"

namespace {

class Pair {
 public:
  explicit Pair(bool sorted) : sorted_(sorted), list_(strptrlist_new()) {}
  ~Pair() { strptrlist_delete(list_); }
  Pair(const Pair &) = delete;
  Pair &operator=(const Pair &) = delete;

  void step(fuzz::Input &input) {
    switch (input.within(0, 9)) {
      case 0:
        return remove(input.within(-1, 300));
      case 1:
        return find(fuzz::c_text(input.line()));
      case 2:
        return grow(input.integer<uint16_t>() % 1000);
      case 3:
        if (input.byte() != 0) return;
        strptrlist_clear(list_);
        return model_.clear();
      case 4:
        return sorted_ ? add_sorted(fuzz::c_text(input.line())) : add_bytes(input.line());
      default:
        return sorted_ ? add_sorted(fuzz::c_text(input.line())) : add(fuzz::c_text(input.line()));
    }
  }

  void compare() const {
    fuzz::check_equal(list_->count, uint64_t{model_.size()}, "count");
    fuzz::check_equal(list_->capacity, capacity_, "capacity");
    for (std::size_t i = 0; i < model_.size(); ++i) {
      const char *text = strptrlist_get(list_, static_cast<int32_t>(i));
      fuzz::check_equal(std::string(text, model_[i].size() + 1), model_[i] + '\0', "text");
    }
    fuzz::check(strptrlist_get(list_, -1) == nullptr, "nothing at -1");
    fuzz::check(strptrlist_get(list_, static_cast<int32_t>(model_.size())) == nullptr, "nothing at count");
  }

 private:
  void make_room(uint64_t wanted) {
    if (capacity_ <= wanted) capacity_ += wanted / 32 * 32 + 32;
  }
  void grow(uint64_t wanted) {
    make_room(wanted);
    fuzz::check_equal(strptrlist_ensuresize(list_, wanted), 0, "ensuresize");
  }
  void add(const std::string &text) {
    make_room(model_.size() + 1);
    fuzz::check_equal(strptrlist_add(list_, text.c_str()), 0, "add");
    model_.push_back(text);
  }
  void add_bytes(const std::string &bytes) {
    make_room(model_.size() + 1);
    fuzz::check_equal(strptrlist_ladd(list_, fuzz::exact_copy(bytes).get(), bytes.size()), 0, "ladd");
    model_.push_back(bytes);
  }
  void add_sorted(const std::string &text) {
    make_room(model_.size() + 1);
    fuzz::check_equal(strptrlist_add_sorted(list_, text.c_str()), 0, "add_sorted");
    model_.insert(std::upper_bound(model_.begin(), model_.end(), text), text);
  }
  void find(const std::string &text) const {
    if (!sorted_) return;
    const int32_t index = strptrlist_find_sorted(list_, text.c_str());
    const bool known = std::binary_search(model_.begin(), model_.end(), text);
    fuzz::check_equal(index >= 0, known, "found");
    if (known) fuzz::check_equal(model_.at(static_cast<std::size_t>(index)), text, "text at the index");
  }
  void remove(int32_t wanted) {
    const auto index = static_cast<std::size_t>(wanted);
    const bool inside = wanted >= 0 && index < model_.size();
    fuzz::check_equal(strptrlist_remove_at(list_, wanted), inside ? 0 : -1, "remove_at");
    if (inside) model_.erase(model_.begin() + wanted);
  }

  bool sorted_;
  strptrlist *list_;
  uint64_t capacity_ = 32;
  std::vector<std::string> model_;
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, std::size_t size) {
  fuzz::Input input(data, size);
  Pair pair(input.within(0, 2) != 0);
  pair.compare();
  while (!input.is_empty()) {
    pair.step(input);
    pair.compare();
  }
  return 0;
}
