#!/usr/bin/env bash
# Kestrin's FTP client beside curl, moving one 512 MiB file over loopback to
# and from a vsftpd started here on 127.0.0.1 (anonymous, passive, binary).
# Each direction runs REPEAT times (default 5) per tool, alternating; the
# median wall time is reported with the Kestrin/curl throughput ratio.
# Usage: bench/ftp.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
shopt -s inherit_errexit
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-5}"
work="${1:-$(mktemp -d /var/tmp/kestrin-ftp-bench.XXXXXX)}"
size_mib=512

driver="$(bench_driver kestrin-ftp-driver)"

# vsftpd chroots anonymous users and refuses a writable root, so the served
# root is read-only and uploads go to a writable sub-folder.
serve="$work/serve"
mkdir -p "$serve/pub" "$work/empty" "$work/local"
chmod 0555 "$serve"
chmod 0777 "$serve/pub"
if [ ! -f "$work/local/big" ]; then
    echo "Making one $size_mib MiB file..."
    head -c $((size_mib << 20)) /dev/urandom >"$work/local/big"
fi
[ -f "$serve/pub/big" ] || cp "$work/local/big" "$serve/pub/big"
chmod 0644 "$serve/pub/big"

bench_vsftpd "$work" "$serve"
trap 'kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true; rm -rf "$work/serve/pub/up" "$work/dl"' EXIT
url="ftp://127.0.0.1:$port/pub"

# run COMMAND...: times the command after removing what the last run wrote.
run() {
    rm -rf "$work/dl" "$serve/pub/up" && mkdir "$work/dl" && sync
    elapsed "$@"
}

# The four transfers, each writing where `run` has just cleared.
kestrin_download() { "$driver" get "$port" pub/big "$work/dl/big"; }
curl_download() { curl -s -o "$work/dl/big" "$url/big"; }
kestrin_upload() { "$driver" put "$port" pub/up "$work/local/big"; }
curl_upload() { curl -s -T "$work/local/big" "$url/up"; }

# bench_case NAME: kestrin_NAME beside curl_NAME.
bench_case() {
    local name="$1" kestrin_times=() curl_times=() i
    for ((i = 0; i < repeat; i++)); do
        kestrin_times+=("$(run "kestrin_$name")")
        curl_times+=("$(run "curl_$name")")
    done
    local k c
    k=$(printf '%s\n' "${kestrin_times[@]}" | median)
    c=$(printf '%s\n' "${curl_times[@]}" | median)
    printf '%-9s kestrin %7.3fs %6.0f MiB/s   curl %7.3fs %6.0f MiB/s   kestrin/curl throughput %5.2f\n' \
        "$name" "$k" "$(awk -v k="$k" -v s="$size_mib" 'BEGIN { print s / k }')" \
        "$c" "$(awk -v c="$c" -v s="$size_mib" 'BEGIN { print s / c }')" \
        "$(awk -v k="$k" -v c="$c" 'BEGIN { print c / k }')"
    printf '%-9s spread  kestrin %s s   curl %s s\n' "" \
        "$(printf '%s\n' "${kestrin_times[@]}" | spread)" "$(printf '%s\n' "${curl_times[@]}" | spread)"
}

# The transfers must be exact before their speed means anything.
run kestrin_download >/dev/null
cmp "$work/local/big" "$work/dl/big"
run kestrin_upload >/dev/null
cmp "$work/local/big" "$serve/pub/up"
echo "Both directions copied $size_mib MiB exactly."

echo "Median of $repeat runs each, $(nproc) cores, 127.0.0.1, $(findmnt -no FSTYPE -T "$work") at $work:"
bench_case download
bench_case upload
