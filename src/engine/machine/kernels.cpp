#include "engine/machine/kernels.h"

namespace varo::engine {
namespace {

template <Unary operation, class Arithmetic>
[[gnu::always_inline]] inline double valueWith(double x) {
    double value = 0;
    return compute<operation, Arithmetic>(x, value) ? value : libraryValue<operation>(x);
}

template <Unary operation>
VARO_FUSED double fusedValue(double x) {
    return valueWith<operation, FusedArithmetic>(x);
}

}  // namespace

bool usesFusedArithmetic() {
#if defined(__x86_64__)
    return __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
#elif defined(__FP_FAST_FMA)
    return true;
#else
    return false;
#endif
}

template <Unary operation>
double kernelValue(double x) {
    return usesFusedArithmetic() ? fusedValue<operation>(x)
                                 : valueWith<operation, PlainArithmetic>(x);
}

template double kernelValue<Unary::Fourth>(double x);
template double kernelValue<Unary::PowerOfE>(double x);
template double kernelValue<Unary::Sin>(double x);
template double kernelValue<Unary::Cos>(double x);

}  // namespace varo::engine
