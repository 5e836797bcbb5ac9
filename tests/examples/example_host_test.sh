#!/usr/bin/env bash
# Drives the example host with bad input and with small jobs, in a scratch
# folder that is removed at the end. Every run is bounded by a timeout.
#   example_host_test.sh EXAMPLE_HOST options|files|join|interrupt
set -euo pipefail
host=$(realpath "$1")
case_name=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work"
fail() { echo "FAIL: $*" >&2; exit 1; }

# Runs the host; its status in $status, its output in out and err.
host() {
  status=0
  timeout 60 "$host" "$@" > out 2> err || status=$?
}
# What the folder holds, but for the host's output.
listing() { find . -mindepth 1 ! -name out ! -name err -printf '%p %s %T@\n' | sort; }
# The host refused with `code` and the text `expected` on standard error,
# and left the folder as it was.
refused() {
  local code=$1 expected=$2 before
  shift 2
  before=$(listing)
  host "$@"
  [ "$status" -eq "$code" ] || fail "$* gave $status, not $code: $(cat out err)"
  grep -qF -- "$expected" err || fail "$*: no \"$expected\" on standard error: $(cat err)"
  ! grep -qF -- "$expected" out || fail "$*: the error went to standard output"
  [ "$before" = "$(listing)" ] || fail "$*: the folder changed"
}
# The host joined and verified.
joined() {
  host "$@"
  [ "$status" -eq 0 ] || fail "$* gave $status: $(cat out err)"
  grep -q '^  verified against the sources: identical' out || fail "$*: $(cat out)"
}

head -c 3000005 /dev/urandom > a.bin
head -c 2001234 /dev/urandom > b.bin
head -c 1048576 /dev/urandom > c.bin

case $case_name in
options)
  # Every number is whole text: no fractions, units, signs, blanks or exponents.
  refused 2 '--segment-mib takes a whole number of MiB from 1 to 1048576, not "1.5"' --segment-mib=1.5 dest a.bin
  refused 2 'not "1.5"' --segment-mib 1.5 dest a.bin
  for bad in 0 16k +16 " 16" "" 1048577 99999999999999999999; do
    refused 2 "not \"$bad\"" --segment-mib="$bad" dest a.bin
  done
  for bad in 0 6 260 4.0 -4; do refused 2 "not \"$bad\"" --buffer-mib "$bad" dest a.bin; done
  for bad in 0 abc 1e3 -8 8.5.5 . inf 1001; do refused 2 "not \"$bad\"" --bitrate="$bad" dest a.bin; done
  refused 2 '--segment-mib needs a value' dest a.bin --segment-mib
  refused 2 '--help takes no value' --help=1
  refused 2 'unknown option --segment=4' --segment=4 dest a.bin
  refused 2 'name the sources after DEST' dest
  # Both forms are read, and numbers at their limits pass.
  joined --segment-mib 1 --buffer-mib=8 --bitrate 9.8 dest1 a.bin b.bin
  # Sources padded to 4096 bytes (8 MiB buffers); each above 1 MiB, so each a segment.
  grep -q 'dest1: 2 segments, 5005312 bytes' out || fail "segments of 1 MiB: $(cat out)"
  grep -q 'at 9.80 Mbit/s' out || fail "bitrate 9.8: $(cat out)"
  joined --segment-mib=1048576 --buffer-mib 256 -- dest2 c.bin
  host --help
  [ "$status" -eq 0 ] && grep -q '^usage: example_host' out || fail "--help: $(cat out err)"
  host --version
  [ "$status" -eq 0 ] && grep -Eqx 'example_host \(VantoroBasicUtils\) [0-9]+\.[0-9]+\.[0-9]+.*' out ||
    fail "--version: $(cat out err)"
  ;;
