#!/usr/bin/env bash
# Installs the built library into a scratch prefix, checks that the umbrella
# header names every installed header, and builds and runs a small host
# against the installed copy: once with find_package, once with pkg-config.
set -euo pipefail
build_dir=$1 consumer_src=$2 cxx=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build_dir" --prefix "$prefix" >/dev/null

# Every installed header is reachable from the umbrella header.
inc=$prefix/include/VantoroBasicUtils
missing=0
while IFS= read -r header; do
  rel=${header#"$inc"/}
  [ "$rel" = VantoroBasicUtils.h ] && continue
  if ! grep -q "#include <VantoroBasicUtils/$rel>" "$inc/VantoroBasicUtils.h"; then
    echo "umbrella header lacks $rel"; missing=1
  fi
done < <(find "$inc" -name '*.h')
[ $missing -eq 0 ]

# Nothing of the platform layer's internals is installed: no internal/ folder,
# no per-system file.
if find "$inc" -path '*/internal*' -o -name '*.inc' -o -name '*Internal.h' | grep .; then
  echo "internal headers were installed"; exit 1
fi
# Public headers reach each other by their installed path, never by "../".
if grep -rn '#include "' "$inc"; then
  echo "installed headers include by relative path"; exit 1
fi

# find_package
cmake -S "$consumer_src" -B "$work/cmake-build" -DCMAKE_PREFIX_PATH="$prefix" \
      -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
cmake --build "$work/cmake-build" >/dev/null
LD_LIBRARY_PATH=$prefix/lib:$prefix/lib64:${LD_LIBRARY_PATH:-} "$work/cmake-build/consumer"

# pkg-config
pcdir=$(dirname "$(find "$prefix" -name VantoroBasicUtils.pc | head -n1)")
flags=$(PKG_CONFIG_PATH=$pcdir pkg-config --cflags --libs VantoroBasicUtils)
# shellcheck disable=SC2086
"$cxx" -std=c++20 "$consumer_src/main.cpp" -o "$work/consumer-pc" $flags
libdir=$(PKG_CONFIG_PATH=$pcdir pkg-config --variable=libdir VantoroBasicUtils)
LD_LIBRARY_PATH=$libdir "$work/consumer-pc"
echo "consumer built and ran with find_package and with pkg-config"
