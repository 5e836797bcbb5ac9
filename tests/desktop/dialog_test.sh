#!/usr/bin/env bash
# The library's dialogs and message boxes in real windows: runs dialog_probe
# (a host that links only the core library) under Xvfb, works its window
# with xdotool as a user would, and checks what the probe reports. Each case
# keeps a screenshot of what it showed: OUT_DIR/<case>*.png.
#   dialog_test.sh CASE PROBE OUT_DIR [DESKTOP_HOST]
# The cases host_job and host_cancel work examples/desktop_host instead.
# Every wait is bounded. Exit 77 (skipped) where Xvfb, xdotool, ImageMagick
# or the desktop module are not there.
set -euo pipefail
case=$1 probe=$2 out=$3 host=${4:-}

skip() { echo "SKIPPED: $*"; exit 77; }
[ -e "$(dirname "$(readlink -f "$probe")")/../VantoroBasicUtils/libVantoroBasicUtils-gtk.so" ] ||
  skip "the desktop module (libVantoroBasicUtils-gtk.so) was not built: GTK 3's development files are missing"

if [ "$case" != headless ] && [ -z "${VBU_IN_XVFB:-}" ]; then
  for tool in xvfb-run xdotool import; do
    command -v $tool >/dev/null || skip "$tool is not installed (scripts/setup.sh installs xvfb, xdotool, imagemagick)"
  done
  # The case runs inside xvfb-run; a server that fails to come up, or that
  # the toolkit cannot open, is tried again on another. Each try starts its
  # search for a free display number at a number of its own: the server of
  # the case before may still be going away on the number it left.
  export VBU_IN_XVFB=$(mktemp)
  for attempt in 1 2 3; do
    rm -f "$VBU_IN_XVFB"
    status=0
    xvfb-run -a -n $((100 + RANDOM % 800)) -s "-screen 0 1280x1024x24 -nolisten tcp" "$0" "$@" || status=$?
    [ -e "$VBU_IN_XVFB" ] && break  # the case ran: its result stands
    echo "xvfb-run ended with $status before the case started (attempt $attempt)" >&2
  done
  rm -f "$VBU_IN_XVFB"
  exit $status
fi
if [ -n "${VBU_IN_XVFB:-}" ]; then
  # The server answers before the case starts (up to 5 s); else xvfb-run is tried again.
  for _ in $(seq 50); do
    xdotool getdisplaygeometry >/dev/null 2>&1 && break
    sleep 0.1
  done
  xdotool getdisplaygeometry >/dev/null 2>&1 || exit 1
  : >"$VBU_IN_XVFB"
fi
trap 'echo "FAIL ($case): line $LINENO: $BASH_COMMAND" >&2' ERR

mkdir -p "$out"
work=$(mktemp -d)
probe_pid=""
cleanup() {
  [ -n "$probe_pid" ] && kill "$probe_pid" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT
export GSETTINGS_BACKEND=memory NO_AT_BRIDGE=1  # no session bus under Xvfb
# Under AddressSanitizer: the toolkit's own lifelong allocations are not leaks of ours.
here=$(cd "$(dirname "$0")" && pwd)
export LSAN_OPTIONS="suppressions=$here/lsan.supp${LSAN_OPTIONS:+:$LSAN_OPTIONS}"
# Under ThreadSanitizer: the toolkit is not built with it, so the calls its
# own threads make are not judged (their hand-overs go through GLib's own
# locks, which it cannot see), nor its use of locks.
export TSAN_OPTIONS="${TSAN_OPTIONS:+$TSAN_OPTIONS:}ignore_noninstrumented_modules=1:report_mutex_bugs=0"

# To standard error, so that a failure inside $(...) is seen too; the
# script stops there, as set -e ends it on the failed substitution.
fail() {
  {
    echo "FAIL ($case): $*"
    echo "--- probe output:"; cat "$work/probe.out" 2>/dev/null || true
    echo "--- probe errors:"; grep -v dconf "$work/probe.err" 2>/dev/null || true
  } >&2
  # A server that would not take the program's connection: xvfb-run again.
  if grep -q "could not open the display" "$work/probe.err" 2>/dev/null; then rm -f "$VBU_IN_XVFB"; fi
  exit 1
}

# Starts a program (the probe, or the desktop host) in the background; its
# output goes to $work/probe.out.
start_program() {
  "$@" >"$work/probe.out" 2>"$work/probe.err" &
  probe_pid=$!
}
start_probe() { start_program "$probe" "$@"; }

# Waits up to 20 s for a visible window titled $1; echoes its id.
wait_window() {
  local id
  for _ in $(seq 200); do
    id=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -1 || true)
    if [ -n "$id" ]; then
      sleep 0.5  # let it draw
      echo "$id"
      return 0
    fi
    kill -0 "$probe_pid" 2>/dev/null || fail "the probe ended before a window \"$1\" appeared"
    sleep 0.1
  done
  fail "no window \"$1\" within 20 s"
}

