#pragma once

/// Kernels are written once, with vectors of four doubles, and compiled twice: for any processor, and for those with AVX2.
/// Both give the same bits, as neither contracts or reorders. A kernel chooses at each call:
///
///     TRACERY_AVX2 double sumAvx2(const double* x) { return sumOf(x); } // sumOf is TRACERY_INLINE
///     double sum(const double* x) { return useAvx2() ? sumAvx2(x) : sumOf(x); }
///
/// Whatever they call often has to be inlined too: a call from AVX2 code of code for any processor can take 100 ns.
///
/// A build with TRACERY_PLAIN_KERNELS has the literal loops alone, to measure what kernels are worth.

#define TRACERY_INLINE [[gnu::always_inline]] inline
#if defined(__x86_64__)
#define TRACERY_AVX2 [[gnu::target("avx2")]]
#else
#define TRACERY_AVX2
#endif

namespace tracery {

#ifdef TRACERY_PLAIN_KERNELS
inline constexpr bool kPlainKernels = true;
#else
inline constexpr bool kPlainKernels = false;
#endif

extern const bool kHasAvx2;

/// Whether the processor has AVX2, and the environment variable TRACERY_KERNELS is not "baseline" (see kernelsInUse).
inline bool useAvx2() { return kHasAvx2; }

} // namespace tracery
