#include "engine/machine/kernels.h"

namespace varo::engine {
namespace {

template <Kernel kernel, class Arithmetic>
[[gnu::always_inline]] inline double valueWith(double x) {
    double value = 0;
    return compute<kernel, Arithmetic>(x, value) ? value : libraryValue<kernel>(x);
}

template <Kernel kernel>
VARO_FUSED double fusedValue(double x) {
    return valueWith<kernel, FusedArithmetic>(x);
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

template <Kernel kernel>
double kernelValue(double x) {
    return usesFusedArithmetic() ? fusedValue<kernel>(x) : valueWith<kernel, PlainArithmetic>(x);
}

template double kernelValue<Kernel::Fourth>(double x);
template double kernelValue<Kernel::PowerOfE>(double x);
template double kernelValue<Kernel::Sine>(double x);
template double kernelValue<Kernel::Cosine>(double x);

}  // namespace varo::engine
