#!/usr/bin/env bash
# Kestrin's archives beside Debian's unzip/zip and bsdtar on the same data in
# the same run:
#   (a) listing a zip of 100,000 members into a pane   (unzip -l, bsdtar -tf)
#   (b) unpacking a zip of 20,000 small files         (unzip -q, bsdtar -xf)
#   (c) unpacking a zip of one 1 GiB text file        (unzip -q, bsdtar -xf)
#   (d) packing the 20,000 files, zlib's level 6      (zip -r -q, bsdtar)
# Each tool runs REPEAT times (default 5) per case, the tools alternating,
# into a fresh target. Wall times of whole processes: the median, the spread
# (min-max) and the ratio to the first reference tool.
# Usage: bench/archives.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-5}"
work="$(bench_work archives "${1:-}")"

pane_driver="$(bench_driver kestrin-pane-driver)"
copy_driver="$(bench_driver kestrin-copy-driver)"
src="$work/src" dst="$work/dst"
mkdir -p "$src"

if [ ! -f "$src/list.zip" ]; then
    echo "Making a zip of 100,000 members..."
    python3 - "$src/list.zip" <<'PY'
import sys, zipfile
with zipfile.ZipFile(sys.argv[1], "w", zipfile.ZIP_DEFLATED) as out:
    for i in range(100000):
        out.writestr("d%03d/member%06d.txt" % (i // 100, i), "member %d\n" % i)
PY
fi
if [ ! -d "$src/small" ]; then
    echo "Making 20,000 small files and their zip..."
    python3 - "$src/small" <<'PY'
import os, sys
top = sys.argv[1]
for d in range(100):
    folder = os.path.join(top, "d%03d" % d)
    os.makedirs(folder)
    for f in range(200):
        with open(os.path.join(folder, "f%03d.txt" % f), "w") as out:
            out.write(os.urandom(256 + (f * 37) % 1800).hex())
PY
    (cd "$src" && zip -r -q small.zip small)
fi
if [ ! -f "$src/big.zip" ]; then
    echo "Making a 1 GiB text file and its zip..."
    head -c $((3 << 28)) /dev/urandom | base64 -w 76 >"$src/big.txt"
    truncate -s 1G "$src/big.txt"
    (cd "$src" && zip -q big.zip big.txt && rm big.txt)
fi

fresh() { rm -rf "$dst" && mkdir "$dst" && sync; }

# bench_case LABEL COMMAND...: each COMMAND (a function) timed REPEAT times,
# alternating; the first is Kestrin's, the second the reference.
bench_case() {
    local label="$1" i command
    shift
    declare -A times=()
    for ((i = 0; i < repeat; i++)); do
        for command in "$@"; do
            fresh
            times[$command]+="$(elapsed "$command") "
        done
    done
    echo "$label"
    local reference
    reference=$(tr ' ' '\n' <<<"${times[$2]}" | grep . | median)
    for command in "$@"; do
        local m s
        m=$(tr ' ' '\n' <<<"${times[$command]}" | grep . | median)
        s=$(tr ' ' '\n' <<<"${times[$command]}" | grep . | spread)
        printf '    %-22s median %8.3fs  spread %-17s  ratio to %s %5.2f\n' "$command" "$m" "$s" \
            "$2" "$(awk -v a="$m" -v b="$reference" 'BEGIN { print a / b }')"
    done
}

kestrin_list() { "$pane_driver" --archive "$src/list.zip"; }
unzip_list() { unzip -l "$src/list.zip"; }
bsdtar_list() { bsdtar -tf "$src/list.zip"; }
kestrin_unpack_small() { "$copy_driver" --unpack "$src/small.zip" "$dst" small/; }
unzip_small() { unzip -q "$src/small.zip" -d "$dst"; }
bsdtar_small() { bsdtar -xf "$src/small.zip" -C "$dst"; }
kestrin_unpack_big() { "$copy_driver" --unpack "$src/big.zip" "$dst" big.txt; }
unzip_big() { unzip -q "$src/big.zip" -d "$dst"; }
bsdtar_big() { bsdtar -xf "$src/big.zip" -C "$dst"; }
kestrin_pack() { "$copy_driver" --pack "$src/small" "$dst"; }
zip_pack() { (cd "$src" && zip -r -q "$dst/small.zip" small); }
bsdtar_pack() { bsdtar --format zip -cf "$dst/small.zip" -C "$src" small; }

# What is measured must be right first: the pane shows every folder, the
# unpacked tree is the packed one, and Kestrin's zip unpacks to the source.
rows=$("$pane_driver" --archive "$src/list.zip" | awk '/^rows/ {print $2}')
[ "$rows" = 1001 ] || { echo "the pane showed $rows rows, not 1001" >&2; exit 1; }
fresh && kestrin_unpack_small && diff -r "$src/small" "$dst/small"
fresh && kestrin_pack && unzip -q "$dst/small.zip" -d "$dst/check" && diff -r "$src/small" "$dst/check/small"

in_process=$(for ((i = 0; i < repeat; i++)); do kestrin_list | awk '/^list_ms/ {print $2}'; done)
echo "Median of $repeat runs each, $(nproc) cores, $(findmnt -no FSTYPE -T "$work") at $work:"
bench_case "(a) list 100,000 members" kestrin_list unzip_list bsdtar_list
echo "    (in the pane, from Enter to the rows shown: median $(median <<<"$in_process") ms," \
    "spread $(spread <<<"$in_process") ms)"
bench_case "(b) unpack 20,000 files" kestrin_unpack_small unzip_small bsdtar_small
bench_case "(c) unpack one 1 GiB file" kestrin_unpack_big unzip_big bsdtar_big
bench_case "(d) pack 20,000 files" kestrin_pack zip_pack bsdtar_pack
rm -rf "$dst"
