#pragma once

namespace varo::bench {

/// What main() does in a benchmark of widgets: runs them without a screen, after `prepare` has made
/// what they share. Returns the program's exit code.
int runBenchmarks(
    int argc, char** argv, void (*prepare)() = [] {});

}  // namespace varo::bench
