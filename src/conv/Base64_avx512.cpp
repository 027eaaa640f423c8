// The Base64 loops on AVX-512 registers: 48 bytes or 64 characters a step, half to two thirds of the time of
// the AVX2 ones. Masked loads and stores take what is no whole step, so that no byte is handled alone.
#include <algorithm>
#include <array>
#include <bit>

#include "Base64_kernels.hpp"
#include "sextets_avx512.hpp"

namespace zorvcrt {

namespace {

bool has_step(Base64Rest &rest) {
  return rest.has<base64_length_widest>(kStepSextets);
}

// Decodes whole steps as long as every character is valid. Gives the number of characters.
ZORVCRT_AVX512 std::size_t decode_clean(const char *text, std::size_t n, std::size_t ahead, uint8_t *out) {
  std::size_t done = 0;
  for (; n - done >= kStepSextets; done += kStepSextets, out += kStepBytes) {
    const __m512i characters = load_widest(text + done);
    __builtin_prefetch(text + done + ahead);
    if (invalid_in(characters) != 0) break;
    pack_sextets(out, values_of(characters));
  }
  return done;
}

std::ptrdiff_t count_of(uint64_t mask) {
  return __builtin_popcountll(mask);
}

// The lowest place of a mask and all above it; of an empty one none.
uint64_t from_lowest(uint64_t mask) {
  return mask | (0 - mask);
}

// Strings together the sextets of at most 64 characters: those behind an invalid one move down by one, which
// is to load them from one further on. As a rule at most one is invalid; a branch on whether there is one
// would be mispredicted about as often as there are line breaks.
ZORVCRT_AVX512 inline uint8_t *add_step(const char *text, std::size_t n, uint64_t invalid, uint8_t *to) {
  __m512i characters = _mm512_maskz_loadu_epi8(first_places(n), text);
  characters = _mm512_mask_loadu_epi8(characters, from_lowest(invalid) & first_places(n) >> 1, text + 1);
  uint64_t others = invalid & (invalid - 1);
  if (others == 0) [[likely]] {
    store_widest(to, values_of(characters));
    return to + n - (invalid == 0 ? 0 : 1);
  }
  std::size_t skipped = 1;
  for (; others != 0; others &= others - 1) {
    const uint64_t behind = from_lowest(others) >> skipped & first_places(n) >> skipped >> 1;
    ++skipped;
    characters = _mm512_mask_loadu_epi8(characters, behind, text + skipped);
  }
  store_widest(to, values_of(characters));
  return to + n - skipped;
}

constexpr std::size_t kBatchSteps = 32;

// What to load for each step of a batch, worked out for eight steps together. With up to two skipped
// characters in a step it takes no branch; at one in a hundred, an eighth of the branches on a second one is
// mispredicted, which takes as much of the time.
struct Skips {
  using Masks = std::array<uint64_t, kBatchSteps>;

  Masks invalid;
  Masks valid;
  Masks behind_first;      // from the first invalid one on: to be loaded from one further on
  Masks behind_second;     // from the second one on: from two further on
  uint32_t more_than_two;  // a bit for every step that has more of them
  bool has_second;

  ZORVCRT_AVX512 void work_out() {
    constexpr std::size_t kTogether = sizeof(__m512i) / sizeof(uint64_t);
    const __m512i all_bits = _mm512_set1_epi64(-1);
    __m512i seconds = _mm512_setzero_si512();
    more_than_two = 0;
    for (std::size_t step = 0; step < kBatchSteps; step += kTogether) {
      const __m512i all = load_widest(&invalid[step]);
      const __m512i others = _mm512_and_si512(all, _mm512_add_epi64(all, all_bits));
      const __mmask8 more = _mm512_test_epi64_mask(others, _mm512_add_epi64(others, all_bits));
      store_widest(&valid[step], _mm512_xor_si512(all, all_bits));
      store_widest(&behind_first[step], from_lowest_but_last(all));
      store_widest(&behind_second[step], _mm512_srli_epi64(from_lowest_but_last(others), 1));
      more_than_two |= uint32_t{more} << step;
      seconds = _mm512_or_si512(seconds, others);
    }
    has_second = _mm512_test_epi64_mask(seconds, seconds) != 0;
  }

