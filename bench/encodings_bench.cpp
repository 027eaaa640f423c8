// Base64, uuencode and UCS-2 to UTF-8 beside GLib's Base64 where it is found, a byte loop and iconv.
#include <benchmark/benchmark.h>
#include <iconv.h>

#include <random>
#include <string>
#include <vector>

#include "Base64.h"
#include "utf.h"
#include "uu.h"
#include "zfxmemory.h"

#ifdef HAVE_GLIB
#include <glib.h>
#endif

namespace {

std::string random_data(std::size_t size) {
  std::mt19937 random(20261121);
  std::string data(size, '\0');
  for (char &c : data) {
    c = static_cast<char>(random());
  }
  return data;
}

std::string base64_of(const std::string &data) {
  char *text = nullptr;
  const uint32_t length = ZfxBase64Encode(data.data(), static_cast<uint32_t>(data.size()), &text);
  std::string result(text, length);
  ZfxMemFree(text);
  return result;
}

// One character in a hundred is none of the alphabet.
std::string soiled_base64(std::size_t size) {
  std::string text = base64_of(random_data(size));
  std::mt19937 random(1);
  for (char &c : text) {
    if (random() % 100 == 0) c = '\n';
  }
  return text;
}

void sizes(benchmark::internal::Benchmark *benchmark) {
  benchmark->Arg(48)->Arg(1024)->Arg(65536)->Arg(1 << 20);
}

void encode_base64(benchmark::State &state) {
  const std::string data = random_data(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    char *text = nullptr;
    ZfxBase64Encode(data.data(), static_cast<uint32_t>(data.size()), &text);
    benchmark::DoNotOptimize(text);
    ZfxMemFree(text);
  }
}
BENCHMARK(encode_base64)->Apply(sizes);

void decode_base64(benchmark::State &state) {
  const std::string text = soiled_base64(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    void *data = nullptr;
    ZfxBase64Decode(text.data(), static_cast<uint32_t>(text.size()), &data);
    benchmark::DoNotOptimize(data);
    ZfxMemFree(data);
  }
}
BENCHMARK(decode_base64)->Apply(sizes);

#ifdef HAVE_GLIB
void encode_base64_with_glib(benchmark::State &state) {
  const std::string data = random_data(static_cast<std::size_t>(state.range(0)));
  const auto *bytes = reinterpret_cast<const guchar *>(data.data());
  for (auto _ : state) {
    gchar *text = g_base64_encode(bytes, data.size());
    benchmark::DoNotOptimize(text);
    g_free(text);
  }
}
BENCHMARK(encode_base64_with_glib)->Apply(sizes);

void decode_base64_with_glib(benchmark::State &state) {
  const std::string text = soiled_base64(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    gsize size = 0;
    guchar *data = g_base64_decode(text.c_str(), &size);
    benchmark::DoNotOptimize(data);
    g_free(data);
  }
}
BENCHMARK(decode_base64_with_glib)->Apply(sizes);
#endif

void uuencode(benchmark::State &state) {
  const std::string data = random_data(450000);
  std::vector<char> text(620001);
  for (auto _ : state) {
    benchmark::DoNotOptimize(zfx_uuencode(data.data(), 450000, text.data(), 620000));
  }
}
BENCHMARK(uuencode);

char uu_character(unsigned sextet) {
  return static_cast<char>(sextet == 0 ? '`' : sextet + ' ');
}

void uuencode_with_a_byte_loop(benchmark::State &state) {
  const std::string data = random_data(450000);
  std::vector<char> text(620001);
  for (auto _ : state) {
    char *out = text.data();
    const auto *in = reinterpret_cast<const unsigned char *>(data.data());
    for (int line = 0; line < 10000; ++line) {
      *out++ = 'M';
      for (int group = 0; group < 15; ++group, in += 3) {
        *out++ = uu_character(in[0] >> 2U);
        *out++ = uu_character((in[0] << 4U & 0x30U) | in[1] >> 4U);
        *out++ = uu_character((in[1] << 2U & 0x3CU) | in[2] >> 6U);
        *out++ = uu_character(in[2] & 0x3FU);
      }
      *out++ = '\n';
    }
    benchmark::ClobberMemory();
  }
}
BENCHMARK(uuencode_with_a_byte_loop);

void uudecode(benchmark::State &state) {
  const std::string data = random_data(450000);
  std::vector<char> text(620002);
  std::vector<char> bytes(450000);
  zfx_uuencode(data.data(), 450000, text.data(), 620000);
  for (auto _ : state) {
    benchmark::DoNotOptimize(zfx_uudecode(text.data(), 0, bytes.data(), 450000));
  }
}
BENCHMARK(uudecode);

// The kinds of text: 0 ASCII, 1 letters of a western language, 2 units of all lengths at random.
std::vector<uint16_t> units_of(int64_t kind, int64_t count) {
  std::mt19937 random(20261121);
  std::vector<uint16_t> units(static_cast<std::size_t>(count));
  for (uint16_t &unit : units) {
    unit = static_cast<uint16_t>('a' + random() % 26);
    if (kind == 1 && random() % 10 == 0) unit = static_cast<uint16_t>(0xE0 + random() % 32);
    if (kind == 2 && random() % 3 == 0) unit = static_cast<uint16_t>(0x3B1 + random() % 24);
    if (kind == 2 && random() % 3 == 0) unit = static_cast<uint16_t>(0x4E00 + random() % 20000);
  }
  return units;
}

void kinds(benchmark::internal::Benchmark *benchmark) {
  for (const int64_t kind : {0, 1, 2}) {
    benchmark->Args({kind, 32})->Args({kind, 65536});
  }
}

void ucs2_to_utf8(benchmark::State &state) {
  const std::vector<uint16_t> units = units_of(state.range(0), state.range(1));
  for (auto _ : state) {
    char *text = nullptr;
    Ucs2ToUtf8(units.data(), static_cast<int32_t>(units.size()), &text);
    benchmark::DoNotOptimize(text);
    ZfxMemFree(text);
  }
}
BENCHMARK(ucs2_to_utf8)->Apply(kinds);

void ucs2_to_utf8_with_iconv(benchmark::State &state) {
  std::vector<uint16_t> units = units_of(state.range(0), state.range(1));
  std::vector<char> text(units.size() * 3);
  iconv_t converter = ::iconv_open("UTF-8", "UCS-2LE");
  for (auto _ : state) {
    char *in = reinterpret_cast<char *>(units.data());
    char *out = text.data();
    std::size_t in_left = units.size() * 2;
    std::size_t out_left = text.size();
    benchmark::DoNotOptimize(::iconv(converter, &in, &in_left, &out, &out_left));
  }
  ::iconv_close(converter);
}
BENCHMARK(ucs2_to_utf8_with_iconv)->Apply(kinds);

}  // namespace
