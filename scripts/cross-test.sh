#!/usr/bin/env bash
# Builds the library, the command, the tests and the benchmarks for s390x
# (64-bit big-endian) and i386 (32-bit) with Debian's cross compilers, and
# runs the whole suite: s390x under qemu-user, i386 natively where the kernel
# runs 32-bit programs and under qemu-user where it does not.
# Usage: scripts/cross-test.sh [s390x|i386|all]   (default: all)
# Each target builds in build-ARCH/, with its libraries in build-ARCH/sysroot/.
# Benchmarks are built but not run: under qemu they read the host's CPU data.
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1:-all}" in
  all) targets=(s390x i386) ;;
  s390x | i386) targets=("$1") ;;
  *) echo "usage: $0 [s390x|i386|all]" >&2; exit 2 ;;
esac

[ -n "${KURVO_SETUP_DONE:-}" ] || scripts/setup.sh --cross

# s390x programs started by the shell tests run through binfmt_misc.
register_qemu() {
  local entry=/proc/sys/fs/binfmt_misc/qemu-s390x
  if [ "$(head -n 1 "$entry" 2>/dev/null)" = enabled ]; then return 0; fi
  if [ "$(id -u)" -eq 0 ]; then
    [ -e /proc/sys/fs/binfmt_misc/register ] ||
      mount -t binfmt_misc binfmt_misc /proc/sys/fs/binfmt_misc 2>/dev/null || true
    update-binfmts --enable qemu-s390x >/dev/null 2>&1 || true
  fi
  if [ "$(head -n 1 "$entry" 2>/dev/null)" != enabled ]; then
    echo "cross-test: qemu-s390x is not registered with binfmt_misc; as root run:" >&2
    echo "  mount -t binfmt_misc binfmt_misc /proc/sys/fs/binfmt_misc; update-binfmts --enable qemu-s390x" >&2
    return 1
  fi
}

# i386 programs: natively when the kernel runs them, else through qemu-i386,
# which Debian leaves out of binfmt_misc on x86-64 hosts, so it is registered
# here with the usual ELF header magic.
i386_runs() {
  local probe
  probe=$(mktemp)
  echo 'int main(void) { return 0; }' | i686-linux-gnu-gcc -static -x c - -o "$probe" 2>/dev/null && "$probe" 2>/dev/null
  local status=$?
  rm -f "$probe"
  return $status
}
register_qemu_i386() {
  i386_runs && return 0
  local magic='\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00'
  local mask='\xff\xff\xff\xff\xff\xfe\xfe\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff'
  if [ "$(id -u)" -eq 0 ] && [ -w /proc/sys/fs/binfmt_misc/register ] && [ ! -e /proc/sys/fs/binfmt_misc/qemu-i386 ]; then
    printf '%s' ":qemu-i386:M::$magic:$mask:/usr/bin/qemu-i386-static:F" >/proc/sys/fs/binfmt_misc/register || true
  fi
  i386_runs && return 0
  echo "cross-test: this kernel runs no 32-bit programs and qemu-i386 could not be registered with binfmt_misc" >&2
  return 1
}

run_target() {
  local arch=$1 folder=build-$1
  echo "== $arch"
  if [ "$arch" = s390x ]; then
    register_qemu
    # The loader and C library of the cross toolchain serve as qemu's root.
    export QEMU_LD_PREFIX=/usr/s390x-linux-gnu
  else
    # The host's 32-bit loader and C library (/lib32) serve i386 programs.
    unset QEMU_LD_PREFIX
    register_qemu_i386
  fi
  scripts/cross-sysroot.sh "$arch" "$folder"
  BUILD_DIR=$folder scripts/build.sh \
    -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/cross-toolchain.cmake" \
    -DKURVO_CROSS_ARCH="$arch" -DKURVO_SYSROOT="$PWD/$folder/sysroot" \
    -DKURVO_BUILD_BENCH=ON
  ctest --test-dir "$folder" --output-on-failure -j "$(nproc)"
}

for arch in "${targets[@]}"; do
  run_target "$arch"
done
