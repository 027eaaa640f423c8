// UCS-2 to UTF-8 for texts of ASCII, of a western language and of units of all lengths.
#include <iconv.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "contender.hpp"
#include "utf.h"
#include "zfxmemory.h"

#ifdef HAVE_GLIB
#include <glib.h>
#endif

namespace {

constexpr char kWork[] = "ucs2-to-utf8";

using Units = std::vector<uint16_t>;

enum class Kind { kAscii, kWestern, kMixed };

Units units_of(Kind kind, std::size_t count) {
  std::mt19937 random(20261121);
  Units units(count);
  for (uint16_t &unit : units) {
    unit = static_cast<uint16_t>('a' + random() % 26);
    if (kind == Kind::kWestern && random() % 10 == 0) unit = static_cast<uint16_t>(0xE0 + random() % 32);
    if (kind == Kind::kMixed && random() % 3 == 0) unit = static_cast<uint16_t>(0x3B1 + random() % 24);
    if (kind == Kind::kMixed && random() % 3 == 0) unit = static_cast<uint16_t>(0x4E00 + random() % 20000);
  }
  return units;
}

char *converted_by_loop(const Units &units) {
  auto *const text = static_cast<char *>(std::malloc(units.size() * 3 + 1));
  char *out = text;
  for (const unsigned unit : units) {
    if (unit < 0x80) {
      *out++ = static_cast<char>(unit);
    } else if (unit < 0x800) {
      *out++ = static_cast<char>(0xC0U | unit >> 6U);
      *out++ = static_cast<char>(0x80U | (unit & 0x3FU));
    } else {
      *out++ = static_cast<char>(0xE0U | unit >> 12U);
      *out++ = static_cast<char>(0x80U | (unit >> 6U & 0x3FU));
      *out++ = static_cast<char>(0x80U | (unit & 0x3FU));
    }
  }
  *out = '\0';
  return text;
}

void add_iconv(const std::string &input, const Units &units) {
  bench::contender(kWork, input, "iconv", [=](benchmark::State &state) {
    Units source = units;
    iconv_t converter = ::iconv_open("UTF-8", "UCS-2LE");
    for (auto _ : state) {
      std::size_t in_left = source.size() * 2;
      std::size_t out_left = source.size() * 3 + 1;
      auto *const text = static_cast<char *>(std::malloc(out_left));
      char *in = reinterpret_cast<char *>(source.data());
      char *out = text;
      if (::iconv(converter, &in, &in_left, &out, &out_left) != 0) state.SkipWithError("wrong result");
      benchmark::DoNotOptimize(text);
      std::free(text);
    }
    ::iconv_close(converter);
  });
}

void add(const std::string &input, const Units &units) {
  bench::repeated(kWork, input, bench::kOwn, [=] {
    char *text = nullptr;
    const int32_t length = Ucs2ToUtf8(units.data(), static_cast<int32_t>(units.size()), &text);
    benchmark::DoNotOptimize(text);
    ZfxMemFree(text);
    return length;
  });
  add_iconv(input, units);
  bench::repeated(kWork, input, "simple loop", [=] {
    char *text = converted_by_loop(units);
    benchmark::DoNotOptimize(text);
    std::free(text);
    return 0;
  });
#ifdef HAVE_GLIB
  bench::repeated(kWork, input, "GLib", [=] {
    gchar *text = g_utf16_to_utf8(units.data(), static_cast<glong>(units.size()), nullptr, nullptr, nullptr);
    benchmark::DoNotOptimize(text);
    g_free(text);
    return 0;
  });
#endif
}

[[maybe_unused]] const bool added = [] {
  for (const std::size_t count : {32U, 65536U}) {
    const std::string size = count == 32 ? "32 units" : "64 Ki units";
    add("ASCII, " + size, units_of(Kind::kAscii, count));
    add("western, " + size, units_of(Kind::kWestern, count));
    add("mixed, " + size, units_of(Kind::kMixed, count));
  }
  return true;
}();

}  // namespace
