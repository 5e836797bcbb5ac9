#!/usr/bin/env bash
# Builds the library and runs the example host.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default --target example_host
./build/default/examples/example_host
