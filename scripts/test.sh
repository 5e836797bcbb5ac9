#!/usr/bin/env bash
# Builds the library and runs every test: the plain suite, then the same suite
# under AddressSanitizer and UndefinedBehaviorSanitizer.
# Pass a preset name (default, asan-ubsan, tsan) to run one suite only.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh

presets=("$@")
[ ${#presets[@]} -eq 0 ] && presets=(default asan-ubsan)

for preset in "${presets[@]}"; do
  echo "== $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  ctest --preset "$preset"
done
