#pragma once

/// Multiplication and addition, in one operation where the machine has that.
namespace varo::engine {

/// True when this machine multiplies and adds in one operation. Then every computation
/// that can use it does, so that a value does not depend on how it is asked for.
bool usesFusedArithmetic();

/// x * y + z, rounded once.
struct FusedArithmetic {
    [[gnu::always_inline]] static double multiplyAdd(double x, double y, double z) {
        return __builtin_fma(x, y, z);
    }
};

/// x * y + z, rounded twice.
struct PlainArithmetic {
    [[gnu::always_inline]] static double multiplyAdd(double x, double y, double z) {
        return x * y + z;
    }
};

}  // namespace varo::engine

/// Marks a function as compiled for machines with fused arithmetic, and only called on those.
#if defined(__x86_64__)
#define VARO_FUSED [[gnu::target("avx2,fma")]]
#else
#define VARO_FUSED
#endif