files)
  # A destination that is a source, by any name: refused, and the source kept.
  sum=$(md5sum a.bin b.bin)
  ln -s a.bin link_a
  ln b.bin hard_b
  refused 1 'refused: the destination a.bin is the source a.bin' a.bin a.bin b.bin
  refused 1 'refused: the destination ./b.bin is the source b.bin' ./b.bin a.bin b.bin
  refused 1 'refused: the destination link_a is the source a.bin' link_a b.bin a.bin
  refused 1 'refused: the destination hard_b is the source b.bin' hard_b b.bin
  rm link_a hard_b
  [ "$sum" = "$(md5sum a.bin b.bin)" ] || fail "a refused join changed a source"
  # Files that the join would make or empty: segments of the destination.
  cp c.bin dest.cfx.1
  refused 1 'refused: dest.cfx.1, which the join may write, is the source dest.cfx.1' dest a.bin dest.cfx.1
  rm dest.cfx.1
  joined --segment-mib 2 seg a.bin b.bin
  refused 1 'refused: seg.cfx.1, a segment of the destination, is the source seg.cfx.1' seg c.bin seg.cfx.1
  # Sources that cannot be read: refused before the job starts.
  mkdir folder
  refused 1 'cannot read folder: Is a directory' dest a.bin folder
  refused 1 'cannot read missing.bin: No such file or directory' dest a.bin missing.bin
  refused 1 'cannot read /dev/null: not a regular file' dest /dev/null
  # A destination that cannot be written: the system's reason.
  refused 1 'cannot write folder: Is a directory' folder a.bin
  refused 1 'cannot write nofolder/dest.vob: No such file or directory' nofolder/dest.vob a.bin
  refused 1 'cannot write a.bin/dest.vob: Not a directory' a.bin/dest.vob b.bin
  if [ "$(id -u)" -ne 0 ]; then  # permissions do not hold for root
    cp c.bin locked.bin && chmod 000 locked.bin
    refused 1 'cannot read locked.bin: Permission denied' dest a.bin locked.bin
    mkdir readonly && chmod 555 readonly
    refused 1 'cannot write readonly/dest.vob: Permission denied' readonly/dest.vob a.bin
  fi
  ;;
join)
  # Segments of 4 MiB: a.bin and b.bin share the first, c.bin starts the second.
  joined --segment-mib 4 dest a.bin b.bin c.bin a.bin
  # The info file: text lines (CR LF), the header and the segments in order.
  [ "$(tr -d '\r' < dest | tr '\n' ,)" = "# Brevander c_files ,dest.cfx.0,dest.cfx.1,dest.cfx.2," ] ||
    fail "info file: $(cat dest)"
  for f in a b c a; do
    cp $f.bin $f.padded
    truncate -s $((($(stat -c %s $f.bin) + 2047) / 2048 * 2048)) $f.padded
  done
  cat a.padded b.padded c.padded a.padded | cmp -s - <(cat dest.cfx.0 dest.cfx.1 dest.cfx.2) ||
    fail "the segments differ from the sources"
  # Progress of both phases, then the result, before the task leaves the list.
  grep -q '^join: joining 100%' out && grep -q '^join: verifying 100%' out || fail "progress: $(cat out)"
  [ "$(grep -n -e '^join: done' -e '^join: off the task list' out | cut -d: -f3 | tr '\n' ,)" = \
    " done, off the task list," ] || fail "order of the result: $(cat out)"
  # Joining again over a segmented destination replaces it, segments and all.
  joined --segment-mib 100 dest c.bin
  cmp -s c.bin dest && ! ls dest.cfx.* > /dev/null 2>&1 || fail "the destination was not replaced: $(ls)"
  ;;
interrupt)
  # Two large sources (sparse: cheap to make and to read); the interrupt
  # comes once the join has started. A join that ends first is no failure.
  truncate -s 256M big1 big2
  set -m  # so that the background host hears SIGINT
  timeout 120 "$host" --segment-mib 200 dest big1 big2 > out 2> err &
  pid=$!
  set +m
  for _ in $(seq 200); do grep -q '^join: joining' out && break; sleep 0.05; done
  kill -INT "$pid" 2> /dev/null || true
  status=0
  wait "$pid" || status=$?
  if [ "$status" -eq 0 ]; then
    echo "the join ended before the interrupt came"
    exit 0
  fi
  [ "$status" -eq 130 ] || fail "interrupted: status $status: $(cat out err)"
  grep -q '^join: cancelled' out || fail "no cancellation: $(cat out)"
  line=$(grep '^  the copy stopped in' out) || fail "no stop point: $(cat out)"
  [[ $line =~ stopped\ in\ (big[12])\ \(source\ ([12])\ of\ 2\)\ at\ byte\ ([0-9]+)\ of\ 268435456$ ]] ||
    fail "stop point: $line"
  stopped_in=${BASH_REMATCH[1]} at=${BASH_REMATCH[3]}
  disk=$(grep -o '^  dest: [0-9]* bytes on disk' out | grep -o '[0-9]*') || fail "no bytes on disk: $(cat out)"
  segments=$(if [ -f dest.cfx.0 ]; then tail -n +2 dest | tr -d '\r'; else echo dest; fi)
  actual=0
  for s in $segments; do actual=$((actual + $(stat -c %s "$s"))); done
  [ "$disk" -eq "$actual" ] || fail "bytes on disk: said $disk, found $actual"
  before=$([ "$stopped_in" = big2 ] && echo 268435456 || echo 0)
  [ "$disk" -eq $((before + at)) ] || fail "stopped at byte $at of $stopped_in, but $disk bytes on disk"
  grep -q '^cancelled: 0 of 1 title joined and verified' out || fail "summary: $(cat out)"
  ;;
*)
  fail "unknown case $case_name"
  ;;
esac
echo "example_host: $case_name as expected"
