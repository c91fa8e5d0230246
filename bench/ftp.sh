#!/usr/bin/env bash
# Kestrin's FTP client beside curl, moving one 512 MiB file over loopback to
# and from a vsftpd started here on 127.0.0.1 (anonymous, passive, binary),
# in clear and in explicit TLS (beside curl --ssl-reqd; the server asks data
# connections to resume the control connection's TLS session, and its
# certificate is self-signed, so both take it unverified); then the copy
# engine downloading folders as F5 from an FTP pane does (one of 1,000 small
# files, one of 2 files of 256 MiB) beside `wget -r`, and the big ones beside
# curl too.
# Each case runs REPEAT times (default 5) per tool, alternating; the median
# wall time is reported with the throughput ratio and the spread. CASES
# names the cases to run (default: all of download upload tls_download
# tls_upload many pair).
# Usage: bench/ftp.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
shopt -s inherit_errexit
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-5}"
work="$(bench_work ftp-bench "${1:-}")"
size_mib=512

driver="$(bench_driver kestrin-ftp-driver)"
copy_driver="$(bench_driver kestrin-copy-driver)"

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
if [ ! -d "$serve/pub/many" ]; then
    echo "Making a folder of 1,000 small files and one of 2 files of 256 MiB..."
    mkdir -p "$serve/pub/many.tmp" "$serve/pub/pair.tmp"
    for i in $(seq -w 1000); do head -c $((1024 + 7 * 10#$i)) /dev/urandom >"$serve/pub/many.tmp/f$i"; done
    head -c $((256 << 20)) /dev/urandom >"$serve/pub/pair.tmp/one"
    head -c $((256 << 20)) /dev/urandom >"$serve/pub/pair.tmp/two"
    chmod -R a+rX "$serve/pub/many.tmp" "$serve/pub/pair.tmp"
    mv "$serve/pub/pair.tmp" "$serve/pub/pair"
    mv "$serve/pub/many.tmp" "$serve/pub/many"
fi
many_mib=$(du -sk --apparent-size "$serve/pub/many" | awk '{ print $1 / 1024 }')

# TLS on offer, not forced: the same server serves both kinds of client.
if [ ! -f "$work/cert.pem" ]; then
    openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes -days 3650 \
        -subj /CN=kestrin-bench -keyout "$work/key.pem" -out "$work/cert.pem" 2>/dev/null
fi
bench_vsftpd "$work" "$serve" "ssl_enable=YES
allow_anon_ssl=YES
force_anon_logins_ssl=NO
force_anon_data_ssl=NO
require_ssl_reuse=YES
rsa_cert_file=$work/cert.pem
rsa_private_key_file=$work/key.pem"
trap 'kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true; rm -rf "$work/serve/pub/up" "$work/dl"' EXIT
url="ftp://127.0.0.1:$port/pub"

# run COMMAND...: times the command after removing what the last run wrote.
run() {
    rm -rf "$work/dl" "$serve/pub/up" && mkdir "$work/dl" && sync
    elapsed "$@"
}

# The transfers, each writing where `run` has just cleared.
kestrin_download() { "$driver" get "$port" pub/big "$work/dl/big"; }
curl_download() { curl -s -o "$work/dl/big" "$url/big"; }
kestrin_upload() { "$driver" put "$port" pub/up "$work/local/big"; }
curl_upload() { curl -s -T "$work/local/big" "$url/up"; }
kestrin_tls_download() { "$driver" get "$port" pub/big "$work/dl/big" tls; }
curl_tls_download() { curl -s --ssl-reqd -k -o "$work/dl/big" "$url/big"; }
kestrin_tls_upload() { "$driver" put "$port" pub/up "$work/local/big" tls; }
curl_tls_upload() { curl -s --ssl-reqd -k -T "$work/local/big" "$url/up"; }
kestrin_many() { "$copy_driver" --download "$port" pub "$work/dl" many/; }
wget_many() { wget -q -r -nH --cut-dirs=1 -P "$work/dl" "$url/many/"; }
kestrin_pair() { "$copy_driver" --download "$port" pub "$work/dl" pair/; }
wget_pair() { wget -q -r -nH --cut-dirs=1 -P "$work/dl" "$url/pair/"; }
# curl in a loop: one invocation with every file's URL, so that it keeps its
# connection from file to file as the others do. Only for the big files: over
# 1,000 small ones it took 26 to 155 s here, a reference of no use.
curl_folder() {
    local args=() file
    for file in "$serve/pub/$1"/*; do
        args+=(-o "$work/dl/$1/${file##*/}" "$url/$1/${file##*/}")
    done
    curl -s --create-dirs "${args[@]}"
}
curl_pair() { curl_folder pair; }

cases="${CASES:-download upload tls_download tls_upload many pair}"
# bench_case NAME MIB TOOL: kestrin_NAME beside TOOL_NAME, moving MIB MiB,
# when CASES names it.
bench_case() {
    local name="$1" mib="$2" tool="$3" kestrin_times=() tool_times=() i
    chosen "$name" || return 0
    for ((i = 0; i < repeat; i++)); do
        kestrin_times+=("$(run "kestrin_$name")")
        tool_times+=("$(run "${tool}_$name")")
    done
    local k c
    k=$(printf '%s\n' "${kestrin_times[@]}" | median)
    c=$(printf '%s\n' "${tool_times[@]}" | median)
    printf '%-12s kestrin %7.3fs %6.0f MiB/s   %-4s %7.3fs %6.0f MiB/s   throughput ratio %5.2f   time ratio %5.2f\n' \
        "$name" "$k" "$(awk -v k="$k" -v s="$mib" 'BEGIN { print s / k }')" "$tool" \
        "$c" "$(awk -v c="$c" -v s="$mib" 'BEGIN { print s / c }')" \
        "$(awk -v k="$k" -v c="$c" 'BEGIN { print c / k }')" "$(awk -v k="$k" -v c="$c" 'BEGIN { print k / c }')"
    printf '%-12s spread  kestrin %s s   %-4s %s s\n' "" \
        "$(printf '%s\n' "${kestrin_times[@]}" | spread)" "$tool" "$(printf '%s\n' "${tool_times[@]}" | spread)"
}

# chosen NAME: whether CASES names the case.
chosen() { case " $cases " in *" $1 "*) return 0 ;; esac; return 1; }

# The transfers must be exact before their speed means anything.
for direction in download tls_download; do
    chosen $direction || continue
    run kestrin_$direction >/dev/null
    cmp "$work/local/big" "$work/dl/big"
done
for direction in upload tls_upload; do
    chosen $direction || continue
    run kestrin_$direction >/dev/null
    cmp "$work/local/big" "$serve/pub/up"
done
if chosen many; then
    run kestrin_many >/dev/null
    diff -r "$serve/pub/many" "$work/dl/many"
    run wget_many >/dev/null
    diff -r "$serve/pub/many" "$work/dl/many"
fi
if chosen pair; then
    run kestrin_pair >/dev/null
    diff -r "$serve/pub/pair" "$work/dl/pair"
fi
echo "Every transfer chosen ($cases) arrived exactly."

echo "Median of $repeat runs each, $(nproc) cores, 127.0.0.1, $(findmnt -no FSTYPE -T "$work") at $work:"
bench_case download "$size_mib" curl
bench_case upload "$size_mib" curl
bench_case tls_download "$size_mib" curl
bench_case tls_upload "$size_mib" curl
bench_case many "$many_mib" wget
bench_case pair 512 wget
bench_case pair 512 curl
