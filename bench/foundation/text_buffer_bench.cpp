// A text of 1 MiB that is put together from pieces of one size.
#include <string>

#include "contender.hpp"
#include "strbuf.h"

#ifdef HAVE_GLIB
#include <glib.h>
#endif

namespace {

constexpr char kWork[] = "text-buffer";
constexpr std::size_t kTextSize = 1 << 20;

[[maybe_unused]] const bool added = [] {
  for (const std::size_t size : {1U, 10U, 100U}) {
    const std::string piece(size, 'x');
    const std::string input = "pieces of " + std::to_string(size);
    bench::contender(kWork, input, bench::kOwn, [=](benchmark::State &state) {
      for (auto _ : state) {
        strbuf *buffer = strbuf_create(16, nullptr);
        for (std::size_t length = 0; length < kTextSize; length += size) {
          strbuf_append(buffer, piece.data(), static_cast<int32_t>(size));
        }
        benchmark::DoNotOptimize(strbuf_get(buffer));
        strbuf_destroy(buffer);
      }
    });
    bench::contender(kWork, input, "std::string", [=](benchmark::State &state) {
      for (auto _ : state) {
        std::string text;
        for (std::size_t length = 0; length < kTextSize; length += size) {
          text.append(piece.data(), size);
        }
        benchmark::DoNotOptimize(text.data());
      }
    });
#ifdef HAVE_GLIB
    bench::contender(kWork, input, "GLib", [=](benchmark::State &state) {
      for (auto _ : state) {
        GString *text = g_string_new(nullptr);
        for (std::size_t length = 0; length < kTextSize; length += size) {
          g_string_append_len(text, piece.data(), static_cast<gssize>(size));
        }
        benchmark::DoNotOptimize(text->str);
        g_string_free(text, 1);
      }
    });
#endif
  }
  return true;
}();

}  // namespace
