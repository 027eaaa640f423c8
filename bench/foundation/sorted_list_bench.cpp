// A sorted list of 100,000 own copies of random texts: building it one insertion at a time, and finding in
// it.
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "contender.hpp"
#include "strptrlist.h"

#ifdef HAVE_GLIB
#include <glib.h>
#endif

namespace {

constexpr std::size_t kTexts = 100000;
constexpr char kInput[] = "100,000 texts";

const std::vector<std::string> &random_texts() {
  static const std::vector<std::string> texts = [] {
    std::mt19937 random(20261121);
    std::vector<std::string> made(kTexts);
    for (std::string &text : made) {
      text = "key-" + std::to_string(random());
    }
    return made;
  }();
  return texts;
}

const char *wanted(std::size_t &i) {
  return random_texts()[i++ % kTexts].c_str();
}

strptrlist *own_list() {
  strptrlist *list = strptrlist_new();
  for (const std::string &text : random_texts()) {
    strptrlist_add_sorted(list, text.c_str());
  }
  return list;
}

const strptrlist *searched_list() {
  static const strptrlist *const list = own_list();
  return list;
}

int compare_slots(const void *a, const void *b) {
  return std::strcmp(*static_cast<const char *const *>(a), *static_cast<const char *const *>(b));
}

bool add_insertion() {
  constexpr char kWork[] = "sorted-list-insert";
  bench::contender(kWork, kInput, bench::kOwn, [](benchmark::State &state) {
    for (auto _ : state) {
      strptrlist_delete(own_list());
    }
  });
  bench::contender(kWork, kInput, "std::multiset", [](benchmark::State &state) {
    for (auto _ : state) {
      std::multiset<std::string> list(random_texts().begin(), random_texts().end());
      benchmark::DoNotOptimize(list.size());
    }
  });
#ifdef HAVE_GLIB
  bench::contender(kWork, kInput, "GPtrArray", [](benchmark::State &state) {
    for (auto _ : state) {
      GPtrArray *array = g_ptr_array_new_with_free_func(g_free);
      for (const std::string &text : random_texts()) {
        guint low = 0;
        for (guint high = array->len; low < high;) {
          const guint middle = (low + high) / 2;
          const bool above = std::strcmp(text.c_str(), static_cast<const char *>(array->pdata[middle])) > 0;
          above ? low = middle + 1 : high = middle;
        }
        g_ptr_array_insert(array, static_cast<gint>(low), g_strdup(text.c_str()));
      }
      g_ptr_array_free(array, 1);
    }
  });
#endif
  return true;
}

bool add_search() {
  constexpr char kWork[] = "sorted-list-find";
  bench::contender(kWork, kInput, bench::kOwn, [](benchmark::State &state) {
    const strptrlist *list = searched_list();
    std::size_t i = 0;
    for (auto _ : state) {
      benchmark::DoNotOptimize(strptrlist_find_sorted(list, wanted(i)));
    }
  });
  bench::contender(kWork, kInput, "bsearch", [](benchmark::State &state) {
    const strptrlist *list = searched_list();
    std::size_t i = 0;
    for (auto _ : state) {
      const char *key = wanted(i);
      benchmark::DoNotOptimize(std::bsearch(&key, list->items, list->count, sizeof key, compare_slots));
    }
  });
  return true;
}

[[maybe_unused]] const bool added = add_insertion() && add_search();

}  // namespace
