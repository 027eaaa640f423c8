// The Base64 loops on AVX2 registers: 24 bytes or 32 characters a step, a fifth of the time of the plain
// ones.
#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "Base64_kernels.hpp"
#include "sextets_avx2.hpp"

namespace zorvcrt {

namespace {

ZORVCRT_AVX2 __m256i characters_of(__m256i sextets) {
  // What to add, by the slot that the sextet falls into: 0 for A..Z, 1 for a..z, 2..11 for the digits, 12 and
  // 13 for the last two.
  const __m256i offsets = _mm256_setr_epi8(65, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 0, 0,  //
                                           65, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16, 0, 0);
  const __m256i beyond_letters = _mm256_subs_epu8(sextets, _mm256_set1_epi8(51));
  const __m256i beyond_capitals = _mm256_cmpgt_epi8(sextets, _mm256_set1_epi8(25));  // -1 for true
  const __m256i slots = _mm256_sub_epi8(beyond_letters, beyond_capitals);
  return _mm256_add_epi8(sextets, _mm256_shuffle_epi8(offsets, slots));
}

struct Sextets {
  __m256i values;
  uint32_t invalid;  // a bit for every character outside the alphabet, whose value means nothing
};

// A character is in the alphabet when its high half byte stands for a class that its low half byte admits.
ZORVCRT_AVX2 Sextets decoded(__m256i characters) {
  const __m256i half = _mm256_set1_epi8(0x0F);
  const __m256i high = _mm256_and_si256(_mm256_srli_epi16(characters, 4), half);
  const __m256i low = _mm256_and_si256(characters, half);
  // classes: 1 for 2x, 2 for 3x, 4 for 4x and 6x, 8 for 5x and 7x, 16 for all others
  const __m256i class_of_high = _mm256_setr_epi8(16, 16, 1, 2, 4, 8, 4, 8, 16, 16, 16, 16, 16, 16, 16, 16,  //
                                                 16, 16, 1, 2, 4, 8, 4, 8, 16, 16, 16, 16, 16, 16, 16, 16);
  // the classes in which a low half byte does not occur
  const __m256i barred_for_low =
      _mm256_setr_epi8(21, 17, 17, 17, 17, 17, 17, 17, 17, 17, 19, 26, 27, 27, 27, 26, 21, 17, 17, 17, 17, 17,
                       17, 17, 17, 17, 19, 26, 27, 27, 27, 26);
  // what to add by the high half byte; '/' takes the slot in front of that of '+'
  const __m256i offset_of_high =
      _mm256_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0,  //
                       0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0);
  const __m256i barred =
      _mm256_and_si256(_mm256_shuffle_epi8(class_of_high, high), _mm256_shuffle_epi8(barred_for_low, low));
  const __m256i valid = _mm256_cmpeq_epi8(barred, _mm256_setzero_si256());
  const __m256i slash = _mm256_cmpeq_epi8(characters, _mm256_set1_epi8('/'));
  const __m256i offsets = _mm256_shuffle_epi8(offset_of_high, _mm256_add_epi8(high, slash));
  return {_mm256_add_epi8(characters, offsets), ~static_cast<uint32_t>(_mm256_movemask_epi8(valid))};
}

using Order = std::array<uint8_t, 8>;

// For every set of valid places among eight, the places in order; what follows them means nothing.
constexpr std::array<Order, 256> make_orders() {
  std::array<Order, 256> orders{};
  for (std::size_t valid = 0; valid < orders.size(); ++valid) {
    std::size_t count = 0;
    for (uint8_t place = 0; place < 8; ++place) {
      if ((valid >> place & 1) != 0) orders[valid][count++] = place;
    }
  }
  return orders;
}

alignas(64) constexpr std::array<Order, 256> kOrders = make_orders();

ZORVCRT_AVX2 uint8_t *add_eight(__m128i sextets, uint32_t valid, uint8_t *to) {
  const void *order = kOrders[valid].data();
  const __m128i ordered = _mm_shuffle_epi8(sextets, _mm_loadl_epi64(static_cast<const __m128i *>(order)));
  _mm_storel_epi64(static_cast<__m128i *>(static_cast<void *>(to)), ordered);
  return to + std::popcount(valid);
}

// Strings together the valid ones of 32 sextets, whichever these are: eight at a time by a table.
ZORVCRT_AVX2 __attribute__((noinline)) uint8_t *add_scattered(__m256i sextets, uint32_t valid, uint8_t *to) {
  const __m128i low = _mm256_castsi256_si128(sextets);
  const __m128i high = _mm256_extracti128_si256(sextets, 1);
  to = add_eight(low, valid & 0xFF, to);
  to = add_eight(_mm_unpackhi_epi64(low, low), valid >> 8 & 0xFF, to);
  to = add_eight(high, valid >> 16 & 0xFF, to);
  return add_eight(_mm_unpackhi_epi64(high, high), valid >> 24, to);
}

// From place 32 - n on: n bytes that are zero, then only ones that are not.
alignas(64) constexpr auto kBehind = [] {
  std::array<uint8_t, 2 * kWideSextets> places{};
  for (std::size_t place = kWideSextets; place < places.size(); ++place) {
    places[place] = 0xFF;
  }
  return places;
}();

// Strings together 32 sextets of which at most one is invalid: what follows it moves down by one. A branch on
// whether there is one would be mispredicted about as often as there are line breaks, and putting the places
// together by a table takes half as long again.
ZORVCRT_AVX2 uint8_t *add_but_one(Sextets sextets, uint8_t *to) {
  constexpr uint64_t kNone = uint64_t{1} << kWideSextets;
  const int place = __builtin_ctzll(sextets.invalid | kNone);  // not std::countr_zero(), which would branch
  const __m256i high = _mm256_permute2x128_si256(sextets.values, sextets.values, 0x81);
  const __m256i moved = _mm256_alignr_epi8(high, sextets.values, 1);
  const __m256i behind = load_wide(kBehind.data() + kWideSextets - place);
  store_wide(to, _mm256_blendv_epi8(sextets.values, moved, behind));
  return to + (kWideSextets - 1) + (sextets.invalid == 0 ? 1 : 0);
}

// Sextets on their way into bytes. From the first skipped character on they no longer come in whole groups,
// so they are strung together here; packing a batch at a time keeps loads away from stores just made.
struct Batch {
  static constexpr std::size_t kFull = 1024;
  alignas(32) uint8_t sextets[kFull + kWideSextets];

