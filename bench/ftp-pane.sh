#!/usr/bin/env bash
# An FTP pane listing a remote folder of 10,000 entries beside curl, against
# a vsftpd started here on 127.0.0.1 (anonymous, passive): the time from
# asking for the session (connect, log in, change folder, PWD, LIST) to the
# rows being shown, beside `curl --list-only` (NLST) and curl's LIST of the
# same folder, each a whole connection too. Medians of REPEAT runs
# (default 5), alternating.
# Usage: bench/ftp-pane.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
shopt -s inherit_errexit
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-5}"
work="$(bench_work ftp-pane-bench "${1:-}")"
entries=10000

driver="$(bench_driver kestrin-pane-driver)"

serve="$work/serve"
mkdir -p "$serve/pub/many" "$work/empty" "$work/home/.config/Kestrin"
chmod 0555 "$serve"
if [ ! -f "$serve/pub/many/.complete" ]; then
    echo "Making $entries entries..."
    python3 - "$serve/pub/many" "$entries" <<'PY'
import os, sys
folder, count = sys.argv[1], int(sys.argv[2])
for i in range(count):
    path = os.path.join(folder, "entry%05d" % i)
    if i % 50 == 0:
        os.mkdir(path)
    else:
        with open(path, "wb") as f:
            f.write(b"x" * (i % 5000))
open(os.path.join(folder, ".complete"), "w").close()
PY
fi

bench_vsftpd "$work" "$serve"
trap 'kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true' EXIT
url="ftp://127.0.0.1:$port/pub/many/"
printf 'Host=127.0.0.1\nPort=%s\nUser=anonymous\nPass=bench@\nRemoteDir=pub/many\nLocalDir=\n' \
    "$port" >"$work/home/.config/Kestrin/bench.ftp"

# The pane's time is its own measure (request to rows shown); the process
# start-up is not counted, as curl's connection is.
pane_list() { HOME="$work/home" XDG_CONFIG_HOME="" "$driver" --ftp bench.ftp 2>/dev/null; }

pane=() nlst=() list=()
for ((i = 0; i < repeat; i++)); do
    out="$(pane_list)"
    pane+=("$(awk '$1 == "list_ms" { print $2 / 1000 }' <<<"$out")")
    rows="$(awk '$1 == "rows" { print $2 }' <<<"$out")"
    nlst+=("$(elapsed curl -s --list-only "$url")")
    list+=("$(elapsed curl -s "$url")")
done
p=$(printf '%s\n' "${pane[@]}" | median)
n=$(printf '%s\n' "${nlst[@]}" | median)
l=$(printf '%s\n' "${list[@]}" | median)
echo "Median of $repeat runs, $(nproc) cores, 127.0.0.1, $entries entries ($rows rows shown):"
printf 'kestrin pane %7.3fs   curl --list-only %7.3fs   curl LIST %7.3fs   pane/curl LIST %5.2f\n' \
    "$p" "$n" "$l" "$(awk -v p="$p" -v l="$l" 'BEGIN { print p / l }')"
printf 'spread       kestrin %s s   curl --list-only %s s   curl LIST %s s\n' \
    "$(printf '%s\n' "${pane[@]}" | spread)" "$(printf '%s\n' "${nlst[@]}" | spread)" \
    "$(printf '%s\n' "${list[@]}" | spread)"
