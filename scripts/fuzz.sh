#!/usr/bin/env bash
# Builds the fuzz targets (fuzz preset: clang with AddressSanitizer and
# UndefinedBehaviorSanitizer) and runs each in turn for the given seconds
# (default 60), starting from its seed corpus in fuzz/corpus/<name>. New
# inputs go to build/fuzz/corpus/<name>, findings to build/fuzz/findings/.
# Names after the seconds choose targets (default: all).
#   scripts/fuzz.sh 1800            # half an hour each
#   scripts/fuzz.sh 20 timecode     # one target, a smoke run
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
shift || true

cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --target vbu_fuzzers

targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  for f in build/fuzz/fuzz/vbu_fuzz_*; do targets+=("${f##*/vbu_fuzz_}"); done
fi

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
status=0
for name in "${targets[@]}"; do
  work=build/fuzz/corpus/$name
  findings=build/fuzz/findings/$name
  mkdir -p "$work" "$findings"
  echo "== fuzz $name for ${seconds}s"
  if ! build/fuzz/fuzz/vbu_fuzz_"$name" -max_total_time="$seconds" -print_final_stats=1 \
       -artifact_prefix="$findings/" "$work" "fuzz/corpus/$name" 2>build/fuzz/$name.log; then
    tail -n 60 build/fuzz/$name.log
    echo "== fuzz $name: finding in $findings"
    status=1
  else
    grep -E '^stat::number_of_executed_units|^Done' build/fuzz/$name.log || true
  fi
done
exit $status
