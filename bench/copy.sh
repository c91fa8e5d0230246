#!/usr/bin/env bash
# Kestrin's copy engine beside `cp -a` on the same data in the same run:
#   (a) one 1 GiB file, (b) 20,000 small files with a typed attribute each.
# Each case runs REPEAT times (default 5) per tool, alternating, into a fresh
# target; the median wall time is reported with the ratio to cp.
# Usage: bench/copy.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-5}"
work="$(bench_work bench "${1:-}")"

driver="$(bench_driver kestrin-copy-driver)"

mkdir -p "$work/src"
if [ ! -f "$work/src/big" ]; then
    echo "Making one 1 GiB file..."
    head -c $((1 << 30)) /dev/urandom >"$work/src/big"
fi
if [ ! -d "$work/src/small" ]; then
    echo "Making 20,000 small files with a typed attribute each..."
    python3 - "$work/src/small" <<'PY'
import os, struct, sys
top = sys.argv[1]
os.makedirs(top)
for d in range(100):
    folder = os.path.join(top, "d%03d" % d)
    os.mkdir(folder)
    for f in range(200):
        path = os.path.join(folder, "f%03d.txt" % f)
        with open(path, "wb") as out:
            out.write(os.urandom(512 + (f * 37) % 3500))
        # A string attribute as Kestrin stores it: LE type code 'CSTR', then the text.
        os.setxattr(path, "user.haiku.Meta:note",
                    struct.pack("<I", 0x43535452) + b"bench %d/%d\0" % (d, f))
PY
fi

# run COMMAND...: times the command into a fresh "$work/dst".
run() {
    rm -rf "$work/dst" && mkdir "$work/dst" && sync
    elapsed "$@"
}

bench_case() {
    local name="$1" source="$2" kestrin_times=() cp_times=() i
    for ((i = 0; i < repeat; i++)); do
        kestrin_times+=("$(run "$driver" "$source" "$work/dst")")
        cp_times+=("$(run cp -a "$source" "$work/dst/")")
    done
    local k c
    k=$(printf '%s\n' "${kestrin_times[@]}" | median)
    c=$(printf '%s\n' "${cp_times[@]}" | median)
    printf '%-28s kestrin %8.3fs   cp -a %8.3fs   kestrin/cp time %5.2f\n' "$name" "$k" "$c" \
        "$(awk -v k="$k" -v c="$c" 'BEGIN { print k / c }')"
    printf '%-28s spread  kestrin %s s   cp -a %s s\n' "" \
        "$(printf '%s\n' "${kestrin_times[@]}" | spread)" "$(printf '%s\n' "${cp_times[@]}" | spread)"
}

# The copy must be exact before its speed means anything.
run "$driver" "$work/src/small" "$work/dst" >/dev/null
diff -r "$work/src/small" "$work/dst/small" >/dev/null
copied_note=$(python3 -c "import os,sys; print(os.getxattr(sys.argv[1], 'user.haiku.Meta:note')[4:])" \
    "$work/dst/small/d042/f042.txt")
echo "copied attribute: $copied_note"

echo "Median of $repeat runs each, $(nproc) cores, $(findmnt -no FSTYPE -T "$work") at $work:"
bench_case "(a) one 1 GiB file" "$work/src/big"
bench_case "(b) 20,000 files + attribute" "$work/src/small"
echo "Throughput ratio for (a) is the inverse of the time ratio."
rm -rf "$work/dst"
