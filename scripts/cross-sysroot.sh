#!/usr/bin/env bash
# Makes a private sysroot of a target's build dependencies from Debian packages.
# Usage: scripts/cross-sysroot.sh ARCH FOLDER   (ARCH: a Debian architecture, s390x or i386)
#
# The packages are fetched with apt-get download through an apt state of the
# folder's own and unpacked with dpkg-deb -x, so nothing foreign is installed
# and the host's apt lists and configuration stay as they are. (Installing the
# target's -dev packages through multiarch would make apt downgrade or remove
# host packages once the host has newer security updates.)
set -euo pipefail
arch=$1
folder=$(mkdir -p "$2" && cd "$2" && pwd)

packages=(
  zlib1g zlib1g-dev libminizip1 libminizip-dev
  libgtest-dev libgmock-dev libbenchmark1debian libbenchmark-dev
  libcli11-dev nlohmann-json3-dev
)

sysroot=$folder/sysroot
stamp=$sysroot/.packages
if [ -f "$stamp" ] && [ "$(cat "$stamp")" = "${packages[*]}" ]; then
  exit 0
fi

state=$folder/apt
rm -rf "$state" "$sysroot"
mkdir -p "$state/lists/partial" "$state/cache/archives/partial" "$state/debs" "$sysroot"
touch "$state/status"
apt_options=(
  -o "APT::Architecture=$arch" -o "APT::Architectures::=$arch"
  -o "Dir::State=$state" -o "Dir::State::Lists=$state/lists"
  -o "Dir::State::status=$state/status" -o "Dir::Cache=$state/cache"
  -o "Debug::NoLocking=1"
)
# apt's download user cannot write into a folder of root's.
if [ "$(id -u)" -eq 0 ]; then apt_options+=(-o "APT::Sandbox::User=root"); fi

echo "cross-sysroot: fetching ${#packages[@]} $arch packages into $sysroot" >&2
# A mirror in the middle of a sync serves some lists with the wrong size for a
# while. The packages are all in the release itself, so a list that still
# fails (an update suite's) only costs newer versions: go on with the rest,
# and let the download say so if a package is missing.
for try in 1 2; do
  if apt-get "${apt_options[@]}" -qq update; then break; fi
  if [ "$try" -eq 2 ]; then
    echo "cross-sysroot: some $arch package lists failed to download; going on with the others" >&2
  else
    sleep 10
  fi
done
(cd "$state/debs" && apt-get "${apt_options[@]}" -qq download "${packages[@]}")
for deb in "$state/debs"/*.deb; do
  dpkg-deb -x "$deb" "$sysroot"
done

# Development links such as usr/lib/ARCH/libz.so point at absolute paths;
# make them point inside the sysroot.
find "$sysroot" -type l -lname '/*' -print0 |
  while IFS= read -r -d '' link; do
    ln -sfn "$sysroot$(readlink "$link")" "$link"
  done

rm -rf "$state"
echo "${packages[*]}" >"$stamp"
