// Export of settings to the environment, one by one and as a whole.
#include "zorvrcs_export.hpp"

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "whitespace.hpp"
#include "zorvrcs_expand.hpp"

namespace zorvcrt::settings {

namespace {

// Its presence counts, whatever its value. It may be a setting itself, and then ends the export it is part
// of.
constexpr char kNoExport[] = "__QUORCONF_NOENV";

bool is_export_forbidden() {
  return std::getenv(kNoExport) != nullptr;
}

std::size_t count_variables() {
  std::size_t count = 0;
  if (environ != nullptr) {
    while (environ[count] != nullptr) {
      ++count;
    }
  }
  return count;
}

struct Variable {
  char *text;
};

// Sets many new variables in time proportional to their number. setenv() walks the whole environment for each
// name, which for 1,000 settings takes five times as long as reading them. Here it makes each variable in an
// environment of its own, so that it owns the texts as ever, and the last one in the environment of them all,
// so that it takes a copy of that.
class VariableBatch {
 public:
  // The variables are those of the environment, with room for all that will be set and one more.
  VariableBatch(Variable *variables, std::size_t count) : variables_(variables), count_(count) {}

  /// Sets the variable of a setting that has none, and whose name the system accepts.
  void set(const Item &item) {
    if (last_ != nullptr) make_alone(*last_);
    last_ = &item;
  }

  /// Completes the environment. Tells whether the block of variables is free again, as it is unless memory
  /// ran out.
  [[nodiscard]] bool finish() {
    if (last_ == nullptr) return true;
    variables_[count_].text = nullptr;
    environ = &variables_->text;
    ::setenv(last_->name.get(), last_->value.get(), 1);
    return environ != &variables_->text;
  }

 private:
  void make_alone(const Item &item) {
    variables_[count_].text = nullptr;
    environ = &variables_[count_].text;
    if (::setenv(item.name.get(), item.value.get(), 1) == 0) variables_[count_++].text = environ[0];
  }

  Variable *variables_;
  std::size_t count_;
  const Item *last_ = nullptr;
};

// The variables as an export without enough memory has left them: in use until the C library makes an
// environment of its own, and given back by the next export.
constinit Variable *left_in_use = nullptr;

void give_back_unused() {
  if (left_in_use != nullptr && environ != &left_in_use->text) std::free(std::exchange(left_in_use, nullptr));
}

void note_variables(Tree &tree) {
  for (std::size_t i = 0, count = count_variables(); i < count; ++i) {
    const std::string_view variable = environ[i];
    const std::size_t equals = variable.find('=');
    if (equals != std::string_view::npos) tree.note_variable({variable.data(), equals});
  }
}

// From the highest level down, so that a name's first setting is the one that counts.
void set_missing(Tree &tree, VariableBatch &batch) {
  const Tree::Sections &sections = tree.sections();
  for (auto section = sections.rbegin(); section != sections.rend(); ++section) {
    for (const Item *item = section->last(); item != nullptr; item = section->before(*item)) {
      const std::string_view name(item->name.get(), item->name_size);
      if (item->has_variable || name.empty()) continue;
      batch.set(*item);
      if (name == kNoExport) return;
      tree.note_variable(name);
    }
  }
}

}  // namespace

void export_setting(const char *name, const char *value) {
  if (!is_export_forbidden()) ::setenv(name, value, 1);
}

void export_missing(Tree &tree) {
  if (is_export_forbidden()) return;
  const std::size_t count = count_variables();
  UniqueMalloc<Variable> variables(
      static_cast<Variable *>(std::malloc((count + tree.size() + 1) * sizeof(Variable))));
  if (variables == nullptr) return;
  if (count != 0) std::memcpy(variables.get(), environ, count * sizeof(Variable));
  note_variables(tree);
  VariableBatch batch(variables.get(), count);
  set_missing(tree, batch);
  const bool is_free = batch.finish();
  give_back_unused();
  if (!is_free) left_in_use = variables.release();
}

void add_setting(Tree &tree, int32_t level, const char *name, const char *value) {
  const UniqueMalloc<char> own_name = copy_of(trimmed(name));
  const UniqueMalloc<char> own_value = copy_of(trimmed_front(value));
  if (own_name == nullptr || own_value == nullptr) return;
  store_expanded(tree, level, own_name.get(), own_value.get());
  if ((level & QUOR_LEVEL_NONPRIVILEGED) != 0) export_setting(own_name.get(), own_value.get());
}

}  // namespace zorvcrt::settings
