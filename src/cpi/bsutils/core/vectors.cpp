#include "core/vectors.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <type_traits>

#include "core/utf16.hpp"

// Vectors of 16 bytes, of 32 with AVX2, of 64 where the processor permutes the bytes of all of these. Those of 64
// without that, and those of unknown width, are not worth a way of their own.
#define HWY_WANT_AVX3_DL
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_AVX3 | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
// This file is compiled once for each kind of vector that the architecture has.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "core/vectors.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "core/base64loops.hpp"
#include "core/utf16loops.hpp"
#include "core/utf8loops.hpp"

namespace oxr::core::HWY_NAMESPACE {
namespace {
constexpr VectorLoops kLoops{
    encodeBase64,
    decodeBase64,
    {copyUtf16Blocks<utf16::Order::both>, copyUtf16Blocks<utf16::Order::input>, copyUtf16Blocks<utf16::Order::output>},
    decodeUtf8Blocks,
    encodeUtf8Blocks};
}  // namespace
}  // namespace oxr::core::HWY_NAMESPACE

#if HWY_ONCE
namespace oxr::core {
namespace {

[[maybe_unused]] bool allOf(std::initializer_list<int> supported) {
  return std::ranges::all_of(supported, [](int each) { return each != 0; });
}

// Highway could choose among its targets too, but for that its library is loaded, which takes 4 ms: it measures a
// timer.
Vectors widestVectorsFirst() noexcept {
  Vectors all;
#if HWY_ARCH_X86
#if HWY_TARGETS & HWY_AVX3_DL
  // unreached: a machine has them or has them not
  if (allOf({__builtin_cpu_supports("avx512f"), __builtin_cpu_supports("avx512bw"), __builtin_cpu_supports("avx512dq"),
             __builtin_cpu_supports("avx512vl"), __builtin_cpu_supports("avx512vbmi"),
             __builtin_cpu_supports("avx512vbmi2"), __builtin_cpu_supports("avx512bitalg"),
             __builtin_cpu_supports("avx512vpopcntdq"), __builtin_cpu_supports("vpclmulqdq"),
             __builtin_cpu_supports("bmi2"), __builtin_cpu_supports("fma")}))
    all.add(N_AVX3_DL::kLoops);
#endif
#if HWY_TARGETS & HWY_AVX2
  // unreached: a machine has them or has them not
  if (allOf({__builtin_cpu_supports("avx2"), __builtin_cpu_supports("bmi2"), __builtin_cpu_supports("fma")}))
    all.add(N_AVX2::kLoops);
#endif
#if HWY_TARGETS & HWY_SSE4
  // unreached: a machine has them or has them not
  if (allOf({__builtin_cpu_supports("sse4.2"), __builtin_cpu_supports("pclmul")})) all.add(N_SSE4::kLoops);
#endif
#if HWY_TARGETS & HWY_SSSE3
  // unreached: a machine has them or has them not
  if (__builtin_cpu_supports("ssse3")) all.add(N_SSSE3::kLoops);
#endif
#endif
  all.add(HWY_STATIC_DISPATCH(kLoops));
  return all;
}

}  // namespace

constinit Vectors vectors{{HWY_STATIC_DISPATCH(kLoops)}, 1, 0};

[[maybe_unused]] const bool kAreChosen = (vectors = widestVectorsFirst(), true);

}  // namespace oxr::core
#endif
