#!/usr/bin/env bash
# The query engine beside GNU find and fd (Debian's fdfind) on a tree of
# 1,000,000 files in 1,000 folders, warm cache, each staying on the tree's
# device: (a) a name query, (b) a size query, (c) both; then the memory of a
# query that finds every entry. Each time is the median of REPEAT runs
# (default 3), alternating the tools in the same run.
# Usage: bench/query.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-3}"
work="$(bench_work query-bench "${1:-}")"

driver="$(bench_driver kestrin-query-driver)"

tree="$work/tree"
if [ ! -f "$tree/.complete" ]; then
    echo "Making 1,000,000 files in 1,000 folders..."
    rm -rf "$tree"
    mkdir -p "$tree"
    # Every tenth file is 8 KiB, written sparse so the tree takes no time
    # and no room to make; the rest are empty.
    python3 - "$tree" <<'PY'
import os, sys
tree = sys.argv[1]
for d in range(1000):
    folder = os.path.join(tree, "d%03d" % d)
    os.mkdir(folder)
    for f in range(1000):
        fd = os.open(os.path.join(folder, "f%03d%03d" % (d, f)), os.O_CREAT | os.O_WRONLY, 0o644)
        if f % 10 == 0:
            os.ftruncate(fd, 8192)
        os.close(fd)
open(os.path.join(tree, ".complete"), "w").close()
PY
fi
find "$tree" -xdev >/dev/null # warm the caches for all

# run_case LABEL PREDICATE FIND-ARGS... -- FD-ARGS...
run_case() {
    local label="$1" predicate="$2"
    shift 2
    local find_args=() fd_args=()
    while [ "$1" != "--" ]; do find_args+=("$1"); shift; done
    shift
    fd_args=("$@")
    local k=() f=() d=() out found
    for ((i = 0; i < repeat; i++)); do
        out="$("$driver" "$predicate" "$tree")"
        k+=("$(awk '$1 == "query_ms" { print $2 / 1000 }' <<<"$out")")
        found="$(awk '$1 == "found" { print $2 }' <<<"$out")"
        f+=("$(elapsed find "$tree" -xdev "${find_args[@]}")")
        [ ${#fd_args[@]} -gt 0 ] && d+=("$(elapsed fdfind -u --one-file-system "${fd_args[@]}" "$tree")")
    done
    local km fm dm
    km=$(printf '%s\n' "${k[@]}" | median)
    fm=$(printf '%s\n' "${f[@]}" | median)
    printf '%-12s kestrin %6.3f s  find %6.3f s  kestrin/find %5.2f' "$label" "$km" "$fm" \
        "$(awk -v a="$km" -v b="$fm" 'BEGIN { print a / b }')"
    if [ ${#d[@]} -gt 0 ]; then
        dm=$(printf '%s\n' "${d[@]}" | median)
        printf '  fdfind %6.3f s  kestrin/fdfind %5.2f' "$dm" "$(awk -v a="$km" -v b="$dm" 'BEGIN { print a / b }')"
    fi
    printf '  (found %s; find %s)\n' "$found" "$(find "$tree" -xdev "${find_args[@]}" | wc -l)"
}

echo "Median of $repeat runs, $(nproc) cores, $(findmnt -no FSTYPE -T "$work") at $work:"
run_case "(a) name" 'name=="*7*3*"' -name '*7*3*' -- -g '*7*3*'
run_case "(b) size" 'size>=4096' -size +4095c -- --size +4096b .
run_case "(c) both" '(name=="*7*3*")&&(size>=4096)' -name '*7*3*' -size +4095c -- --size +4096b -g '*7*3*'
out="$("$driver" 'name=="*"' "$tree")"
printf 'memory       %s MB resident growth for %s results (the results message included)\n' \
    "$(awk '$1 == "rss_mb" { print $2 }' <<<"$out")" "$(awk '$1 == "found" { print $2 }' <<<"$out")"
