// The string buffer and the string list beside what a host would write instead: std::string, bsearch(), and
// where it is found GLib.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "strbuf.h"
#include "strptrlist.h"
#include "zfxmemory.h"

#ifdef HAVE_GLIB
#include <glib.h>
#endif

namespace {

constexpr int64_t kTextSize = 1 << 20;

void build_with_strbuf(benchmark::State &state) {
  const std::string piece(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    strbuf *buffer = strbuf_create(16, nullptr);
    for (int64_t length = 0; length < kTextSize; length += state.range(0)) {
      strbuf_append(buffer, piece.data(), static_cast<int32_t>(piece.size()));
    }
    benchmark::DoNotOptimize(strbuf_get(buffer));
    strbuf_destroy(buffer);
  }
}
BENCHMARK(build_with_strbuf)->Arg(1)->Arg(10)->Arg(100);

void build_with_std_string(benchmark::State &state) {
  const std::string piece(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    std::string text;
    for (int64_t length = 0; length < kTextSize; length += state.range(0)) {
      text.append(piece.data(), piece.size());
    }
    benchmark::DoNotOptimize(text.data());
  }
}
BENCHMARK(build_with_std_string)->Arg(1)->Arg(10)->Arg(100);

constexpr std::size_t kTexts = 100000;

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

void insert_sorted_with_strptrlist(benchmark::State &state) {
  for (auto _ : state) {
    strptrlist *list = strptrlist_new();
    for (const std::string &text : random_texts()) {
      strptrlist_add_sorted(list, text.c_str());
    }
    benchmark::DoNotOptimize(list->items);
    strptrlist_delete(list);
  }
}
BENCHMARK(insert_sorted_with_strptrlist)->Unit(benchmark::kMillisecond);

int compare_slots(const void *a, const void *b) {
  return std::strcmp(*static_cast<const char *const *>(a), *static_cast<const char *const *>(b));
}

strptrlist *sorted_list() {
  static strptrlist *list = [] {
    strptrlist *made = strptrlist_new();
    for (const std::string &text : random_texts()) {
      strptrlist_add_sorted(made, text.c_str());
    }
    return made;
  }();
  return list;
}

void find_with_strptrlist(benchmark::State &state) {
  const strptrlist *list = sorted_list();
  std::size_t i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(strptrlist_find_sorted(list, random_texts()[i++ % kTexts].c_str()));
  }
}
BENCHMARK(find_with_strptrlist);

void find_with_bsearch(benchmark::State &state) {
  const strptrlist *list = sorted_list();
  std::size_t i = 0;
  for (auto _ : state) {
    const char *key = random_texts()[i++ % kTexts].c_str();
    benchmark::DoNotOptimize(std::bsearch(&key, list->items, list->count, sizeof key, compare_slots));
  }
}
BENCHMARK(find_with_bsearch);

#ifdef HAVE_GLIB
void build_with_gstring(benchmark::State &state) {
  const std::string piece(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    GString *text = g_string_new(nullptr);
    for (int64_t length = 0; length < kTextSize; length += state.range(0)) {
      g_string_append_len(text, piece.data(), static_cast<gssize>(piece.size()));
    }
    benchmark::DoNotOptimize(text->str);
    g_string_free(text, 1);
  }
}
BENCHMARK(build_with_gstring)->Arg(1)->Arg(10)->Arg(100);

void insert_sorted_with_gptrarray(benchmark::State &state) {
  for (auto _ : state) {
    GPtrArray *array = g_ptr_array_new_with_free_func(g_free);
    for (const std::string &text : random_texts()) {
      const char *key = text.c_str();
      guint low = 0;
      for (guint high = array->len; low < high;) {
        const guint middle = (low + high) / 2;
        const bool above = std::strcmp(key, static_cast<const char *>(array->pdata[middle])) > 0;
        above ? low = middle + 1 : high = middle;
      }
      g_ptr_array_insert(array, static_cast<gint>(low), g_strdup(key));
    }
    g_ptr_array_free(array, 1);
  }
}
BENCHMARK(insert_sorted_with_gptrarray)->Unit(benchmark::kMillisecond);
#endif

}  // namespace
