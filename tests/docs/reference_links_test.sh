#!/usr/bin/env bash
# Builds the API reference and checks that every link of its main page (the
# README, with its links to headers) reaches a page of the reference, and
# that a class page shows the include a host writes.
#   reference_links_test.sh DOXYFILE HTML_DIR
set -euo pipefail
doxyfile=$1 html=$2
command -v doxygen >/dev/null || { echo "doxygen is missing"; exit 1; }
doxygen "$doxyfile" >/dev/null
broken=0 total=0
while IFS= read -r target; do
  total=$((total + 1))
  [ -e "$html/${target%%#*}" ] || { echo "broken link on the main page: $target"; broken=1; }
done < <(grep -o 'href="[^"#:]*\(#[^"]*\)\?"' "$html/index.html" | sed 's/^href="//; s/"$//' | grep -v '^#')
grep -q '#include &lt;<a [^>]*>VantoroBasicUtils/time/CTimecode.h</a>&gt;' "$html/classCTimecode.html" ||
  { echo "the class page does not show <VantoroBasicUtils/time/CTimecode.h>"; broken=1; }
[ $broken -eq 0 ]
echo "$total links of the main page reach the reference"
