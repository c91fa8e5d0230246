#!/usr/bin/env bash
# The viewer on three big files: a 1 GiB log of 12 million lines, a 50 MB
# file of one line, and an 8000 x 8000 PNG. For each: the time to the first
# painted screen, the time from Ctrl+End to the last screen, the growth of
# resident memory, and for the texts a find of a string in the last line
# beside `grep -c` over the same file in the same run; for the picture, also
# the time until all of it is decoded. Each figure is the median of REPEAT
# runs (default 3); the first screen's spread (fastest-slowest) follows it.
# Usage: bench/viewer.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-3}"
work="$(bench_work viewer-bench "${1:-}")"
needle="the-very-last-line"

driver="$(bench_driver kestrin-viewer-driver)"

log="$work/big.log"
if [ ! -f "$log" ]; then
    echo "Making a 1 GiB log of 12 million lines..."
    awk -v needle="$needle" 'BEGIN {
        pad = sprintf("%60s", ""); gsub(/ /, "x", pad)
        for (i = 0; i < 11999999; i++)
            printf "2024-05-01 12:00:%02d host service[%07d]: event %s %08d\n", i % 60, i % 9999999, pad, i
        print "2024-05-01 12:00:00 host service[0000000]: " needle
    }' >"$log"
fi
line="$work/one-line.txt"
if [ ! -f "$line" ]; then
    echo "Making a 50 MB file of one line..."
    awk -v needle="$needle" 'BEGIN {
        printf "["; for (i = 0; i < 1600000; i++) printf "{\"k\":%09d,\"v\":\"abc\"},", i
        printf "\"%s\"]", needle }' >"$line"
fi
picture="$work/picture.png"
[ -f "$picture" ] || "$driver" --png "$picture" 8000 8000

field() { awk -v key="$1" '$1 == key { print $2 }'; }

measure() { # FILE [NEEDLE]
    local file="$1" first=() end=() whole=() rss=() find=() grep_times=() out rows=""
    cat "$file" >/dev/null # the page cache, warm for both
    for ((i = 0; i < repeat; i++)); do
        out="$("$driver" "$@" 2>/dev/null)"
        first+=("$(field first_ms <<<"$out")")
        end+=("$(field end_ms <<<"$out")")
        whole+=("$(field whole_ms <<<"$out")")
        rss+=("$(field rss_mb <<<"$out")")
        rows="$(field rows <<<"$out")"
        if [ $# -gt 1 ]; then
            find+=("$(field find_ms <<<"$out")")
            grep_times+=("$(elapsed grep -c "$2" "$file")")
        fi
    done
    printf '%-16s first screen %7.1f ms (%s)' "$(basename "$file")" \
        "$(printf '%s\n' "${first[@]}" | median)" "$(printf '%s\n' "${first[@]}" | spread)"
    [ -n "${end[0]}" ] && printf '   end %6.1f ms' "$(printf '%s\n' "${end[@]}" | median)"
    [ -n "${whole[0]}" ] && printf '   whole %6.1f ms' "$(printf '%s\n' "${whole[@]}" | median)"
    printf '   memory %7.1f MB' "$(printf '%s\n' "${rss[@]}" | median)"
    [ -n "$rows" ] && printf ' (%s rows)' "$rows"
    if [ $# -gt 1 ]; then
        local f g
        f=$(printf '%s\n' "${find[@]}" | median)
        g=$(printf '%s\n' "${grep_times[@]}" | median)
        printf '\n%-16s find %7.1f ms   grep -c %7.1f ms   find/grep %5.2f' "" "$f" \
            "$(awk -v g="$g" 'BEGIN { print g * 1000 }')" "$(awk -v f="$f" -v g="$g" 'BEGIN { print f / (g * 1000) }')"
    fi
    echo
}

echo "Median of $repeat runs, $(nproc) cores, $(findmnt -no FSTYPE -T "$work") at $work:"
measure "$log" "$needle"
measure "$line" "$needle"
measure "$picture"
