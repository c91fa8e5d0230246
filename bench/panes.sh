#!/usr/bin/env bash
# A pane's list beside `ls -l` on one folder of 100,000 entries (files of
# a few sizes, sub-folders and links): the time from asking for the folder to
# the rows being shown, the growth of resident memory for those rows, and a
# sort of them by size. Each is the median of REPEAT runs (default 5),
# alternating with ls -l in the same run.
# Usage: bench/panes.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-5}"
work="${1:-$(mktemp -d /var/tmp/kestrin-panes-bench.XXXXXX)}"
entries=100000

driver="$(bench_driver kestrin-pane-driver)"

folder="$work/big"
if [ ! -f "$folder/.complete" ]; then
    echo "Making $entries entries..."
    rm -rf "$folder"
    mkdir -p "$folder"
    python3 - "$folder" "$entries" <<'PY'
import os, sys
folder, count = sys.argv[1], int(sys.argv[2])
for i in range(count):
    path = os.path.join(folder, "entry%06d" % i)
    if i % 50 == 0:
        os.mkdir(path)
    elif i % 97 == 0:
        os.symlink("entry%06d" % (i - 1), path)
    else:
        with open(path, "wb") as f:
            f.write(b"x" * (i % 5000))
open(os.path.join(folder, ".complete"), "w").close()
PY
fi
ls -l "$folder" >/dev/null # warm the caches for both

list=() rss=() sort=() ls_times=()
for ((i = 0; i < repeat; i++)); do
    out="$("$driver" "$folder" 2>/dev/null)"
    list+=("$(awk '$1 == "list_ms" { print $2 }' <<<"$out")")
    rss+=("$(awk '$1 == "rss_mb" { print $2 }' <<<"$out")")
    sort+=("$(awk '$1 == "sort_ms" { print $2 }' <<<"$out")")
    rows="$(awk '$1 == "rows" { print $2 }' <<<"$out")"
    ls_times+=("$(elapsed ls -l "$folder")")
done
l=$(printf '%s\n' "${list[@]}" | median)
m=$(printf '%s\n' "${rss[@]}" | median)
s=$(printf '%s\n' "${sort[@]}" | median)
k=$(printf '%s\n' "${ls_times[@]}" | median)
echo "Median of $repeat runs, $(nproc) cores, $entries entries ($rows rows), $(findmnt -no FSTYPE -T "$work") at $work:"
printf 'listing   kestrin %8.1f ms   ls -l %8.1f ms   kestrin/ls time %5.2f\n' "$l" \
    "$(awk -v k="$k" 'BEGIN { print k * 1000 }')" "$(awk -v l="$l" -v k="$k" 'BEGIN { print l / (k * 1000) }')"
printf 'spread    kestrin %s ms   ls -l %s s\n' "$(printf '%s\n' "${list[@]}" | spread)" \
    "$(printf '%s\n' "${ls_times[@]}" | spread)"
printf 'memory    %.1f MB resident growth for the rows\n' "$m"
printf 'sort      %.1f ms by size\n' "$s"