# Waits up to 5 s for the window $1 to go.
wait_gone() {
  for _ in $(seq 50); do
    xdotool search --onlyvisible --name "$1" >/dev/null 2>&1 || return 0
    sleep 0.1
  done
  fail "the window \"$1\" is still there after 5 s"
}

# Waits up to 20 s for the probe to end (once); fails unless its output has the line $1.
expect_line() {
  if [ -n "$probe_pid" ]; then
    for _ in $(seq 200); do
      kill -0 "$probe_pid" 2>/dev/null || break
      sleep 0.1
    done
    kill -0 "$probe_pid" 2>/dev/null && fail "the probe did not end within 20 s"
    wait "$probe_pid" || fail "the probe failed"
    probe_pid=""
  fi
  grep -qxF "$1" "$work/probe.out" || fail "expected the line \"$1\""
}

# Waits up to $2 s (20 by default) for a line of the probe's output that matches $1.
wait_line() {
  for _ in $(seq $((${2:-20} * 10))); do
    grep -q -- "$1" "$work/probe.out" && return 0
    kill -0 "$probe_pid" 2>/dev/null || fail "the program ended before a line \"$1\""
    sleep 0.1
  done
  fail "no line \"$1\" within ${2:-20} s"
}

shot() { import -window "$1" "$out/$2.png"; echo "screenshot: $out/$2.png"; }

focus() { xdotool windowfocus --sync "$1" 2>/dev/null || true; sleep 0.2; }

# Clicks at x,y inside window $1.
click() {
  xdotool mousemove --window "$1" "$2" "$3"
  sleep 0.1
  xdotool click 1
  sleep 0.3
}

# Opens the file-type list of the chooser $1 and moves $2 rows down from the type in force.
pick_type() {
  local geometry width height
  geometry=$(xdotool getwindowgeometry --shell "$1")
  width=$(sed -n 's/^WIDTH=//p' <<<"$geometry")
  height=$(sed -n 's/^HEIGHT=//p' <<<"$geometry")
  click "$1" $((width - 60)) $((height - 70))
  for _ in $(seq "$2"); do xdotool key Down; sleep 0.05; done
  xdotool key Return
  sleep 0.7  # the chooser moves folder and gives the name back after 250 ms
}

media=$work/media
mkdir -p "$media"
touch "$media/A.VOB" "$media/clip.mpv" "$media/notes.txt" "$media/song.AC3"

# In the desktop host's window `w`: every file of the current folder as
# sources (its open dialog, all selected), with a screenshot named `shot`
# of the dialog when given.
add_all_sources() {
  local w=$1 name=${2:-} d
  focus "$w"
  xdotool key alt+a
  d=$(wait_window "Open File")
  focus "$d"
  click "$d" 300 83
  xdotool key ctrl+a; sleep 0.3
  if [ -n "$name" ]; then shot "$d" "$name"; fi
  xdotool key Return
  wait_gone "Open File"
}

# In the desktop host's window `w`: "Join to..." with `path` typed in its save dialog.
join_to() {
  local w=$1 path=$2 d
  focus "$w"
  xdotool key alt+j
  d=$(wait_window "Save File")
  focus "$d"
  xdotool type --delay 10 "$path"; sleep 0.2
  xdotool key Return
}

