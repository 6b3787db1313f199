#pragma once

// The whole primitive layer. What holds for every primitive:
//
// - Names: `prim`, operation, `_`, element types, `_`, layout (C1R, C3R: interleaved channels over
//   a rectangle; P3R: planes; I: in place; M: under an 8-bit mask); `primv` marks one-dimensional
//   forms.
// - Steps are in bytes, signed and never derived from the width; width and height count pixels. The
//   pointer addresses the first pixel of the region, so a subimage is pointer arithmetic.
// - Checks come before any work, in the order null pointer (-8), size (-6), step (-14), the rest; a
//   refusal writes nothing.
// - All are reentrant: no state outside the arguments. Every body gives the same bits, with one
//   exception: primSum_32f_C1R and primMean_32f_C1R add in one order in the generic body and in
//   another in all vector bodies; see prim/stats.h.
// - Images may start at any address that suits the element; 16-bit images may start at odd ones.

// IWYU pragma: begin_exports
#include "prim/alloc.h"
#include "prim/arith.h"
#include "prim/arith_int.h"
#include "prim/channel.h"
#include "prim/colour.h"
#include "prim/convert.h"
#include "prim/cpu.h"
#include "prim/deconvolution.h"
#include "prim/filter.h"
#include "prim/float_mode.h"
#include "prim/geometry.h"
#include "prim/grid.h"
#include "prim/jpeg.h"
#include "prim/lut.h"
#include "prim/match.h"
#include "prim/memory.h"
#include "prim/pyramid.h"
#include "prim/rank.h"
#include "prim/search.h"
#include "prim/stack.h"
#include "prim/stats.h"
#include "prim/threshold.h"
#include "prim/tone.h"
#include "prim/types.h"
#include "prim/vector.h"
#include "prim/window.h"
// IWYU pragma: end_exports
