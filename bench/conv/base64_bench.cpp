// Base64: random bytes to text, and text back with and without characters that belong to no alphabet. Every
// contender's result is a block of its own.
#include <cstdlib>
#include <string>

#include "Base64.h"
#include "contender.hpp"
#include "zfxmemory.h"

#ifdef HAVE_GLIB
#include <glib.h>
#endif
#ifdef HAVE_OPENSSL
#include <openssl/evp.h>
#endif
#ifdef HAVE_B64
extern "C" {
#include <b64/cdecode.h>
#include <b64/cencode.h>
}
#endif
#ifdef HAVE_ABSL
#include <absl/strings/escaping.h>
#endif

namespace {

std::string base64_of(const std::string &data) {
  char *text = nullptr;
  const uint32_t length = ZfxBase64Encode(data.data(), static_cast<uint32_t>(data.size()), &text);
  std::string result(text, length);
  ZfxMemFree(text);
  return result;
}

// One character in a hundred gives way to one of no alphabet.
std::string soiled(std::string text) {
  std::mt19937 random(1);
  for (char &c : text) {
    if (random() % 100 == 0) c = "\n\r -!*"[random() % 6];
  }
  return text;
}

[[maybe_unused]] char *block_of(std::size_t size) {
  return static_cast<char *>(std::malloc(size));
}

int freed(void *block) {
  benchmark::DoNotOptimize(block);
  std::free(block);
  return 0;
}

#ifdef HAVE_GLIB
const guchar *bytes_of(const std::string &data) {
  return reinterpret_cast<const guchar *>(data.data());
}
#endif

void add_encoders(const std::string &input, const std::string &data) {
  constexpr char kWork[] = "base64-encode";
  bench::repeated(kWork, input, bench::kOwn, [=] {
    char *text = nullptr;
    ZfxBase64Encode(data.data(), static_cast<uint32_t>(data.size()), &text);
    return freed(text);
  });
#ifdef HAVE_GLIB
  bench::repeated(kWork, input, "GLib", [=] { return freed(g_base64_encode(bytes_of(data), data.size())); });
#endif
#ifdef HAVE_OPENSSL
  bench::repeated(kWork, input, "OpenSSL", [=] {
    char *text = block_of(data.size() / 3 * 4 + 8);
    EVP_EncodeBlock(reinterpret_cast<unsigned char *>(text),
                    reinterpret_cast<const unsigned char *>(data.data()), static_cast<int>(data.size()));
    return freed(text);
  });
#endif
#ifdef HAVE_B64
  bench::repeated(kWork, input, "libb64", [=] {
    char *text = block_of(data.size() * 2 + 8);
    base64_encodestate encoder;
    base64_init_encodestate(&encoder);
    const int length = base64_encode_block(data.data(), static_cast<int>(data.size()), text, &encoder);
    base64_encode_blockend(text + length, &encoder);
    return freed(text);
  });
#endif
#ifdef HAVE_ABSL
  bench::repeated(kWork, input, "Abseil", [=] { return absl::Base64Escape(data); });
#endif
}

// The contenders that pass over characters of no alphabet, as ours does.
void add_forgiving_decoders(const std::string &work, const std::string &input, const std::string &text) {
  bench::repeated(work, input, bench::kOwn, [=] {
    void *data = nullptr;
    ZfxBase64Decode(text.data(), static_cast<uint32_t>(text.size()), &data);
    return freed(data);
  });
#ifdef HAVE_GLIB
  bench::repeated(work, input, "GLib", [=] {
    gsize size = 0;
    return freed(g_base64_decode(text.c_str(), &size));
  });
#endif
#ifdef HAVE_B64
  bench::repeated(work, input, "libb64", [=] {
    char *data = block_of(text.size() + 8);
    base64_decodestate decoder;
    base64_init_decodestate(&decoder);
    base64_decode_block(text.data(), static_cast<int>(text.size()), data, &decoder);
    return freed(data);
  });
#endif
}

void add_strict_decoders([[maybe_unused]] const std::string &work, [[maybe_unused]] const std::string &input,
                         [[maybe_unused]] const std::string &text) {
#ifdef HAVE_OPENSSL
  bench::repeated(work, input, "OpenSSL", [=] {
    char *data = block_of(text.size());
    EVP_DecodeBlock(reinterpret_cast<unsigned char *>(data),
                    reinterpret_cast<const unsigned char *>(text.data()), static_cast<int>(text.size()));
    return freed(data);
  });
#endif
#ifdef HAVE_ABSL
  bench::repeated(work, input, "Abseil", [=] {
    std::string data;
    absl::Base64Unescape(text, &data);
    return data;
  });
#endif
}

void add(const std::string &input, std::size_t size) {
  const std::string data = bench::random_bytes(size);
  add_encoders(input, data);
  add_forgiving_decoders("base64-decode", input, soiled(base64_of(data)));
  add_forgiving_decoders("base64-decode-clean", input, base64_of(data));
  add_strict_decoders("base64-decode-clean", input, base64_of(data));
}

[[maybe_unused]] const bool added = [] {
  add("48 bytes", 48);
  add("1 KiB", 1024);
  add("64 KiB", 65536);
  add("1 MiB", 1 << 20);
  return true;
}();

}  // namespace
