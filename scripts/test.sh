#!/usr/bin/env bash
# Sets everything up, builds, and runs the whole test suite with ctest.
# --sanitize builds into build-asan/ with AddressSanitizer and UBSan instead.
set -euo pipefail
cd "$(dirname "$0")/.."
[ -n "${KURVO_SETUP_DONE:-}" ] || scripts/setup.sh

build_dir="${BUILD_DIR:-build}"
cmake_args=()
if [ "${1:-}" = "--sanitize" ]; then
  build_dir="${BUILD_DIR:-build-asan}"
  cmake_args+=(-DKURVO_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug)
  export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1"
  export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
fi

BUILD_DIR="$build_dir" scripts/build.sh "${cmake_args[@]}"
ctest --test-dir "$build_dir" --output-on-failure -j "$(nproc)"
