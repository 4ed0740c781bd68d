#!/usr/bin/env bash
# Sets everything up, builds, indexes /usr/share/doc and runs a search.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh

# A named index of its own, so the user's default index is left alone.
# Slim container images drop /usr/share/doc; /usr/share is there regardless.
kurvo=build/bin/kurvo
folder=/usr/share/doc
if [ -z "$(ls -A "$folder" 2>/dev/null)" ]; then folder=/usr/share; fi
"$kurvo" --index usr-share-doc index "$folder"
echo
echo "kurvo --index usr-share-doc search --limit 10 'copyright & license'"
status=0
"$kurvo" --index usr-share-doc search --limit 10 'copyright & license' || status=$?
if [ "$status" -gt 1 ]; then exit "$status"; fi
echo
echo "Try: $kurvo --index usr-share-doc search --outline 'free <2 software'"
