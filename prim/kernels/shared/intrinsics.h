#pragma once

// The processor's vector instructions, for the few kernels where the compiler falls behind.

#if defined(__SSSE3__)
#pragma GCC diagnostic push
// g++ 12 takes the deliberately undefined operand of its own AVX-512 intrinsics for a mistake
// (GCC bug 105593).
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop
#else
#include <emmintrin.h>
#endif
