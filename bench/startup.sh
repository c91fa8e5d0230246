#!/usr/bin/env bash
# Kestrin's start-up with two panes on folders of 1,000 entries each: the
# time from main to the first paint of the main window and to both panes
# filled, as Kestrin measures it (KESTRIN_STARTUP_MARKER), and the whole
# process from exec to its end at that marker, offscreen and on a virtual X
# display, with no session bus and with one (a private dbus-daemon, as a
# desktop has: Kestrin then claims its name before its window opens). Beside it, `xterm -e true` on the same display: a program that
# maps a window and ends. Warm runs (REPEAT, default 10), then cold ones
# (COLD, default 3) with the page cache dropped first, when this is root and
# may; otherwise that is said and cold runs are skipped.
# Usage: bench/startup.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-10}"
cold="${COLD:-3}"
work="$(bench_work startup-bench "${1:-}")"

kestrin="$(bench_driver kestrin)"

home="$work/home"
mkdir -p "$home/.config/Kestrin"
for pane in left right; do
    if [ ! -f "$work/$pane.complete" ]; then
        rm -rf "${work:?}/$pane"
        mkdir -p "$work/$pane"
        for i in $(seq -w 1 1000); do
            if [ $((10#$i % 20)) -eq 0 ]; then mkdir "$work/$pane/folder$i"; else echo "$i" >"$work/$pane/file$i.txt"; fi
        done
        touch "$work/$pane.complete"
    fi
done
# The same two panes on every start: the settings are written afresh each time.
settings() {
    printf 'Left=10\nTop=40\nWidth=1200\nHeight=700\nNumPanes=2\nPane0=%s\nPane1=%s\n' \
        "$work/left" "$work/right" >"$home/.config/Kestrin/Kestrin.pref"
}

display=90
while [ -e "/tmp/.X11-unix/X$display" ] || [ -e "/tmp/.X$display-lock" ]; do display=$((display + 1)); done
Xvfb ":$display" -screen 0 1280x800x24 -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
trap 'kill "$xvfb" 2>/dev/null; wait 2>/dev/null' EXIT
for _ in $(seq 100); do [ -e "/tmp/.X11-unix/X$display" ] && break; sleep 0.1; done

can_drop=no
if [ "$(id -u)" -eq 0 ] && (sync && echo 3 >/proc/sys/vm/drop_caches) 2>/dev/null; then can_drop=yes; fi

read -r bus bus_pid <<<"$(dbus-daemon --session --fork --print-address=1 --print-pid=1 | tr '\n' ' ')"
trap 'kill "$xvfb" "$bus_pid" 2>/dev/null; wait 2>/dev/null' EXIT

# run_kestrin PLATFORM [BUS]: one start; prints "paint filled wall" in ms.
run_kestrin() {
    settings
    local start end out
    start=$(seconds)
    out="$(env -u DBUS_SESSION_BUS_ADDRESS ${2:+DBUS_SESSION_BUS_ADDRESS="$2"} HOME="$home" \
        XDG_CONFIG_HOME= XDG_RUNTIME_DIR="$work" QT_QPA_PLATFORM="$1" DISPLAY=":$display" \
        KESTRIN_STARTUP_MARKER=1 "$kestrin" 2>/dev/null)"
    end=$(seconds)
    awk -v a="$start" -v b="$end" \
        -v p="$(awk '$2 == "first-paint" { print $3 }' <<<"$out")" \
        -v f="$(awk '$2 == "panes-filled" { print $3 }' <<<"$out")" \
        'BEGIN { printf "%s %s %.1f\n", p, f, (b - a) * 1000 }'
}
run_xterm() {
    awk -v s="$(elapsed env DISPLAY=":$display" xterm -e true)" 'BEGIN { printf "%.1f\n", s * 1000 }'
}

# measure LABEL COUNT DROP: COUNT rounds of each program, alternating.
measure() {
    local label="$1" count="$2" drop="$3" i
    local paint=() filled=() offscreen=() xcb=() xcbpaint=() xterm=() buspaint=() buswall=()
    for ((i = 0; i < count; i++)); do
        [ "$drop" = yes ] && sync && echo 3 >/proc/sys/vm/drop_caches
        read -r p f w <<<"$(run_kestrin offscreen)"
        paint+=("$p") filled+=("$f") offscreen+=("$w")
        [ "$drop" = yes ] && sync && echo 3 >/proc/sys/vm/drop_caches
        read -r p f w <<<"$(run_kestrin xcb)"
        xcbpaint+=("$p") xcb+=("$w")
        [ "$drop" = yes ] && sync && echo 3 >/proc/sys/vm/drop_caches
        read -r p f w <<<"$(run_kestrin offscreen "$bus")"
        buspaint+=("$p") buswall+=("$w")
        [ "$drop" = yes ] && sync && echo 3 >/proc/sys/vm/drop_caches
        xterm+=("$(run_xterm)")
    done
    row() { printf '  %-44s %8.1f ms   spread %s ms\n' "$1" "$(printf '%s\n' "${@:2}" | median)" \
        "$(printf '%s\n' "${@:2}" | spread)"; }
    echo "$label, median of $count:"
    row "kestrin offscreen: main to first paint" "${paint[@]}"
    row "kestrin offscreen: main to both panes filled" "${filled[@]}"
    row "kestrin offscreen: whole process" "${offscreen[@]}"
    row "kestrin offscreen, session bus: first paint" "${buspaint[@]}"
    row "kestrin offscreen, session bus: whole process" "${buswall[@]}"
    row "kestrin on Xvfb: main to first paint" "${xcbpaint[@]}"
    row "kestrin on Xvfb: whole process" "${xcb[@]}"
    row "xterm -e true on Xvfb: whole process" "${xterm[@]}"
}

echo "$(nproc) cores, two panes of 1,000 entries on $(findmnt -no FSTYPE -T "$work") at $work"
run_kestrin offscreen >/dev/null # the caches warm
measure "Warm" "$repeat" no
if [ "$can_drop" = yes ]; then
    measure "Cold (page cache dropped before each start)" "$cold" yes
else
    echo "Cold: skipped, the page cache can only be dropped by root (and not in every container)."
fi
