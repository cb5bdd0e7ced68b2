// SPDX-License-Identifier: MIT
// Copyright (c) 2026 the Wren developers
//
// Which of Highway's targets the kernels are compiled for. A kernel's source includes this
// first, then hwy/foreach_target.h and hwy/highway.h as in Highway's manual; the compiler
// then reads the source once per target, each in a namespace of its own.
//
// Only Highway's headers are used: kernels are called through `WREN_KERNEL_TABLE`, never
// through HWY_EXPORT, so that the filter needs no symbol of libhwy.

#pragma once

#if defined(__aarch64__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
// NEON belongs to the architecture.
#define WREN_NEON_KERNELS 1
#define HWY_COMPILE_ONLY_STATIC
#elif defined(__x86_64__)
#define WREN_X86_KERNELS 1
#else
// Every other processor runs the scalar kernels. 32-bit ARM is one of them: its NEON flushes
// small numbers to zero, which changes pages.
#define HWY_COMPILE_ONLY_SCALAR
#endif

// Without these instructions a level is just "ssse3", "sse4.2" or "avx2": nothing else has to be
// tested at run time, and no compiler may fuse a multiplication and an addition.
#define HWY_DISABLE_PCLMUL_AES
#define HWY_DISABLE_BMI2_FMA
#define HWY_DISABLE_F16C

#include <hwy/detect_targets.h>

#ifdef WREN_NEON_KERNELS
// NEON needs no function attributes. With them, gcc refuses to inline Highway's functions into
// implicit constructors, which have none.
#undef HWY_HAVE_RUNTIME_DISPATCH
#define HWY_HAVE_RUNTIME_DISPATCH 0
#endif

#ifdef WREN_X86_KERNELS
#undef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (~(HWY_SSSE3 | HWY_SSE4 | HWY_AVX2 | HWY_EMU128 | HWY_SCALAR))
#endif

/// True while the compiler reads a kernel's source for a vector level. Highway always adds its
/// own scalar target, for which the kernels are not meant.
#define WREN_IS_VECTOR_TARGET (HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128)

/// The `KernelTable` of a function that was compiled for every vector level.
/// @param scalar the function for `VectorLevel::kScalar`.
/// @param function the name of the others, in HWY_NAMESPACE of the current namespace.
#if defined(WREN_X86_KERNELS)
#define WREN_KERNEL_TABLE(scalar, function) \
  { scalar, N_SSSE3::function, N_SSE4::function, N_AVX2::function, nullptr, nullptr }
#elif defined(WREN_NEON_KERNELS)
#define WREN_KERNEL_TABLE(scalar, function) \
  { scalar, nullptr, nullptr, nullptr, nullptr, HWY_NAMESPACE::function }
#else
#define WREN_KERNEL_TABLE(scalar, function) \
  { scalar, nullptr, nullptr, nullptr, nullptr, nullptr }
#endif
