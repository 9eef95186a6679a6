#pragma once

/// Compiles a function, or each instance of a function template, for several generations of
/// x86-64 processors; the version for the present one is chosen when the library is loaded. Results
/// have the same bits on all of them as long as the code is compiled with -ffp-contract=off, an
/// option that linking with tavrin-lib adds.
/// Empty under sanitizers, which run before the choice is made, and for clang, which does not support
/// it on templates.
#if defined(__clang__) || defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define TAVRIN_FOR_SEVERAL_PROCESSORS
#else
#define TAVRIN_FOR_SEVERAL_PROCESSORS [[gnu::target_clones("avx512f", "avx2", "default")]]
#endif
