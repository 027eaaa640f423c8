// The Base64 loops on AVX-512 registers: 48 bytes or 64 characters a step, half to two thirds of the time of
// the AVX2 ones. Masked loads and stores take what is no whole step, so that no byte is handled alone.
#if defined(__GNUC__) && !defined(__clang__)  // which takes its own header's undefined registers for ours
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#endif
#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>

#include "Base64_kernels.hpp"

#define ZORVCRT_AVX512 __attribute__((target("avx512f,avx512bw")))

namespace zorvcrt {

namespace {

constexpr std::size_t kStepBytes = 48;
constexpr std::size_t kStepSextets = 64;
static_assert(kStepSextets == sizeof(__m512i));

// A load of its own: the compiler would have each operation load its operand again, across two cache lines.
ZORVCRT_AVX512 __m512i load(const void *from) {
  __m512i loaded = _mm512_loadu_si512(from);
  __asm__("" : "+v"(loaded));
  return loaded;
}

ZORVCRT_AVX512 void store(void *to, __m512i value) {
  _mm512_storeu_si512(to, value);
}

// An address of which nothing is known: gcc 12 takes one on the stack for aligned to 64 bytes, which it is
// not on the stack that the address sanitizer provides.
template <class T>
T *unknown(T *address) {
  __asm__("" : "+r"(address));
  return address;
}

/// The first bytes of a register, from none to all.
__mmask64 first(std::size_t count) {
  return count == 0 ? 0 : ~uint64_t{0} >> (kStepSextets - count);
}

// 16 bytes for each of the four quarters of a register, within which shuffles work. They are laid out as a
// whole, or else the compiler would put them together again in every step.
struct Quarters {
  alignas(64) std::array<int8_t, 64> bytes;

