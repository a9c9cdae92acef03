#!/usr/bin/env bash
# Installs the packages of Debian 12 that building, testing and running need and that are not there yet.
set -euo pipefail

packages=(
  # tools
  cmake ninja-build g++ ccache clang-format git
  # libraries
  qt6-base-dev qt6-svg-dev libsqlite3-dev libsimpleini-dev libtomlplusplus-dev libcsv-dev
  # at run time: Wayland, texts of the standard dialogs, icons, a Chinese font
  qt6-wayland qt6-translations-l10n breeze-icon-theme fonts-noto-cjk
  # tests and benchmarks
  libgtest-dev libbenchmark-dev libmuparser-dev mdbtools
  # the fuzzer: compiler, run-time libraries, and what writes names into stack traces
  clang-16 libclang-rt-16-dev llvm
)

missing=()
for package in "${packages[@]}"; do
  status=$(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null || true)
  [[ $status == installed ]] || missing+=("$package")
done
if ((${#missing[@]} == 0)); then
  exit 0
fi

if ! command -v apt-get >/dev/null; then
  echo "This is not a Debian system. Install what these packages hold: ${missing[*]}" >&2
  exit 1
fi
as_root=()
if ((EUID != 0)); then
  as_root=(sudo)
fi
echo "Installing ${missing[*]}"
"${as_root[@]}" apt-get update -qq
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
