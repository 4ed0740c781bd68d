#!/bin/sh
# Installs the build into a scratch prefix and builds a consumer with pkg-config and find_package.
# Arguments: build folder, scratch folder, consumer source, cmake, C compiler.
set -eu
build=$1 scratch=$2 source=$3 cmake=$4 cc=$5
rm -rf "$scratch"
mkdir -p "$scratch"
prefix=$scratch/prefix
"$cmake" --install "$build" --prefix "$prefix" >"$scratch/install.log"

for f in include/kurvo.h; do
  test -f "$prefix/$f" || { echo "missing $f"; exit 1; }
done
pc=$(find "$prefix" -name kurvo.pc | head -n 1)
config=$(find "$prefix" -name kurvoConfig.cmake | head -n 1)
lib=$(find "$prefix" -name 'libkurvo.so.*.*.*' | head -n 1)
test -n "$pc" && test -n "$config" && test -n "$lib" || { echo "incomplete installation"; exit 1; }
libdir=$(dirname "$lib")
test -L "$libdir/libkurvo.so" && test -L "$libdir/libkurvo.so.0" || { echo "missing soname links"; exit 1; }

# pkg-config consumer.
if command -v pkg-config >/dev/null; then
  flags=$(PKG_CONFIG_PATH=$(dirname "$pc") pkg-config --cflags --libs kurvo)
  # shellcheck disable=SC2086
  "$cc" -std=c99 -o "$scratch/consumer-pc" "$source" $flags
  LD_LIBRARY_PATH=$libdir "$scratch/consumer-pc"
else
  echo "pkg-config not found; pkg-config consumer skipped"
fi

# find_package consumer.
project=$scratch/project
mkdir -p "$project"
cp "$source" "$project/consumer.c"
cat >"$project/CMakeLists.txt" <<'CMAKE'
cmake_minimum_required(VERSION 3.25)
project(kurvo_consumer C)
find_package(kurvo REQUIRED)
add_executable(consumer consumer.c)
target_link_libraries(consumer PRIVATE kurvo::kurvo)
CMAKE
"$cmake" -S "$project" -B "$project/build" -DCMAKE_PREFIX_PATH="$prefix" \
  -DCMAKE_C_COMPILER="$cc" >"$scratch/consumer-configure.log"
"$cmake" --build "$project/build" >"$scratch/consumer-build.log"
"$project/build/consumer"
echo "installation ok"
