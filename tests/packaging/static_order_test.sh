#!/usr/bin/env bash
# The library's static objects come into being at load in the order in which
# StaticObjects.cpp defines them (one translation unit), and die in reverse.
# This checks that the definitions stand in the library's load order.
set -euo pipefail
file=$1

# In load order; add an object where it belongs.
order=(
  'CAppBits::sByteMasksInitialized'
  'gIdleProcesses'
  'MFileDialog::sLastFile'
  'LArray::sLongComparator'
  'LArray::sBytesComparator'
  'CBrevanderProfile::sProfilePath'
  'StGlobalLock::sSafe'
  'CMessageAction::sMessageAction'
  'CThreadStatus::sThreadStatus'
  'CThreadAction::sThreadAction'
)

fail=0
previous=0
previousName='(start)'
for name in "${order[@]}"; do
  # A definition: a line of code (not a comment or directive) whose declarator is the name.
  line=$(awk -v n="$name" '
    /^[[:space:]]*(\/\/|#)/ { next }
    { for (i = 1; i <= NF; i++) { w = $i; sub(/[;=({].*$/, "", w); if (w == n) { print NR; exit } } }
  ' "$file")
  if [[ -z $line ]]; then
    echo "not defined in $(basename "$file"): $name"; fail=1; continue
  fi
  if (( line <= previous )); then
    echo "out of order: $name (line $line) must come after $previousName (line $previous)"; fail=1
  fi
  previous=$line
  previousName=$name
done
exit $fail
