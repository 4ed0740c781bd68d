#!/usr/bin/env bash
# Fails when the #include graph between the folders of src/ has a circle,
# other than the one between the index and its analyzers (the index owns the
# analyzer registry; each analyzer reports words to the index it was built for).
set -euo pipefail
cd "$(dirname "$0")/.."
edges=$(
  for f in $(find src -name '*.cpp' -o -name '*.h'); do
    from=$(dirname "${f#src/}")
    { grep -oE '^#include "[a-z_]+(/[a-z_]+)*/[a-z_0-9]+\.h"' "$f" || true; } | sed -E 's/^#include "//; s|/[a-z_0-9]+\.h"$||' |
      while read -r to; do [ "$to" = "$from" ] || echo "$from $to"; done
  done | sort -u
)
echo "$edges" | sed 's/ / -> /'
# The allowed circle: analyzers (and container analyzers) include the index.
checked=$(echo "$edges" | grep -vE '^analyzers(/containers)? index$')
if ! echo "$checked" | tsort >/dev/null 2>/tmp/kurvo-layers.$$; then
  echo "check-layers: the folders include each other in a circle:" >&2
  cat /tmp/kurvo-layers.$$ >&2
  rm -f /tmp/kurvo-layers.$$
  exit 1
fi
rm -f /tmp/kurvo-layers.$$
echo "check-layers: no circle beyond the index and its analyzers"