  using Quarter = std::array<int8_t, 16>;
  constexpr explicit Quarters(const Quarter &quarter) : bytes{} {
    for (std::size_t place = 0; place < bytes.size(); ++place) {
      bytes[place] = quarter[place % quarter.size()];
    }
  }
  [[nodiscard]] ZORVCRT_AVX512 __m512i get() const { return _mm512_load_si512(bytes.data()); }
};

// The sextets of the first 48 bytes.
ZORVCRT_AVX512 __m512i sextets_of(__m512i bytes) {
  // 12 bytes for each quarter, in which every group a b c becomes the 16-bit numbers ab and bc
  static constexpr Quarters kPairs({1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10});
  const __m512i spread = _mm512_setr_epi32(0, 1, 2, 2, 3, 4, 5, 5, 6, 7, 8, 8, 9, 10, 11, 11);
  const __m512i pairs = _mm512_shuffle_epi8(_mm512_permutexvar_epi32(spread, bytes), kPairs.get());
  // first and third sextet: down to the low bytes; second and fourth: up to the high ones
  const __m512i odd = _mm512_srlv_epi16(pairs, _mm512_set1_epi32(6 << 16 | 10));
  const __m512i even = _mm512_sllv_epi16(pairs, _mm512_set1_epi32(8 << 16 | 4));
  // Where the mask is set, a bit is taken from the odd ones. The two bits above a sextet come from where they
  // are zero: the odd one, but for the third sextet the even one.
  constexpr int kSelect = 0xCA;
  const __m512i from_odd = _mm512_set1_epi32(static_cast<int>(0xC03FC0FF));
  return _mm512_ternarylogic_epi32(from_odd, odd, even, kSelect);
}

ZORVCRT_AVX512 __m512i characters_of(__m512i sextets) {
  // What to add to sextets from 26 on, by the low half byte of the larger of the sextet and 51: 3 for a..z, 4
  // to 13 for the digits, 14 and 15 for the last two.
  static constexpr Quarters kOffsets({0, 0, 0, 71, -4, -4, -4, -4, -4, -4, -4, -4, -4, -4, -19, -16});
  const __mmask64 beyond_capitals = _mm512_cmpgt_epi8_mask(sextets, _mm512_set1_epi8(25));
  const __m512i slots = _mm512_max_epu8(sextets, _mm512_set1_epi8(51));
  const __m512i offsets =
      _mm512_mask_shuffle_epi8(_mm512_set1_epi8('A'), beyond_capitals, kOffsets.get(), slots);
  return _mm512_add_epi8(sextets, offsets);
}

// A character's slot in a table: its high half byte plus what its low half byte adds, which parts characters
// that share the high one. The mean of two bytes does the addition and the last place of the shift: 2 n - 1
// adds n, and below 8 zero adds nothing. Bits that the shift brings in from the next character do not count.
ZORVCRT_AVX512 __m512i slots_of(__m512i characters, const Quarters &additions) {
  return _mm512_avg_epu8(_mm512_shuffle_epi8(additions.get(), characters), _mm512_srli_epi32(characters, 3));
}

// A bit for every character outside the alphabet. Those of the alphabet that share a slot are larger than the
// others that do: with the smallest one subtracted, the others are negative. Characters beyond ASCII are
// negative to begin with.
ZORVCRT_AVX512 uint64_t invalid_in(__m512i characters) {
  static constexpr Quarters kAdditions({0, 0, 0, 0, 0, 0, 0, 0, 7, 7, 5, 9, 13, 13, 13, 9});
  constexpr int8_t kNone = -128;
  static constexpr Quarters kSmallest(
      {kNone, kNone, kNone, -'0', -'A', -'P', -'a', -'+', -'H', -'K', -'h', -'L', kNone, -'l', kNone, kNone});
  const __m512i smallest = _mm512_shuffle_epi8(kSmallest.get(), slots_of(characters, kAdditions));
  return _mm512_movepi8_mask(_mm512_adds_epi8(smallest, characters));
}

// The sextets of characters of the alphabet; those of others mean nothing.
ZORVCRT_AVX512 __m512i values_of(__m512i characters) {
  // one more for all, and six more for the low half byte of '/', to tell it from '+'
  static constexpr Quarters kAdditions({1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 13});
  static constexpr Quarters kOffsets({0, 0, 0, 19, 4, -65, -65, -71, -71, 16, 0, -65, 0, -71, 0, 0});
  return _mm512_add_epi8(_mm512_shuffle_epi8(kOffsets.get(), slots_of(characters, kAdditions)), characters);
}

// 64 sextets as 48 bytes, followed by 16 that mean nothing.
ZORVCRT_AVX512 __m512i bytes_of(__m512i sextets) {
  const __m512i pairs = _mm512_maddubs_epi16(sextets, _mm512_set1_epi32(0x01400140));
  const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
  static constexpr Quarters kOrder({2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1});
  const __m512i together = _mm512_setr_epi32(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 15, 15, 15, 15);
  return _mm512_permutexvar_epi32(together, _mm512_shuffle_epi8(groups, kOrder.get()));
}

ZORVCRT_AVX512 void pack(uint8_t *out, __m512i sextets) {
  constexpr __mmask16 kThreeQuarters = 0x0FFF;
  _mm512_mask_storeu_epi32(out, kThreeQuarters, bytes_of(sextets));
}

bool has_step(Base64Rest &rest) {
  return rest.has<base64_length_widest>(kStepSextets);
}

// Decodes whole steps as long as every character is valid. Gives the number of characters.
ZORVCRT_AVX512 std::size_t decode_clean(const char *text, std::size_t n, std::size_t ahead, uint8_t *out) {
  std::size_t done = 0;
  for (; n - done >= kStepSextets; done += kStepSextets, out += kStepBytes) {
    const __m512i characters = load(text + done);
    __builtin_prefetch(text + done + ahead);
    if (invalid_in(characters) != 0) break;
    pack(out, values_of(characters));
  }
  return done;
}

// The lowest place of a mask and all above it; of an empty one none.
uint64_t from_lowest(uint64_t mask) {
  return mask | (0 - mask);
}

// Strings together the sextets of at most 64 characters: those behind an invalid one move down by one, which
// is to load them from one further on. As a rule at most one is invalid; a branch on whether there is one
// would be mispredicted about as often as there are line breaks.
ZORVCRT_AVX512 inline uint8_t *add_step(const char *text, std::size_t n, uint64_t invalid, uint8_t *to) {
  __m512i characters = _mm512_maskz_loadu_epi8(first(n), text);
  characters = _mm512_mask_loadu_epi8(characters, from_lowest(invalid) & first(n) >> 1, text + 1);
  uint64_t others = invalid & (invalid - 1);
  if (others == 0) [[likely]] {
    store(to, values_of(characters));
    return to + n - (invalid == 0 ? 0 : 1);
  }
  std::size_t skipped = 1;
  for (; others != 0; others &= others - 1) {
    const uint64_t behind = from_lowest(others) >> skipped & first(n) >> skipped >> 1;
    ++skipped;
    characters = _mm512_mask_loadu_epi8(characters, behind, text + skipped);
  }
  store(to, values_of(characters));
  return to + n - skipped;
}

constexpr std::size_t kBatchSteps = 32;

// What to load for each step of a batch in which characters are skipped, worked out for eight steps together.
// With up to two in a step it takes no branch: as many branches as there are steps with two of them would be
// mispredicted, for an eighth of the time at one invalid character in a hundred.
struct Skips {
  static constexpr std::size_t kTogether = sizeof(__m512i) / sizeof(uint64_t);
  using Masks = std::array<uint64_t, kBatchSteps>;

