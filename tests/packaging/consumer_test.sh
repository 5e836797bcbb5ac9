#!/usr/bin/env bash
# Installs the built library into a scratch prefix, checks that the umbrella
# header names every installed header, and builds and runs a small host
# against the installed copy: once with find_package, once with pkg-config.
# Then the same host against the Debian packages' files (cpack -G DEB).
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

# Builds and runs the consumer against the library installed under `root`:
# once with find_package, once with pkg-config.
build_host() {
  local root=$1 name=$2
  cmake -S "$consumer_src" -B "$work/$name-cmake" -DCMAKE_PREFIX_PATH="$root" \
        -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
  cmake --build "$work/$name-cmake" >/dev/null
  local libdir
  libdir=$(dirname "$(find "$root" -name 'libVantoroBasicUtils.so' | head -n1)")
  LD_LIBRARY_PATH=$libdir "$work/$name-cmake/consumer"

  local pcdir flags
  pcdir=$(dirname "$(find "$root" -name VantoroBasicUtils.pc | head -n1)")
  flags=$(PKG_CONFIG_PATH=$pcdir pkg-config --cflags --libs VantoroBasicUtils)
  # shellcheck disable=SC2086
  "$cxx" -std=c++20 "$consumer_src/main.cpp" -o "$work/$name-pc" $flags
  LD_LIBRARY_PATH=$(PKG_CONFIG_PATH=$pcdir pkg-config --variable=libdir VantoroBasicUtils) "$work/$name-pc"
  echo "$name: consumer built and ran with find_package and with pkg-config"
}

build_host "$prefix" install

# The Debian packages (cpack -G DEB): the development package depends on the
# runtime package, which depends on liburing; their files, unpacked into a
# scratch root as dpkg would install them, serve a host.
if command -v dpkg-deb >/dev/null && [ -f "$build_dir/CPackConfig.cmake" ]; then
  (cd "$build_dir" && cpack -G DEB -B "$work/debs" >/dev/null)
  runtime=$(ls "$work"/debs/libvantorobasicutils[0-9]*.deb)
  dev=$(ls "$work"/debs/libvantorobasicutils-dev_*.deb)
  runtime_name=$(dpkg-deb -f "$runtime" Package)
  dpkg-deb -f "$dev" Depends | grep -q "^$runtime_name (= " || { echo "dev package lacks its runtime dependency"; exit 1; }
  dpkg-deb -f "$runtime" Depends | grep -q liburing || { echo "runtime package lacks liburing"; exit 1; }
  if dpkg-deb -c "$runtime" | grep -E '\.h$|\.pc$|\.cmake$|\.so$'; then echo "runtime package holds development files"; exit 1; fi
  root=$work/root
  dpkg-deb -x "$runtime" "$root"
  dpkg-deb -x "$dev" "$root"
  build_host "$root/usr" debian-packages
fi
