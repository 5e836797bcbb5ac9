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
# once with find_package, once with pkg-config. `sysroot`, when given, is the
# folder that stands for / (the packages' files unpacked there): their .pc
# file names plain /usr paths, as Debian asks.
build_host() {
  local root=$1 name=$2 sysroot=${3:-}
  cmake -S "$consumer_src" -B "$work/$name-cmake" -DCMAKE_PREFIX_PATH="$root" \
        -DCMAKE_CXX_COMPILER="$cxx" >/dev/null
  cmake --build "$work/$name-cmake" >/dev/null
  local libdir
  libdir=$(dirname "$(find "$root" -name 'libVantoroBasicUtils.so' | head -n1)")
  LD_LIBRARY_PATH=$libdir "$work/$name-cmake/consumer"

  local pcdir flags
  pcdir=$(dirname "$(find "$root" -name VantoroBasicUtils.pc | head -n1)")
  grep -q "^prefix=/" "$pcdir/VantoroBasicUtils.pc" || { echo "the .pc file's prefix is not absolute"; exit 1; }
  flags=$(PKG_CONFIG_SYSROOT_DIR=$sysroot PKG_CONFIG_PATH=$pcdir pkg-config --cflags --libs VantoroBasicUtils)
  # shellcheck disable=SC2086
  "$cxx" -std=c++20 "$consumer_src/main.cpp" -o "$work/$name-pc" $flags
  LD_LIBRARY_PATH=$sysroot$(PKG_CONFIG_PATH=$pcdir pkg-config --variable=libdir VantoroBasicUtils) "$work/$name-pc"
  echo "$name: consumer built and ran with find_package and with pkg-config"
}

build_host "$prefix" install

# The Debian packages (cpack -G DEB): the development package depends on the
# runtime package, which depends on liburing; their files, unpacked into a
# scratch root as dpkg would install them, serve a host.
if command -v dpkg-deb >/dev/null && [ -f "$build_dir/CPackConfig.cmake" ]; then
  (cd "$build_dir" && cpack -G DEB -B "$work/debs" >/dev/null)
  runtime=$(ls "$work"/debs/libvantorobasicutils[0-9]*.deb | grep -v -- '-dbg_')
  debug=$(ls "$work"/debs/libvantorobasicutils[0-9]*-dbg_*.deb)
  dev=$(ls "$work"/debs/libvantorobasicutils-dev_*.deb)
  runtime_name=$(dpkg-deb -f "$runtime" Package)
  dpkg-deb -f "$dev" Depends | grep -q "^$runtime_name (= " || { echo "dev package lacks its runtime dependency"; exit 1; }
  dpkg-deb -f "$runtime" Depends | grep -q liburing || { echo "runtime package lacks liburing"; exit 1; }
  if dpkg-deb -c "$runtime" | grep -E '\.h$|\.pc$|\.cmake$|\.so$'; then echo "runtime package holds development files"; exit 1; fi
  root=$work/root
  dpkg-deb -x "$runtime" "$root"
  dpkg-deb -x "$dev" "$root"
    # Debian's places: the library in the multiarch folder, each package's
  # copyright file and changelog, the library stripped (its debug
  # information in the -dbgsym package).
  multiarch=$(dpkg-architecture -qDEB_HOST_MULTIARCH 2>/dev/null || gcc -print-multiarch)
  ls "$root"/usr/lib/"$multiarch"/libVantoroBasicUtils.so.* >/dev/null || { echo "library not in the multiarch folder"; exit 1; }
  for package in "$runtime_name" libvantorobasicutils-dev; do
    for doc in copyright changelog.Debian.gz; do
      [ -f "$root/usr/share/doc/$package/$doc" ] || { echo "$package lacks $doc"; exit 1; }
    done
  done
  if file -L "$root"/usr/lib/"$multiarch"/libVantoroBasicUtils.so.* | grep -q 'not stripped'; then
    echo "the packaged library is not stripped"; exit 1
  fi
  dpkg-deb -c "$debug" > "$work/debug-files"
  grep -q '/usr/lib/debug/\.build-id/.*\.debug$' "$work/debug-files" || { echo "the debug package lacks the debug information"; exit 1; }
  # Debian's checks: no errors (warnings are reported, not fatal).
  if command -v lintian >/dev/null; then
    lintian --fail-on error --suppress-tags maintscript-calls-ldconfig "$work"/debs/*.deb
  fi
  build_host "$root/usr" debian-packages "$root"
fi
