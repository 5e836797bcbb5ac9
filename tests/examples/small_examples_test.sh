#!/usr/bin/env bash
# Runs the small examples (examples/*.cpp) and checks what they print and
# write, in a scratch folder that is removed at the end.
#   small_examples_test.sh BIN_DIR
set -euo pipefail
bin=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAIL: $*" >&2; exit 1; }
run() { timeout 60 "$@"; }

# Timecode text: ";" before the frame is 25 fps; drop-frame labels at 30 fps.
out=$(run "$bin/example_timecode" 01:00:00:00 "00:10:00;12" 23:59:59:29 1:2)
line='01:00:00:00    01:00:00:00 at 30 fps, frame 108001 from 00:00:00:00, drop-frame label 01:00:03:18'
grep -qxF "$line" <<< "$out" ||
  fail "timecode 01:00:00:00: $out"
line='00:10:00;12    00:10:00;12 at 25 fps, frame 15013 from 00:00:00:00, no drop-frame labels at this rate'
grep -qxF "$line" <<< "$out" ||
  fail "timecode 00:10:00;12: $out"
grep -q 'drop-frame label 24:01:26:13$' <<< "$out" || fail "timecode 23:59:59:29: $out"
grep -q '^1:2 .* 00:00:01:02 at 30 fps' <<< "$out" || fail "timecode 1:2: $out"
[ "$(run "$bin/example_timecode" | wc -l)" -eq 5 ] || fail "timecode without arguments"

# Settings: the file beside the executable, so the example runs from a copy.
cp "$bin/example_settings" "$work/"
out=$(cd "$work" && run ./example_settings)
grep -qx "settings file: $work/example_settings.ini" <<< "$out" || fail "settings file: $out"
grep -q 'audio bitrate 128 kbit/s, palette colour 1 is 0, 0, 255, default language English' <<< "$out" ||
  fail "settings read: $out"
out=$(run "$work/example_settings")
grep -q 'ran 1 time before; \[Example\] Runs is now 2' <<< "$out" || fail "settings second run: $out"
ini=$work/example_settings.ini
grep -q '^\[Audio\]' "$ini" && grep -q '^Bitrate=128' "$ini" && grep -q '^Runs=2' "$ini" &&
  grep -q '^Last Title=VTS_01_1.VOB' "$ini" || fail "settings file content: $(cat "$ini")"

# Join: each source padded with zeros to whole 2048-byte sectors.
head -c 5000 /dev/urandom > "$work/first"
head -c 4194305 /dev/urandom > "$work/second"
out=$(run "$bin/example_join" "$work/joined" "$work/first" "$work/second")
tail -n 1 <<< "$out" | grep -qx "$work/joined: 4202496 bytes" || fail "join: $out"
grep -q '(100%)$' <<< "$out" || fail "join progress: $out"
cp "$work/first" "$work/first.padded" && truncate -s 6144 "$work/first.padded"
cp "$work/second" "$work/second.padded" && truncate -s 4196352 "$work/second.padded"
cat "$work/first.padded" "$work/second.padded" | cmp -s - "$work/joined" || fail "join: the content differs"
if run "$bin/example_join" "$work/nofolder/joined" "$work/first" "$work/second" 2> "$work/err"; then
  fail "join into a missing folder succeeded"
fi
grep -q "cannot write $work/nofolder/joined: No such file or directory" "$work/err" ||
  fail "join error: $(cat "$work/err")"

echo "the small examples run as documented"
