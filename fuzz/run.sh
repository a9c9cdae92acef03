#!/usr/bin/env bash
# run.sh TARGET [ARGUMENT ...] builds the fuzzers and runs one of them from its seeds. The arguments go
# to libFuzzer and may overrule what stands here. What it finds is left in build/fuzz: the inputs that
# got further in found/TARGET, those that break something as TARGET-crash-..., TARGET-timeout-... and
# the like.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

target=${1:-}
if [[ ! -f fuzz/${target}_fuzzer.cpp ]]; then
  echo "Usage: fuzz/run.sh TARGET [ARGUMENT ...], TARGET one of:" fuzz/*_fuzzer.cpp >&2
  exit 2
fi
shift

tools/install.sh
cmake --preset fuzz
cmake --build --preset fuzz

seeds=("fuzz/corpus/$target")
if [[ $target == library ]]; then
  seeds=(build/fuzz/fuzz/library_seeds)  # made by the build
fi
mkdir -p "build/fuzz/found/$target"

# The files that the fuzzers work on are in memory where that is possible.
TMPDIR=$(mktemp -d -p /dev/shm 2>/dev/null || mktemp -d)
export TMPDIR
trap 'rm -rf "$TMPDIR"' EXIT

# What every allocation and every call costs is kept low. A finding that is repeated without this
# script is told with whole call stacks.
cheap=malloc_context_size=4:quarantine_size_mb=16:detect_stack_use_after_return=0
export ASAN_OPTIONS="$cheap:${ASAN_OPTIONS:-}"

# The libraries beneath Qt keep some memory to the end.
export LSAN_OPTIONS="suppressions=$PWD/fuzz/leaks.txt:print_suppressions=0:${LSAN_OPTIONS:-}"
ASAN_SYMBOLIZER_PATH=$(readlink -f "$(command -v llvm-symbolizer)")
export ASAN_SYMBOLIZER_PATH
"build/fuzz/fuzz/varo_${target}_fuzzer" -dict="fuzz/$target.dict" -timeout=10 -rss_limit_mb=1024 \
  -print_funcs=0 -artifact_prefix="build/fuzz/$target-" "$@" "build/fuzz/found/$target" "${seeds[@]}"
