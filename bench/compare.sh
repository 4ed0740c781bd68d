#!/usr/bin/env bash
# Times build/bin/kurvo against an SQLite FTS5 index of the same generated
# corpus (see bench/compare.py for what is measured). Needs python3 with its
# sqlite3 module and the sqlite3 command. Usage: bench/compare.sh [--megabytes N] [--rounds N]
set -euo pipefail
cd "$(dirname "$0")/.."
command -v sqlite3 >/dev/null || { echo "compare: the sqlite3 command is needed (apt-get install sqlite3)" >&2; exit 2; }
exec python3 bench/compare.py "$@"
