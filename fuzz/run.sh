#!/usr/bin/env bash
# Builds the fuzzer and runs it from the seeds in fuzz/corpus. Arguments go to libFuzzer and may overrule
# what stands here. What it finds is left in build/fuzz: the inputs that got further in found/, those
# that break something as crash-..., timeout-... and the like.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

tools/install.sh
cmake --preset fuzz
cmake --build --preset fuzz
mkdir -p build/fuzz/found
build/fuzz/fuzz/varo_formula_fuzzer -dict=fuzz/formula.dict -timeout=10 -rss_limit_mb=1024 \
  -artifact_prefix=build/fuzz/ "$@" build/fuzz/found fuzz/corpus
