#!/usr/bin/env bash
# The Windows package: makes the zip (cpack -G ZIP), unpacks it, builds the
# small host against it with find_package and the same mingw-w64, and runs
# the host under Wine with the package's DLLs beside it.
set -euo pipefail
build_dir=$1 consumer_src=$2 toolchain=$3 wine=$4

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

(cd "$build_dir" && cpack -G ZIP -B "$work/package" >/dev/null)
zip=$(ls "$work"/package/*.zip)
unzip -q "$zip" -d "$work/unpacked"
prefix=$(ls -d "$work"/unpacked/*/)
for file in bin/VantoroBasicUtils.dll lib/VantoroBasicUtils.dll.a include/VantoroBasicUtils/VantoroBasicUtils.h \
            lib/cmake/VantoroBasicUtils/VantoroBasicUtilsConfig.cmake; do
  [ -f "$prefix/$file" ] || { echo "the zip lacks $file"; exit 1; }
done
if find "$prefix" -path '*/internal*' -o -name '*.inc' | grep .; then
  echo "internal headers were packed"; exit 1
fi

cmake -S "$consumer_src" -B "$work/build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_PREFIX_PATH="$prefix" \
      -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$work/build" >/dev/null
cp "$prefix"/bin/*.dll "$work/build/"
"$wine" "$work/build/consumer.exe"
