#pragma once

// Plain loops over rows that the compiler turns into vectors, once for AVX2 and once for any machine. The thread
// sanitizer is not up yet when the choice between the copies is made, so there it gets one copy only.
#if defined(__x86_64__) && !defined(__SANITIZE_THREAD__)
#define KELDRA_ROW_KERNEL __attribute__((target_clones("avx2", "default"), optimize("O3")))
#else
#define KELDRA_ROW_KERNEL __attribute__((optimize("O3")))
#endif
