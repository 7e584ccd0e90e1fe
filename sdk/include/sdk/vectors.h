// SPDX-License-Identifier: MIT
// Loops that run with the widest vector registers of the processor at hand. Results are the same
// with all of them.
#pragma once

enum class zVectors { baseline, wide };

#if defined(__x86_64__) && defined(__GNUC__)

inline zVectors zVectors_Widest() noexcept {
  return __builtin_cpu_supports("avx2") != 0 ? zVectors::wide : zVectors::baseline;
}

template <class Loop>
[[gnu::target("avx2"), gnu::flatten]] void zVectors_RunWide(const Loop& loop) {
  loop();
}

#else

inline zVectors zVectors_Widest() noexcept { return zVectors::baseline; }

template <class Loop>
void zVectors_RunWide(const Loop& loop) {
  loop();
}

#endif

// Calls loop(), which is compiled once for every processor of the platform and, on x86-64, once for
// those with 256-bit registers. `vectors` must not be more than zVectors_Widest().
template <class Loop>
void zVectors_Run(zVectors vectors, const Loop& loop) {
  vectors == zVectors::wide ? zVectors_RunWide(loop) : loop();
}
