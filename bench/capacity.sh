#!/usr/bin/env bash
# Capacity run: indexes trees of 10,000, 100,000 and 1,000,000 tiny files
# (folders of 1,000, each file three words, one of them shared by all) with
# build/bin/kurvo and prints the whole-run time per file for each, then
# deletes the trees. Needs python3 to make the files quickly and ~5 GB of
# free space for the largest tree (TMPDIR decides where).
# Usage: bench/capacity.sh [COUNT...]   (default: 10000 100000 1000000)
set -euo pipefail
cd "$(dirname "$0")/.."
kurvo=$PWD/build/bin/kurvo
[ -x "$kurvo" ] || { echo "capacity: build kurvo first (scripts/test.sh)" >&2; exit 2; }
counts=("$@")
[ ${#counts[@]} -gt 0 ] || counts=(10000 100000 1000000)

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
for count in "${counts[@]}"; do
  tree=$work/tree$count
  python3 - "$tree" "$count" <<'PY'
import os, sys
root, count = sys.argv[1], int(sys.argv[2])
for i in range(count):
    folder = os.path.join(root, "d%04d" % (i // 1000))
    if i % 1000 == 0:
        os.makedirs(folder)
    with open(os.path.join(folder, "f%d.txt" % i), "w") as out:
        out.write("common word%d tiny\n" % i)
PY
  export KURVO_HOME=$work/home$count
  start=$(date +%s%N)
  "$kurvo" index "$tree" -q
  nanos=$(( $(date +%s%N) - start ))
  found=$("$kurvo" search common | wc -l)
  echo "capacity: $count files in $((nanos / 1000000)) ms, $((nanos / 1000 / count)) us a file; 'common' finds $found"
  rm -rf "$tree" "$KURVO_HOME"
done
