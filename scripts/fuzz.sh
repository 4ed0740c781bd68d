#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (ASan and UBSan) in build-fuzz/ and
# runs every one of them for MINUTES minutes (default 1), as many at a time as
# there are cores. Seeds come from tests/data/ (the test documents); findings
# are written to build-fuzz/findings/. Exit status 1 when any target failed.
# Usage: scripts/fuzz.sh [MINUTES [TARGET...]]
set -euo pipefail
cd "$(dirname "$0")/.."
minutes=${1:-1}
if ! [ "$minutes" -ge 1 ] 2>/dev/null; then
  echo "usage: $0 [MINUTES]   (a whole number, at least 1)" >&2
  exit 2
fi

if ! command -v clang++ >/dev/null; then
  echo "fuzz: clang is needed (apt-get install clang)" >&2
  exit 2
fi
CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja -DKURVO_BUILD_FUZZ=ON \
  -DKURVO_BUILD_TESTS=OFF -DKURVO_BUILD_CLI=OFF -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build-fuzz

# Seed folders: the test documents of each format.
seeds_of() {
  case "$1" in
    html_fuzz) echo tests/data/html ;;
    rtf_fuzz) echo tests/data/rtf ;;
    macroman_fuzz | dosoem_fuzz | generic_fuzz) echo tests/data/text ;;
    external_list_fuzz) echo tests/data/converters ;;
    zip_fuzz | tar_fuzz | gzip_fuzz | mbox_fuzz) echo tests/data/archives ;;
    pdf_fuzz) echo tests/data/pdf ;;
    utf8_fuzz) echo tests/data/text ;;
    auto_fuzz) echo tests/data/archives ;;
    *) ;;
  esac
}

mkdir -p build-fuzz/findings build-fuzz/logs
run_one() {
  local target=$1 corpus=build-fuzz/corpus/$1
  mkdir -p "$corpus"
  local seeds
  seeds=$(seeds_of "$target")
  if [ -n "$seeds" ] && [ -d "$seeds" ]; then cp -r "$seeds"/. "$corpus"/; fi
  if build-fuzz/bin/"$target" -max_total_time=$((minutes * 60)) -print_final_stats=1 \
    -artifact_prefix=build-fuzz/findings/"$target"- "$corpus" >build-fuzz/logs/"$target".log 2>&1; then
    echo "fuzz: $target clean ($(grep -a -o 'stat::number_of_executed_units: *[0-9]*' build-fuzz/logs/"$target".log | grep -o '[0-9]*$') runs)"
  else
    echo "fuzz: $target FAILED; see build-fuzz/logs/$target.log" >&2
    return 1
  fi
}
export -f run_one seeds_of
export minutes

shift || true
if [ $# -gt 0 ]; then targets=$(printf '%s\n' "$@"); else targets=$(cd build-fuzz/bin && ls ./*_fuzz | sed 's|^\./||'); fi
echo "$targets" | xargs -P "$(nproc)" -I{} bash -c 'run_one {}'
