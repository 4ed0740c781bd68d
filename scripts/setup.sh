#!/usr/bin/env bash
# Installs every build and test dependency from Debian packages when missing.
# --cross adds the cross compilers and qemu that scripts/cross-test.sh uses.
set -euo pipefail

packages=(
  cmake ninja-build g++ gcc make pkg-config
  zlib1g-dev libminizip-dev
  libgtest-dev libbenchmark-dev
  libcli11-dev nlohmann-json3-dev
  zip tar gzip
  clang-format
)
if [ "${1:-}" = "--cross" ]; then
  packages+=(g++-s390x-linux-gnu g++-i686-linux-gnu qemu-user-static binfmt-support)
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then
  if command -v sudo >/dev/null 2>&1; then sudo="sudo"; else
    echo "setup: missing packages (${missing[*]}) and not root; install them and rerun" >&2
    exit 1
  fi
fi

echo "setup: installing ${missing[*]}" >&2
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq "${missing[@]}" >/dev/null
