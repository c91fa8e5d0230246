#!/usr/bin/env bash
# A pane's list beside `ls -l` on one folder of 100,000 entries and one of
# 1,000,000 (files of a few sizes, sub-folders and links): the time from
# asking for the folder to the rows being shown, the growth of resident memory
# for those rows, a sort of them by size, and how long a type-ahead key and
# Page Down take to handle. A key typed into the filter's field: how long its
# handling takes, how long until the filtered rows show, and the longest the
# GUI thread was busy with one event meanwhile (a frame is 16.7 ms); nothing
# else filters rows to compare it with. In the big folder, 100,000 files are
# then created while the pane shows it: the time from the last creation to
# the last new row, and the longest the GUI thread was busy with one event
# meanwhile.
# Each is the median of REPEAT runs (default 5), alternating with ls -l in
# the same run.
# Usage: bench/panes.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-5}"
work="$(bench_work panes-bench "${1:-}")"
burst=100000

driver="$(bench_driver kestrin-pane-driver)"

# make_folder FOLDER COUNT: COUNT entries, files of a few sizes, one in 50 a
# sub-folder and one in 97 a link. Sizes are set without writing data, so a
# million entries cost inodes, not gigabytes.
make_folder() {
    [ -f "$1/.complete" ] && return
    echo "Making $2 entries in $1..."
    rm -rf "$1"
    mkdir -p "$1"
    python3 - "$1" "$2" <<'PY'
import os, sys
folder, count = sys.argv[1], int(sys.argv[2])
for i in range(count):
    path = os.path.join(folder, "entry%07d" % i)
    if i % 50 == 0:
        os.mkdir(path)
    elif i % 97 == 0:
        os.symlink("entry%07d" % (i - 1), path)
    else:
        with open(path, "wb") as f:
            f.truncate(i % 5000)
open(os.path.join(folder, ".complete"), "w").close()
PY
}

# value KEY: the driver's figure KEY from "$out".
value() { awk -v key="$1" '$1 == key { print $2 }' <<<"$out"; }
# stat_line LABEL UNIT ARRAY...: the median and the spread of the figures.
stat_line() {
    local label="$1" unit="$2"
    shift 2
    printf '%-10s %10.1f %s   spread %s\n' "$label" "$(printf '%s\n' "$@" | median)" "$unit" \
        "$(printf '%s\n' "$@" | spread)"
}

# bench_folder FOLDER COUNT [--burst N]
bench_folder() {
    local folder="$1" entries="$2" i
    shift 2
    make_folder "$folder" "$entries"
    ls -l "$folder" >/dev/null # warm the caches for both
    local list=() bytes=() sort=() typeahead=() pagedown=() applied=() busy=() ls_times=() rows
    local filterkey=() filter=() filterbusy=()
    for ((i = 0; i < repeat; i++)); do
        out="$("$driver" "$@" "$folder" 2>/dev/null)"
        list+=("$(value list_ms)")
        bytes+=("$(value row_bytes)")
        sort+=("$(value sort_ms)")
        typeahead+=("$(value typeahead_ms)")
        pagedown+=("$(value pagedown_ms)")
        filterkey+=("$(value filterkey_ms)")
        filter+=("$(value filter_ms)")
        filterbusy+=("$(value filterbusy_ms)")
        rows="$(value rows)"
        if [ $# -gt 0 ]; then
            applied+=("$(value burst_ms)")
            busy+=("$(value busy_ms)")
        fi
        ls_times+=("$(awk -v s="$(elapsed ls -l "$folder")" 'BEGIN { print s * 1000 }')")
    done
    local l k
    l=$(printf '%s\n' "${list[@]}" | median)
    k=$(printf '%s\n' "${ls_times[@]}" | median)
    echo "Median of $repeat runs, $(nproc) cores, $entries entries ($rows rows), $(findmnt -no FSTYPE -T "$work") at $work:"
    printf 'listing   kestrin %8.1f ms   ls -l %8.1f ms   kestrin/ls time %5.2f\n' "$l" "$k" \
        "$(awk -v l="$l" -v k="$k" 'BEGIN { print l / k }')"
    printf 'spread    kestrin %s ms   ls -l %s ms\n' "$(printf '%s\n' "${list[@]}" | spread)" \
        "$(printf '%s\n' "${ls_times[@]}" | spread)"
    stat_line memory "bytes resident growth per row" "${bytes[@]}"
    stat_line sort "ms by size" "${sort[@]}"
    stat_line typeahead "ms to handle a key matching no row" "${typeahead[@]}"
    stat_line pagedown "ms to handle Page Down" "${pagedown[@]}"
    stat_line filterkey "ms to handle a key in the filter's field" "${filterkey[@]}"
    stat_line filter "ms from that key to the filtered rows" "${filter[@]}"
    stat_line filterbusy "ms the longest event took meanwhile" "${filterbusy[@]}"
    if [ $# -gt 0 ]; then
        stat_line burst "ms from the last of $burst creations to its row" "${applied[@]}"
        stat_line busy "ms the longest event took meanwhile" "${busy[@]}"
    fi
}

bench_folder "$work/big" 100000
bench_folder "$work/huge" 1000000 --burst "$burst"