  // Packs all but the last up to 31 sextets, which move to the front. Gives their end.
  ZORVCRT_AVX2 uint8_t *pack(const uint8_t *end, uint8_t *&out) {
    const uint8_t *from = sextets;
    for (; end - from >= static_cast<std::ptrdiff_t>(kWideSextets); from += kWideSextets, out += kWideBytes) {
      pack_sextets(out, load_wide(from));
    }
    const auto left = static_cast<std::size_t>(end - from);
    std::memmove(sextets, from, left);
    return sextets + left;
  }
};

bool has_block(Base64Rest &rest) {
  return rest.has<base64_length_wide>(kWideSextets);
}

// Adds blocks to a batch until it is full, or the text has no more, or a block has more than one invalid
// character, which is added by the table then. Gives the end of the batch.
ZORVCRT_AVX2 uint8_t *add_blocks(Base64Rest &rest, uint8_t *to, const uint8_t *full) {
  const std::size_t ahead = rest.ahead();
  while (rest.extent.known >= kWideSextets && to < full) {
    const Sextets sextets = decoded(load_wide(rest.text));
    __builtin_prefetch(rest.text + ahead);
    rest.take(kWideSextets);
    if ((sextets.invalid & (sextets.invalid - 1)) != 0) [[unlikely]] {
      return add_scattered(sextets.values, ~sextets.invalid, to);
    }
    to = add_but_one(sextets, to);
  }
  return to;
}

// Decodes whole blocks as long as every character is valid. Gives the number of characters. In front of more
// text there is room for a store of 32 bytes; storing 24 alone takes a tenth longer.
ZORVCRT_AVX2 std::size_t decode_clean(const char *text, std::size_t n, std::size_t ahead, uint8_t *out) {
  constexpr std::size_t kWithRoom = kWideSextets + 12;  // 9 bytes
  std::size_t done = 0;
  for (; n - done >= kWideSextets; done += kWideSextets, out += kWideBytes) {
    const Sextets sextets = decoded(load_wide(text + done));
    __builtin_prefetch(text + done + ahead);
    if (sextets.invalid != 0) break;
    if (n - done >= kWithRoom) {
      pack_sextets_loosely(out, sextets.values);
    } else {
      pack_sextets(out, sextets.values);
    }
  }
  return done;
}

}  // namespace

ZORVCRT_AVX2 std::size_t base64_encode_wide(const uint8_t *data, std::size_t n, char *out) {
  const std::size_t grouped = n / 3 * 3;
  if (grouped < kWideBytes) return base64_encode_plain(data, n, out);
  char *to = out;
  const uint8_t *from = data;
  for (const uint8_t *const end = data + grouped; end - from >= static_cast<std::ptrdiff_t>(2 * kWideBytes);
       from += 2 * kWideBytes, to += 2 * kWideSextets) {
    store_wide(to, characters_of(sextets_of(from)));
    store_wide(to + kWideSextets, characters_of(sextets_of(from + kWideBytes)));
  }
  if (data + grouped - from >= static_cast<std::ptrdiff_t>(kWideBytes)) {
    store_wide(to, characters_of(sextets_of(from)));
  }
  // the last whole groups once more together with some in front of them, rather than one by one
  store_wide(out + (grouped - kWideBytes) / 3 * 4, characters_of(sextets_of(data + grouped - kWideBytes)));
  const std::size_t count = grouped / 3 * 4;
  return count + base64_encode_plain(data + grouped, n - grouped, out + count);
}

ZORVCRT_AVX2 std::size_t base64_decode_wide(const char *text, Base64Extent extent, uint8_t *out) {
  const uint8_t *const start = out;
  Base64Rest rest{text, extent};
  do {
    const std::size_t done = decode_clean(rest.text, rest.extent.known, rest.ahead(), out);
    out += done / 4 * 3;
    rest.take(done);
  } while (rest.extent.known < kWideSextets && has_block(rest));
  Batch batch;
  uint8_t *end = batch.sextets;
  while (has_block(rest)) {
    end = add_blocks(rest, end, batch.sextets + Batch::kFull);
    if (end >= batch.sextets + Batch::kFull) end = batch.pack(end, out);
  }
  end = batch.pack(end, out);
  SextetPacker packer(out);
  for (const uint8_t *sextet = batch.sextets; sextet != end; ++sextet) {
    // add_valid() has stored it, which the analyzer does not see
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
    packer.put(*sextet);
  }
  base64_pack(packer, rest.text, rest.extent.known);
  return static_cast<std::size_t>(packer.finish() - start);
}

ZORVCRT_AVX2 std::size_t base64_length_wide(const char *text, std::size_t limit) {
  return limit == 0 ? 0 : std::min(limit, length_within(text, limit, kBase64Padding));
}

}  // namespace zorvcrt
