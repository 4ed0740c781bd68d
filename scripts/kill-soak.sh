#!/usr/bin/env bash
# Kills `kurvo index --add` with SIGKILL at spread-out instants, N times
# (default 200), and counts how often the old index, the new one or neither
# was left. An index is whole when the added folder is searchable exactly
# when `kurvo stats` lists it. Uses build/bin/kurvo (run scripts/test.sh or
# cmake --build build first). Exit status 1 when any kill left a broken index.
set -uo pipefail
cd "$(dirname "$0")/.."
rounds=${1:-200}
kurvo=$PWD/build/bin/kurvo
[ -x "$kurvo" ] || { echo "kill-soak: build kurvo first (scripts/test.sh)" >&2; exit 2; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export KURVO_HOME=$work/home
mkdir -p "$work"/a/d{0..19} "$work"/b/d{0..19}
for i in $(seq 1 400); do printf 'alpha common word%s\n' "$i" >"$work/a/d$((i % 20))/f$i.txt"; done
for i in $(seq 1 4000); do printf 'bravo common item%s\n' "$i" >"$work/b/d$((i % 20))/g$i.txt"; done

# The run's length sets the spread of the kills.
"$kurvo" index "$work/a" -q
start=$(date +%s%N)
"$kurvo" index --add "$work/b" -q
span=$(( ($(date +%s%N) - start) / 1000000 + 10 ))

old=0 new=0 broken=0
for round in $(seq 1 "$rounds"); do
  "$kurvo" index "$work/a" -q
  "$kurvo" index --add "$work/b" -q 2>/dev/null &
  victim=$!
  sleep "$(printf '0.%03d' $(( RANDOM % span )))"
  kill -9 "$victim" 2>/dev/null
  wait "$victim" 2>/dev/null
  "$kurvo" search bravo >/dev/null 2>&1; found=$?
  listed=1
  "$kurvo" stats 2>/dev/null | grep -q "folder: *$work/b\$" && listed=0
  "$kurvo" search alpha >/dev/null 2>&1; alpha=$?
  if [ "$alpha" != 0 ] || [ "$found" != "$listed" ]; then broken=$((broken + 1))
  elif [ "$found" = 0 ]; then new=$((new + 1))
  else old=$((old + 1)); fi
done
echo "kill-soak: $rounds kills over ${span} ms runs: $old left the old index, $new the new one, $broken a broken one"
[ "$broken" = 0 ]
