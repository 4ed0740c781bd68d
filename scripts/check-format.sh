#!/usr/bin/env bash
# Fails when a C or C++ file of the tree differs from what .clang-format makes of it.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v clang-format >/dev/null || { echo "check-format: clang-format is needed (scripts/setup.sh)" >&2; exit 2; }
mapfile -t files < <(git ls-files src cli include tests bench fuzz | grep -E '\.(cpp|h|c)$')
clang-format --dry-run --Werror "${files[@]}"
echo "check-format: ${#files[@]} files follow .clang-format"
