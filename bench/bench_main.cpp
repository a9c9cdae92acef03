#include "bench_main.h"

#include <QApplication>

#include <benchmark/benchmark.h>

namespace varo::bench {

int runBenchmarks(int argc, char** argv, void (*prepare)()) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    prepare();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

}  // namespace varo::bench