  Masks invalid;
  Masks valid;
  Masks behind_first;   // from the first invalid one on: to be loaded from one further on
  Masks behind_second;  // from the second one on: from two further on

  // Gives a bit for every step that has more than two.
  ZORVCRT_AVX512 uint32_t work_out(std::size_t steps) {
    const __m512i all_bits = _mm512_set1_epi64(-1);
    uint32_t more_than_two = 0;
    for (std::size_t step = 0; step < steps; step += kTogether) {
      const __m512i all = load(&invalid[step]);
      const __m512i others = _mm512_and_si512(all, _mm512_add_epi64(all, all_bits));
      const __mmask8 more = _mm512_test_epi64_mask(others, _mm512_add_epi64(others, all_bits));
      store(&valid[step], _mm512_xor_si512(all, all_bits));
      store(&behind_first[step], from_lowest_but_last(all));
      store(&behind_second[step], _mm512_srli_epi64(from_lowest_but_last(others), 1));
      more_than_two |= uint32_t{more} << step;
    }
    return more_than_two;
  }

  // The lowest places of eight masks and all above them, but not the last place of all.
  ZORVCRT_AVX512 static __m512i from_lowest_but_last(__m512i masks) {
    constexpr int kEitherAndThird = 0xA8;
    const __m512i negated = _mm512_sub_epi64(_mm512_setzero_si512(), masks);
    return _mm512_ternarylogic_epi64(masks, negated, _mm512_set1_epi64(INT64_MAX), kEitherAndThird);
  }
};

// Sextets on their way into bytes. From the first skipped character on they no longer come in whole groups,
// so they are strung together here; packing a batch at a time keeps loads away from stores just made.
struct Batch {
  uint8_t sextets[(kBatchSteps + 2) * kStepSextets];  // what was left, the steps, and a store too wide

  uint8_t *start() { return unknown(&sextets[0]); }

  // Adds so many steps. Where characters are skipped is found out in front for all of them: what hangs on it
  // would else wait for it, which takes a third longer.
  ZORVCRT_AVX512 static uint8_t *add_steps(const char *text, std::size_t steps, std::size_t ahead,
                                           uint8_t *to) {
    Skips skips;
    for (std::size_t step = 0; step < steps; ++step) {
      skips.invalid[step] = invalid_in(load(text + step * kStepSextets));
      __builtin_prefetch(text + step * kStepSextets + ahead);
    }
    for (std::size_t step = steps; step % Skips::kTogether != 0; ++step) {
      skips.invalid[step] = 0;
    }
    const uint32_t more_than_two = unknown(&skips)->work_out(steps);
    for (std::size_t step = 0; step < steps; ++step, text += kStepSextets) {
      if ((more_than_two >> step & 1) != 0) [[unlikely]] {
        to = add_step(text, kStepSextets, skips.invalid[step], to);
        continue;
      }
      __m512i characters = _mm512_loadu_si512(text);
      characters = _mm512_mask_loadu_epi8(characters, skips.behind_first[step], text + 1);
      characters = _mm512_mask_loadu_epi8(characters, skips.behind_second[step], text + 2);
      store(to, values_of(characters));
      to += __builtin_popcountll(skips.valid[step]);
    }
    return to;
  }

