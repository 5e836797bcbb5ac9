#!/usr/bin/env bash
# Builds the library and runs every test: the plain suite, then the same suite
# under AddressSanitizer and UndefinedBehaviorSanitizer.
# Pass a preset name (default, asan-ubsan, tsan, windows) to run one suite
# only. The windows preset cross-builds with mingw-w64 and runs the suite
# under Wine.
set -euo pipefail
cd "$(dirname "$0")/.."

presets=("$@")
[ ${#presets[@]} -eq 0 ] && presets=(default asan-ubsan)
if [[ " ${presets[*]} " == *" windows "* ]]; then
  ./scripts/setup.sh windows
  # A Wine prefix of the build's own, made once, before the tests run in parallel.
  export WINEPREFIX="$PWD/build/windows/wineprefix" WINEDEBUG=-all DISPLAY=
  mkdir -p build/windows
  [ -d "$WINEPREFIX" ] || wineboot --init >/dev/null 2>&1 || true
else
  ./scripts/setup.sh
fi

for preset in "${presets[@]}"; do
  echo "== $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done