case $case in
  open_typed)
    # A path typed into the location field, then Enter.
    start_probe open "$media/"
    w=$(wait_window "Open File")
    focus "$w"
    xdotool key ctrl+l; sleep 0.3
    xdotool type --delay 15 "$media/notes.txt"; sleep 0.3
    shot "$w" open_typed
    xdotool key Return
    expect_line "chosen $media/notes.txt"
    expect_line "filter 1"
    # Patterns match without regard to case: with "Dolby Digital Audio (ac3)"
    # (the 7th type) the list holds song.AC3 alone, and a click on its first
    # row chooses it; the type chosen comes back.
    start_probe open "$media/"
    w=$(wait_window "Open File")
    focus "$w"
    pick_type "$w" 6
    shot "$w" open_type_ac3
    click "$w" 300 83
    xdotool key Return
    expect_line "chosen $media/song.AC3"
    expect_line "filter 7"
    ;;
  open_several)
    # Several files: a click on the first row, a control-click on the third.
    start_probe open "$media/" several
    w=$(wait_window "Open File")
    focus "$w"
    click "$w" 300 83
    xdotool keydown ctrl; click "$w" 300 129; xdotool keyup ctrl
    shot "$w" open_several
    xdotool key Return
    expect_line "chosen $media/A.VOB"
    expect_line "chosen $media/notes.txt"
    ;;
  open_escape)
    start_probe open "$media/"
    w=$(wait_window "Open File")
    focus "$w"
    shot "$w" open_escape
    xdotool key Escape
    expect_line "cancelled"
    ;;
  save_type_folder)
    # Each type has a folder: picking "Video" shows video/, picking "Audio"
    # then shows audio/; the name typed gets the type's extension.
    mkdir -p "$work/video" "$work/audio"
    touch "$work/video/old.mpv" "$work/audio/old.ac3"
    start_probe save "$work/" "$work/video/" "$work/audio/"
    w=$(wait_window "Save File")
    focus "$w"
    pick_type "$w" 1
    shot "$w" save_type_video
    pick_type "$w" 1
    shot "$w" save_type_audio
    xdotool key alt+n; sleep 0.2
    xdotool type --delay 15 "clip"; sleep 0.2
    xdotool key Return
    expect_line "path $work/audio/clip.ac3"
    expect_line "filter 3"
    ;;
  save_overwrite)
    # "take" with the type "Video" is take.mpv, which is there: the question
    # comes; Cancel keeps the chooser up, Replace gives the file.
    mkdir -p "$work/video" "$work/audio"
    touch "$work/video/take.mpv"
    start_probe save "$work/video/take" "$work/video/" "$work/audio/"
    w=$(wait_window "Save File")
    focus "$w"
    pick_type "$w" 1
    xdotool key alt+n; sleep 0.2
    xdotool key Return
    q=$(wait_window "Replace File")
    shot "$q" save_overwrite_question
    xdotool key Escape
    wait_gone "Replace File"
    xdotool search --onlyvisible --name "Save File" >/dev/null || fail "the chooser closed on Cancel"
    focus "$w"
    xdotool key alt+n; sleep 0.2
    xdotool key Return
    q=$(wait_window "Replace File")
    focus "$q"
    xdotool key alt+r
    expect_line "path $work/video/take.mpv"
    expect_line "filter 2"
    ;;
  box_from_worker)
    # A worker asks for the box; it is shown on the user-interface thread,
    # and its button lets the worker go on.
    start_probe box-from-worker "Folder( /media/cdrom ) is a read-only drive. please use other drive."
    w=$(wait_window "vbu_dialog_probe")
    focus "$w"
    shot "$w" box_from_worker
    xdotool key Return
    expect_line "box returned"
    ;;
  host_job)
    # The desktop host's whole job by clicks and keys: sources added in its
    # open dialog, a source that has gone refused in a message box, then the
    # join, its progress, and the destination read back.
    mkdir -p "$work/src" "$work/out"
    for i in 1 2 3; do head -c $((24 * 1048576 + i * 4096)) /dev/urandom >"$work/src/VTS_01_$i.VOB"; done
    cd "$work/src"
    start_program "$host"
    w=$(wait_window "Desktop Host: join sources")
    add_all_sources "$w" host_add_sources
    shot "$w" host_sources
    mv "$work/src/VTS_01_2.VOB" "$work/VTS_01_2.VOB"
    join_to "$w" "$work/out/title"
    b=$(wait_window "^Desktop Host$")
    shot "$b" host_error_box
    wait_line "^Error: Cannot read $work/src/VTS_01_2.VOB. Nothing was written.$"
    focus "$b"
    xdotool key Return
    wait_gone "^Desktop Host$"
    [ ! -e "$work/out/title.vob" ] || fail "a refused job wrote its destination"
    mv "$work/VTS_01_2.VOB" "$work/src/VTS_01_2.VOB"
    join_to "$w" "$work/out/title"
    wait_line "^Joined 3 source(s), .* into $work/out/title.vob .*verified: identical.$" 60
    sleep 0.3
    shot "$w" host_joined
    cat "$work/src/VTS_01_1.VOB" "$work/src/VTS_01_2.VOB" "$work/src/VTS_01_3.VOB" | cmp - "$work/out/title.vob" ||
      fail "the destination is not the sources end to end"
    ;;
  host_cancel)
    # Cancel while the join runs (the host slowed down so that the click
    # comes in time): the task stops, and what the destination lists is there.
    mkdir -p "$work/src" "$work/out"
    for i in 1 2 3; do head -c $((24 * 1048576)) /dev/urandom >"$work/src/VTS_01_$i.VOB"; done
    cd "$work/src"
    start_program "$host" --slow
    w=$(wait_window "Desktop Host: join sources")
    add_all_sources "$w"
    join_to "$w" "$work/out/title"
    wait_gone "Save File"
    sleep 0.6
    shot "$w" host_progress
    focus "$w"
    xdotool key alt+c
    wait_line "^Cancelled: $work/out/title.vob lists [0-9]* segment(s), all of them present.$"
    sleep 0.3
    shot "$w" host_cancelled
    size=$(stat -c %s "$work/out/title.vob")
    [ "$size" -lt $((3 * 24 * 1048576)) ] || fail "the join was not stopped ($size bytes written)"
    ;;
  headless)
    # No display: "cancelled", and one line on standard error that says why.
    unset DISPLAY WAYLAND_DISPLAY
    start_probe open "$media/"
    expect_line "cancelled"
    grep -q "no file dialog shown.*no display" "$work/probe.err" || fail "no line on standard error"
    ;;
  *) echo "unknown case $case"; exit 2 ;;
esac
echo "PASS ($case)"
