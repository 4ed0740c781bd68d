#!/usr/bin/env bash
# Sets everything up, builds, indexes /usr/share/doc and runs a search.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh
echo "kurvo library built: build/lib/libkurvo.so"
