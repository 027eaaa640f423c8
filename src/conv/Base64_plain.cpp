// The Base64 loops for any machine: whole groups at a time where they can be had.
#include "Base64_kernels.hpp"

namespace zorvcrt {

namespace {

constexpr std::array<uint8_t, 256> kSextetOf = make_sextet_table();
constexpr uint32_t kInvalidBit = 0x80;

uint8_t sextet_of(char c) {
  return kSextetOf[static_cast<uint8_t>(c)];
}

// The four sextets of the group of bytes in the low 24 bits.
char *put_characters(char *out, uint32_t group) {
  constexpr uint32_t kMask = kSextets - 1;
  out[0] = kBase64Alphabet[group >> 18];
  out[1] = kBase64Alphabet[group >> 12 & kMask];
  out[2] = kBase64Alphabet[group >> 6 & kMask];
  out[3] = kBase64Alphabet[group & kMask];
  return out + 4;
}

uint32_t group_of(const uint8_t *bytes) {
  return uint32_t{bytes[0]} << 16 | uint32_t{bytes[1]} << 8 | bytes[2];
}

}  // namespace

std::size_t base64_encode_plain(const uint8_t *data, std::size_t n, char *out) {
  const char *const start = out;
  for (; n >= 3; n -= 3, data += 3) {
    out = put_characters(out, group_of(data));
  }
  if (n > 0) {
    const std::array<uint8_t, 3> last = {data[0], n == 2 ? data[1] : uint8_t{0}, 0};
    out = put_characters(out, group_of(last.data()));
    out[-1] = kBase64Padding;
    if (n == 1) out[-2] = kBase64Padding;
  }
  return static_cast<std::size_t>(out - start);
}

void base64_pack(SextetPacker &packer, const char *text, std::size_t n) {
  const char *const end = text + n;
  while (text != end) {
    if (end - text >= 4 && packer.is_between_groups()) {
      const uint32_t a = sextet_of(text[0]);
      const uint32_t b = sextet_of(text[1]);
      const uint32_t c = sextet_of(text[2]);
      const uint32_t d = sextet_of(text[3]);
      if (((a | b | c | d) & kInvalidBit) == 0) {
        packer.put_group(a << 18 | b << 12 | c << 6 | d);
        text += 4;
        continue;
      }
    }
    const uint8_t sextet = sextet_of(*text++);
    if (sextet != kNoSextet) packer.put(sextet);
  }
}

std::size_t base64_length_plain(const char *text, std::size_t limit) {
  std::size_t length = 0;
  while (length < limit && text[length] != '\0' && text[length] != kBase64Padding) {
    ++length;
  }
  return length;
}

std::size_t base64_decode_plain(const char *text, Base64Extent extent, uint8_t *out) {
  SextetPacker packer(out);
  Base64Rest rest{text, extent};
  while (rest.has<base64_length_plain>(1)) {
    base64_pack(packer, rest.text, rest.extent.known);
    rest.take(rest.extent.known);
  }
  return static_cast<std::size_t>(packer.finish() - out);
}

}  // namespace zorvcrt
