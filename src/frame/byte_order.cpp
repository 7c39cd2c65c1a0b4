#include "frame/byte_order.h"

// Functions of their own machine, chosen when the program runs. On Windows the compilers do not
// align the stack for vectors of 32 bytes, which code that is not optimised keeps there.
#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>
#define VESKA_HAS_SSSE3
#ifndef _WIN32
#define VESKA_HAS_AVX2
#endif
#elif defined(__aarch64__) && defined(__ARM_NEON) && !defined(__ARM_BIG_ENDIAN)
#include <arm_neon.h>
#define VESKA_HAS_NEON
#endif

namespace VESKA {

// The longest lists of a file. On a big-endian machine nothing is converted.
static_assert(std::endian::native == std::endian::big ||
              (kIsShuffled<tag_VOBU_ENT> && kIsShuffled<tag_TM_ENT> && kIsShuffled<tag_AA_ENT>));

namespace {

#ifdef VESKA_HAS_AVX2
__attribute__((target("avx2"))) std::size_t CopyBy32(const Shuffle& shuffle, unsigned char* to,
                                                     const unsigned char* from, std::size_t size) {
  const auto order = _mm256_load_si256(reinterpret_cast<const __m256i*>(shuffle.bytes.data()));
  std::size_t done = 0;
  for (; size - done >= Shuffle::kVector; done += shuffle.step) {
    const auto bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(from + done));
    const auto converted = _mm256_shuffle_epi8(bytes, order);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to + done), converted);
  }
  return done;
}
#endif

#ifdef VESKA_HAS_SSSE3
__attribute__((target("ssse3"))) std::size_t CopyBy16(const Shuffle& shuffle, unsigned char* to,
                                                      const unsigned char* from, std::size_t size) {
  const auto order = _mm_load_si128(reinterpret_cast<const __m128i*>(shuffle.bytes.data()));
  std::size_t done = 0;
  for (; size - done >= Shuffle::kHalf; done += shuffle.half_step) {
    const auto bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + done));
    const auto converted = _mm_shuffle_epi8(bytes, order);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + done), converted);
  }
  return done;
}
#endif

#ifdef VESKA_HAS_NEON
std::size_t CopyBy16(const Shuffle& shuffle, unsigned char* to, const unsigned char* from,
                     std::size_t size) {
  const uint8x16_t order = vld1q_u8(shuffle.bytes.data());
  std::size_t done = 0;
  for (; size - done >= Shuffle::kHalf; done += shuffle.half_step) {
    vst1q_u8(to + done, vqtbl1q_u8(vld1q_u8(from + done), order));
  }
  return done;
}
#endif

}  // namespace

bool MachineHas(CopyForm form) {
  switch (form) {
#ifdef VESKA_HAS_AVX2
    case CopyForm::kShuffle32:
      return __builtin_cpu_supports("avx2") != 0;
#endif
#ifdef VESKA_HAS_SSSE3
    case CopyForm::kShuffle16:
      return __builtin_cpu_supports("ssse3") != 0;
#endif
#ifdef VESKA_HAS_NEON
    case CopyForm::kShuffle16:
      return true;
#endif
    default:
      return form == CopyForm::kPlain;
  }
}

std::size_t CopyShuffled(CopyForm form, [[maybe_unused]] const Shuffle& shuffle,
                         [[maybe_unused]] unsigned char* to,
                         [[maybe_unused]] const unsigned char* from,
                         [[maybe_unused]] std::size_t size) {
  switch (form) {
#ifdef VESKA_HAS_AVX2
    case CopyForm::kShuffle32:
      return CopyBy32(shuffle, to, from, size);
#endif
#if defined(VESKA_HAS_SSSE3) || defined(VESKA_HAS_NEON)
    case CopyForm::kShuffle16:
      return CopyBy16(shuffle, to, from, size);
#endif
    default:
      return 0;
  }
}

}  // namespace VESKA