  // The lowest places of eight masks and all above them, but not the last place of all.
  ZORVCRT_AVX512 static __m512i from_lowest_but_last(__m512i masks) {
    constexpr int kEitherAndThird = 0xA8;
    const __m512i negated = _mm512_sub_epi64(_mm512_setzero_si512(), masks);
    return _mm512_ternarylogic_epi64(masks, negated, _mm512_set1_epi64(INT64_MAX), kEitherAndThird);
  }
};

// Adds the steps of a whole batch of which none has a second invalid character, as where there are line
// breaks.
ZORVCRT_AVX512 uint8_t *add_batch_but_firsts(const char *text, const Skips &skips, uint8_t *to) {
  for (std::size_t step = 0; step < kBatchSteps; ++step, text += kStepSextets) {
    const __m512i characters = _mm512_loadu_si512(text);
    store_widest(to, values_of(_mm512_mask_loadu_epi8(characters, skips.behind_first[step], text + 1)));
    to += count_of(skips.valid[step]);
  }
  return to;
}

// Adds the steps of a whole batch. Kept out of the function for all texts, of which short ones would else
// take a twentieth longer.
ZORVCRT_AVX512 __attribute__((noinline)) uint8_t *add_batch(const char *text, Skips &skips, uint8_t *to) {
  skips.work_out();
  if (!skips.has_second) return add_batch_but_firsts(text, skips, to);
  const uint32_t more_than_two = skips.more_than_two;
  for (std::size_t step = 0; step < kBatchSteps; ++step, text += kStepSextets) {
    if ((more_than_two >> step & 1) != 0) [[unlikely]] {
      to = add_step(text, kStepSextets, skips.invalid[step], to);
      continue;
    }
    __m512i characters = _mm512_loadu_si512(text);
    characters = _mm512_mask_loadu_epi8(characters, skips.behind_first[step], text + 1);
    characters = _mm512_mask_loadu_epi8(characters, skips.behind_second[step], text + 2);
    store_widest(to, values_of(characters));
    to += count_of(skips.valid[step]);
  }
  return to;
}

// Sextets on their way into bytes. From the first skipped character on they no longer come in whole groups,
// so they are strung together here; packing a batch at a time keeps loads away from stores just made.
struct Batch {
  uint8_t sextets[(kBatchSteps + 2) * kStepSextets];  // what was left, the steps, and a store too wide

  uint8_t *start() { return unknown_address(&sextets[0]); }

  // Adds so many steps. Where characters are skipped is found out in front for all of them: what hangs on it
  // would else wait for it, which takes a third longer.
  ZORVCRT_AVX512 static uint8_t *add_steps(const char *text, std::size_t steps, std::size_t ahead,
                                           uint8_t *to) {
    Skips skips;
    for (std::size_t step = 0; step < steps; ++step) {
      skips.invalid[step] = invalid_in(load_widest(text + step * kStepSextets));
      __builtin_prefetch(text + step * kStepSextets + ahead);
    }
    if (steps == kBatchSteps) return add_batch(text, *unknown_address(&skips), to);
    for (std::size_t step = 0; step < steps; ++step) {
      to = add_step(text + step * kStepSextets, kStepSextets, skips.invalid[step], to);
    }
    return to;
  }

  // Packs all but the last up to 63 sextets, which move to the front. Gives their end.
  ZORVCRT_AVX512 uint8_t *pack_steps(const uint8_t *end, uint8_t *&out) {
    uint8_t *const begin = start();
    const uint8_t *from = begin;
    for (auto steps = static_cast<std::size_t>(end - from) / kStepSextets; steps != 0; --steps) {
      pack_sextets(out, load_widest(from));
      from += kStepSextets;
      out += kStepBytes;
    }
    if (from != begin) store_widest(begin, load_widest(from));
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
    store_widest(to, characters_of(sextets_of(load_widest(data))));
  }
  while (n > 0) {
    const std::size_t bytes = std::min(n, kStepBytes);
    const __m512i characters = characters_of(sextets_of(_mm512_maskz_loadu_epi8(first_places(bytes), data)));
    const std::size_t sextets = (bytes * 4 + 2) / 3;
    const std::size_t count = (bytes + 2) / 3 * 4;
    const __m512i padding = _mm512_set1_epi8(kBase64Padding);
    _mm512_mask_storeu_epi8(to, first_places(count),
                            _mm512_mask_mov_epi8(padding, first_places(sextets), characters));
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
  const uint64_t invalid = invalid_in(_mm512_maskz_loadu_epi8(first_places(n), rest.text)) & first_places(n);
  end = batch.pack_steps(add_step(rest.text, n, invalid, end), out);
  const auto left = static_cast<std::size_t>(end - batch.start());
  const std::size_t bytes = left * 3 / 4;
  const __m512i sextets = _mm512_maskz_mov_epi8(first_places(left), load_widest(batch.start()));
  _mm512_mask_storeu_epi8(out, first_places(bytes), bytes_of(sextets));
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
