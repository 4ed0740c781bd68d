#!/bin/bash
# The shared library exports exactly the functions kurvo.h declares, all within the interface families.
# Arguments: library, header, nm.
set -euo pipefail
declared=$(sed -n 's/^KURVO_API [^(]*[ *]\([A-Za-z_][A-Za-z0-9_]*\)(.*/\1/p' "$2" | sort)
[ "$(wc -l <<<"$declared")" -ge 80 ] || { echo "too few declarations found in $2"; exit 1; }
# Linker-made markers carry no code of ours.
table=$("$3" -D --defined-only "$1" | awk 'NF == 3 && $3 !~ /^(_init|_fini|_edata|_end|__bss_start)$/ {
  sub(/@.*/, "", $3); print $2, $3 }')
outside=$(awk '$1 !~ /^[TW]$/ || $2 !~ /^((k|kidx|kts|kfs|kfi|kfl|kfc)[A-Z]|convert(To|From)Hex$)/' <<<"$table")
[ -z "$outside" ] || { echo "exported outside the interface: $outside"; exit 1; }
difference=$(comm -3 <(echo "$declared") <(awk '{print $2}' <<<"$table" | sort))
[ -z "$difference" ] || { echo "declared only (left) or exported only (right): $difference"; exit 1; }
echo "$(wc -l <<<"$declared") functions declared and exported"
