#!/usr/bin/env bash
# Configures and builds into BUILD_DIR (default build/); extra arguments go to cmake.
set -euo pipefail
cd "$(dirname "$0")/.."
build_dir="${BUILD_DIR:-build}"
werror=()
# CI builds fail on any warning.
[ "${CI:-}" = "true" ] && werror=(-DKURVO_WERROR=ON)
cmake -S . -B "$build_dir" -G Ninja "${werror[@]}" "$@" >/dev/null
cmake --build "$build_dir"
