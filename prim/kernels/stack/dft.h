#pragma once

// Discrete Fourier transforms of a few numbers, unnormalised, with e^(-i...) forward: X[k] = sum
// over j of x[j] * e^(-2 pi i j k / n). A number is a vector, each lane a transform of its own. All
// of it is unrolled while it is compiled, so that the numbers stay in registers.
//
// Every length halves itself (Cooley and Tukey): with E and O the transforms of the numbers at even
// and odd places and w = e^(-2 pi i / n), X[k] = E[k] + w^k O[k] and X[k + n / 2] = E[k] - w^k
// O[k], down to 2, 3 or 1.

#include <utility>

#include "prim/kernels/shared/kernel.h"

// Instrumented by a sanitizer, the inlined whole would take minutes to compile.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define VX_INLINED
#else
#define VX_INLINED __attribute__((always_inline))
#endif
#define VX_STACK [[maybe_unused]] VX_INLINED inline

namespace vx::prim::VX_VARIANT {
namespace {

// f(0), f(1), ... f(n - 1), each with its argument as a type.
template <int n, class F>
VX_STACK void unrolled(F f) {
  [&]<int... i>(std::integer_sequence<int, i...>) VX_INLINED { (f.template operator()<i>(), ...); }
  (std::make_integer_sequence<int, n>());
}
#define VX_UNROLLED [&]<int k>() VX_INLINED

// cos(2 pi k / n) for the angles that occur: multiples of 22.5 and of 30 degrees up to 90.
constexpr float cosine(int k, int n) {
  switch (48 * k / n) {
    case 0:
      return 1.0f;
    case 3:
      return 0.92387953251128675613f;
    case 4:
      return 0.86602540378443864676f;
    case 6:
      return 0.70710678118654752440f;
    case 8:
      return 0.5f;
    case 9:
      return 0.38268343236508977173f;
    default:
      return 0.0f;
  }
}
constexpr float sine(int k, int n) { return cosine(n - 4 * k, 4 * n); }

// (re, im) * e^(-2 pi i k / n), k from 0 to below n / 2.
template <int n, int k, class V>
VX_STACK void turn(V& re, V& im) {
  const V x = re;
  const V y = im;
  if constexpr (k == 0) {
    return;
  } else if constexpr (4 * k == n) {
    re = y;
    im = -x;
  } else if constexpr (8 * k == n) {
    re = (x + y) * cosine(1, 8);
    im = (y - x) * cosine(1, 8);
  } else if constexpr (8 * k == 3 * n) {
    re = (y - x) * cosine(1, 8);
    im = -((x + y) * cosine(1, 8));
  } else if constexpr (4 * k < n) {
    re = x * cosine(k, n) + y * sine(k, n);
    im = y * cosine(k, n) - x * sine(k, n);
  } else {  // a right angle more
    re = y * cosine(4 * k - n, 4 * n) - x * sine(4 * k - n, 4 * n);
    im = -(x * cosine(4 * k - n, 4 * n) + y * sine(4 * k - n, 4 * n));
  }
}

// In place, in order. The transform back is the same with re and im exchanged.
template <int n, class V>
VX_STACK void dft(V* re, V* im) {
  if constexpr (n == 2) {
    const V x = re[0];
    const V y = im[0];
    re[0] = x + re[1];
    im[0] = y + im[1];
    re[1] = x - re[1];
    im[1] = y - im[1];
  } else if constexpr (n == 3) {
    const V sumRe = re[1] + re[2];
    const V sumIm = im[1] + im[2];
    const V sideRe = (im[1] - im[2]) * cosine(1, 12);
    const V sideIm = (re[2] - re[1]) * cosine(1, 12);
    const V middleRe = re[0] - sumRe * 0.5f;
    const V middleIm = im[0] - sumIm * 0.5f;
    re[0] = re[0] + sumRe;
    im[0] = im[0] + sumIm;
    re[1] = middleRe + sideRe;
    im[1] = middleIm + sideIm;
    re[2] = middleRe - sideRe;
    im[2] = middleIm - sideIm;
  } else if constexpr (n > 3) {
    constexpr int h = n / 2;
    V evenRe[h], evenIm[h], oddRe[h], oddIm[h];
    unrolled<h>(VX_UNROLLED {
      evenRe[k] = re[2 * k];
      evenIm[k] = im[2 * k];
      oddRe[k] = re[2 * k + 1];
      oddIm[k] = im[2 * k + 1];
    });
    dft<h>(evenRe, evenIm);
    dft<h>(oddRe, oddIm);
    unrolled<h>(VX_UNROLLED {
      turn<n, k>(oddRe[k], oddIm[k]);
      re[k] = evenRe[k] + oddRe[k];
      im[k] = evenIm[k] + oddIm[k];
      re[k + h] = evenRe[k] - oddRe[k];
      im[k + h] = evenIm[k] - oddIm[k];
    });
  }
}

// Of real numbers: X[0] to X[n / 2], since X[n - k] is the conjugate of X[k]. X[0] and, with n
// even, X[n / 2] are real: their im is not written.
template <int n, class V>
VX_STACK void realDft(const V* x, V* re, V* im) {
  if constexpr (n == 2) {
    re[0] = x[0] + x[1];
    re[1] = x[0] - x[1];
  } else if constexpr (n == 3) {
    const V sum = x[1] + x[2];
    re[0] = x[0] + sum;
    re[1] = x[0] - sum * 0.5f;
    im[1] = (x[2] - x[1]) * cosine(1, 12);
  } else {
    constexpr int h = n / 2;
    V even[h], odd[h], evenRe[h / 2 + 1], evenIm[h / 2 + 1], oddRe[h / 2 + 1], oddIm[h / 2 + 1];
    unrolled<h>(VX_UNROLLED {
      even[k] = x[2 * k];
      odd[k] = x[2 * k + 1];
    });
    realDft<h>(even, evenRe, evenIm);
    realDft<h>(odd, oddRe, oddIm);
    re[0] = evenRe[0] + oddRe[0];
    re[h] = evenRe[0] - oddRe[0];
    unrolled<(h - 1) / 2>([&]<int j>() VX_INLINED {
      constexpr int k = j + 1;
      turn<n, k>(oddRe[k], oddIm[k]);
      re[k] = evenRe[k] + oddRe[k];
      im[k] = evenIm[k] + oddIm[k];
      re[h - k] = evenRe[k] - oddRe[k];
      im[h - k] = oddIm[k] - evenIm[k];
    });
    if constexpr (n % 4 == 0) {  // turned by a right angle
      re[h / 2] = evenRe[h / 2];
      im[h / 2] = -oddRe[h / 2];
    }
  }
}

// Back to n times the numbers, the steps of realDft() in reverse.
template <int n, class V>
VX_STACK void realInverse(const V* re, const V* im, V* x) {
  if constexpr (n == 2) {
    x[0] = re[0] + re[1];
    x[1] = re[0] - re[1];
  } else if constexpr (n == 3) {
    const V middle = re[0] - re[1];
    const V side = im[1] * (2.0f * cosine(1, 12));
    x[0] = re[0] + (re[1] + re[1]);
    x[1] = middle - side;
    x[2] = middle + side;
  } else {
    constexpr int h = n / 2;
    V even[h], odd[h], evenRe[h / 2 + 1], evenIm[h / 2 + 1], oddRe[h / 2 + 1], oddIm[h / 2 + 1];
    evenRe[0] = re[0] + re[h];
    oddRe[0] = re[0] - re[h];
    unrolled<(h - 1) / 2>([&]<int j>() VX_INLINED {
      constexpr int k = j + 1;
      evenRe[k] = re[k] + re[h - k];
      evenIm[k] = im[k] - im[h - k];
      oddRe[k] = re[k] - re[h - k];
      oddIm[k] = im[k] + im[h - k];
      turn<n, k>(oddIm[k], oddRe[k]);  // the other way round
    });
    if constexpr (n % 4 == 0) {
      evenRe[h / 2] = re[h / 2] + re[h / 2];
      oddRe[h / 2] = -(im[h / 2] + im[h / 2]);
    }
    realInverse<h>(evenRe, evenIm, even);
    realInverse<h>(oddRe, oddIm, odd);
    unrolled<h>(VX_UNROLLED {
      x[2 * k] = even[k];
      x[2 * k + 1] = odd[k];
    });
  }
}

}  // namespace
}  // namespace vx::prim::VX_VARIANT