  // Packs all but the last up to 63 sextets, which move to the front. Gives their end.
  ZORVCRT_AVX512 uint8_t *pack_steps(const uint8_t *end, uint8_t *&out) {
    uint8_t *const begin = start();
    const uint8_t *from = begin;
    for (auto steps = static_cast<std::size_t>(end - from) / kStepSextets; steps != 0; --steps) {
      pack(out, load(from));
      from += kStepSextets;
      out += kStepBytes;
    }
    if (from != begin) store(begin, load(from));
    return begin + (end - from);
  }
};

// One bit for each byte of an aligned block that is zero or padding. The block may begin in front of a text
// and end behind it: such a block lies in one page, so no page is touched that the text does not reach.
ZORVCRT_AVX512 __attribute__((no_sanitize("address", "thread"))) uint64_t ends_in(uintptr_t block) {
  // NOLINTNEXTLINE(performance-no-int-to-ptr): no pointer of the text leads in front of it
  const __m512i bytes = *reinterpret_cast<const __m512i *>(block);
  return _mm512_testn_epi8_mask(bytes, bytes) |
         _mm512_cmpeq_epi8_mask(bytes, _mm512_set1_epi8(kBase64Padding));
}

}  // namespace

ZORVCRT_AVX512 std::size_t base64_encode_widest(const uint8_t *data, std::size_t n, char *out) {
  char *to = out;
  for (; n >= kStepSextets;
       n -= kStepBytes, data += kStepBytes, to += kStepSextets) {  // a load reads 64 bytes
    store(to, characters_of(sextets_of(load(data))));
  }
  while (n > 0) {
    const std::size_t bytes = std::min(n, kStepBytes);
    const __m512i characters = characters_of(sextets_of(_mm512_maskz_loadu_epi8(first(bytes), data)));
    const std::size_t sextets = (bytes * 4 + 2) / 3;
    const std::size_t count = (bytes + 2) / 3 * 4;
    const __m512i padding = _mm512_set1_epi8(kBase64Padding);
    _mm512_mask_storeu_epi8(to, first(count), _mm512_mask_mov_epi8(padding, first(sextets), characters));
    to += count;
    data += bytes;
    n -= bytes;
  }
  return static_cast<std::size_t>(to - out);
}

ZORVCRT_AVX512 std::size_t base64_decode_widest(const char *text, Base64Extent extent, uint8_t *out) {
  if (extent.known + extent.unknown == 0) return 0;  // there may be no text at all
  const uint8_t *const start = out;
  Base64Rest rest{text, extent};
  do {
    const std::size_t done = decode_clean(rest.text, rest.extent.known, rest.ahead(), out);
    out += done / 4 * 3;
    rest.take(done);
  } while (rest.extent.known < kStepSextets && has_step(rest));
  Batch batch;
  uint8_t *end = batch.start();
  while (has_step(rest)) {
    const std::size_t steps = std::min(kBatchSteps, rest.extent.known / kStepSextets);
    const std::size_t size = steps * kStepSextets;
    end = batch.pack_steps(Batch::add_steps(rest.text, steps, rest.ahead(), end), out);
    rest.take(size);
  }
  const std::size_t n = rest.extent.known;
  const uint64_t invalid = invalid_in(_mm512_maskz_loadu_epi8(first(n), rest.text)) & first(n);
  end = batch.pack_steps(add_step(rest.text, n, invalid, end), out);
  const auto left = static_cast<std::size_t>(end - batch.start());
  const std::size_t bytes = left * 3 / 4;
  const __m512i sextets = _mm512_maskz_mov_epi8(first(left), load(batch.start()));
  _mm512_mask_storeu_epi8(out, first(bytes), bytes_of(sextets));
  return static_cast<std::size_t>(out + bytes - start);
}

ZORVCRT_AVX512 std::size_t base64_length_widest(const char *text, std::size_t limit) {
  if (limit == 0) return 0;
  const auto start = reinterpret_cast<uintptr_t>(text);
  // Compared with the blocks as it is: counting the characters in each step takes a fifth longer.
  const uintptr_t stop = start + std::min(limit, UINTPTR_MAX - kStepSextets - start);
  uintptr_t block = start / kStepSextets * kStepSextets;
  uint64_t ends = ends_in(block) >> (start - block);
  if (ends != 0) return std::min(limit, static_cast<std::size_t>(std::countr_zero(ends)));
  do {
    block += kStepSextets;
    if (block >= stop) return limit;
    ends = ends_in(block);
  } while (ends == 0);
  return std::min(limit, block - start + static_cast<std::size_t>(std::countr_zero(ends)));
}

}  // namespace zorvcrt
