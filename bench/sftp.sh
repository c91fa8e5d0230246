#!/usr/bin/env bash
# Kestrin's SFTP transfers beside OpenSSH's sftp (batch mode) and scp, against
# one sshd started here on 127.0.0.1 with keys of its own: one 512 MiB file
# down and up, and a folder of 1,000 small files down and up, each through
# the copy engine as F5 between an SFTP pane and a local folder runs it.
# All three clients log in with the same user key and check the same host
# key. Each case runs REPEAT times (default 5) per tool, alternating; the
# median wall time is reported with the throughput ratio and the spread.
# CASES names the cases to run (default: all of download upload many_down
# many_up).
# Usage: bench/sftp.sh [work folder]   (default: a temporary folder in /var/tmp)
set -euo pipefail
shopt -s inherit_errexit
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
# shellcheck source=common.sh
source "$root/bench/common.sh"
repeat="${REPEAT:-5}"
work="$(bench_work sftp-bench "${1:-}")"
size_mib=512

copy_driver="$(bench_driver kestrin-copy-driver)"

serve="$work/serve"
mkdir -p "$serve" "$work/local" "$work/home/.ssh"
if [ ! -f "$work/local/big" ]; then
    echo "Making one $size_mib MiB file..."
    head -c $((size_mib << 20)) /dev/urandom >"$work/local/big"
fi
[ -f "$serve/big" ] || cp "$work/local/big" "$serve/big"
if [ ! -d "$serve/many" ]; then
    echo "Making a folder of 1,000 small files..."
    mkdir -p "$serve/many.tmp"
    for i in $(seq -w 1000); do head -c $((1024 + 7 * 10#$i)) /dev/urandom >"$serve/many.tmp/f$i"; done
    mv "$serve/many.tmp" "$serve/many"
fi
[ -d "$work/local/many" ] || cp -a "$serve/many" "$work/local/many"
many_mib=$(du -sk --apparent-size "$serve/many" | awk '{ print $1 / 1024 }')

# The server's host key and the user's key, made once; the bench's own home
# holds the key and the host's line, so nothing of the user's is read.
user="$(id -un)"
ssh_dir="$work/home/.ssh"
for key in "$work/host" "$ssh_dir/id_ed25519"; do
    [ -f "$key" ] || ssh-keygen -q -t ed25519 -N "" -C kestrin-bench -f "$key"
done
cp "$ssh_dir/id_ed25519.pub" "$work/authorized_keys"
port="${SFTP_PORT:-$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')}"
echo "[127.0.0.1]:$port $(cut -d' ' -f1-2 "$work/host.pub")" >"$ssh_dir/known_hosts"
cat >"$work/sshd_config" <<CONF
ListenAddress 127.0.0.1:$port
HostKey $work/host
AuthorizedKeysFile $work/authorized_keys
StrictModes no
UsePAM no
PasswordAuthentication no
KbdInteractiveAuthentication no
PermitRootLogin prohibit-password
Subsystem sftp internal-sftp
LogLevel ERROR
PidFile none
CONF
# sshd started by root insists on its privilege separation folder.
[ "$(id -u)" != 0 ] || mkdir -p /run/sshd
/usr/sbin/sshd -D -e -f "$work/sshd_config" 2>"$work/sshd.log" &
server=$!
trap 'kill "$server" 2>/dev/null || true; wait "$server" 2>/dev/null || true; rm -rf "$serve/up" "$work/dl"' EXIT
for _ in $(seq 50); do
    (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null && break
    sleep 0.1
done

export HOME="$work/home" USER="$user"
unset SSH_AUTH_SOCK
ssh_options=(-o BatchMode=yes -o StrictHostKeyChecking=yes -o "UserKnownHostsFile=$ssh_dir/known_hosts"
    -i "$ssh_dir/id_ed25519" -P "$port")
remote="$user@127.0.0.1"

# run COMMAND...: times the command after removing what the last run wrote.
run() {
    rm -rf "$work/dl" "$serve/up" && mkdir "$work/dl" "$serve/up" && sync
    elapsed "$@"
}

# sftp_batch COMMAND: one sftp session that runs the command.
sftp_batch() { echo "$1" | sftp -q "${ssh_options[@]}" -b - "$remote"; }

kestrin_download() { "$copy_driver" --sftp-download "$port" "$serve" "$work/dl" big; }
sftp_download() { sftp_batch "get $serve/big $work/dl/big"; }
scp_download() { scp -q "${ssh_options[@]}" "$remote:$serve/big" "$work/dl/big"; }
kestrin_upload() { "$copy_driver" --sftp-upload "$port" "$serve/up" "$work/local/big"; }
sftp_upload() { sftp_batch "put $work/local/big $serve/up/big"; }
scp_upload() { scp -q "${ssh_options[@]}" "$work/local/big" "$remote:$serve/up/big"; }
kestrin_many_down() { "$copy_driver" --sftp-download "$port" "$serve" "$work/dl" many/; }
sftp_many_down() { sftp_batch "get -r $serve/many $work/dl/many"; }
scp_many_down() { scp -q -r "${ssh_options[@]}" "$remote:$serve/many" "$work/dl/many"; }
kestrin_many_up() { "$copy_driver" --sftp-upload "$port" "$serve/up" "$work/local/many"; }
sftp_many_up() { sftp_batch "put -r $work/local/many $serve/up/many"; }
scp_many_up() { scp -q -r "${ssh_options[@]}" "$work/local/many" "$remote:$serve/up/many"; }

cases="${CASES:-download upload many_down many_up}"
chosen() { case " $cases " in *" $1 "*) return 0 ;; esac; return 1; }

# The transfers must be exact before their speed means anything.
if chosen download; then run kestrin_download >/dev/null; cmp "$serve/big" "$work/dl/big"; fi
if chosen upload; then run kestrin_upload >/dev/null; cmp "$work/local/big" "$serve/up/big"; fi
if chosen many_down; then run kestrin_many_down >/dev/null; diff -r "$serve/many" "$work/dl/many"; fi
if chosen many_up; then run kestrin_many_up >/dev/null; diff -r "$work/local/many" "$serve/up/many"; fi
echo "Every transfer chosen ($cases) arrived exactly."

# bench_case NAME MIB: kestrin_NAME beside sftp_NAME and scp_NAME, moving
# MIB MiB, when CASES names it. Each tool's times are one list of words,
# split again where they are read.
# shellcheck disable=SC2086
bench_case() {
    local name="$1" mib="$2" i tool
    chosen "$name" || return 0
    local -A times=()
    for ((i = 0; i < repeat; i++)); do
        for tool in kestrin sftp scp; do
            times[$tool]+="$(run "${tool}_$name") "
        done
    done
    local k
    k=$(printf '%s\n' ${times[kestrin]} | median)
    printf '%-10s kestrin %7.3fs %6.0f MiB/s  spread %s s\n' "$name" "$k" \
        "$(awk -v t="$k" -v s="$mib" 'BEGIN { print s / t }')" "$(printf '%s\n' ${times[kestrin]} | spread)"
    for tool in sftp scp; do
        local t
        t=$(printf '%s\n' ${times[$tool]} | median)
        printf '%-10s %-7s %7.3fs %6.0f MiB/s  spread %s s  throughput ratio %5.2f\n' "" "$tool" "$t" \
            "$(awk -v t="$t" -v s="$mib" 'BEGIN { print s / t }')" "$(printf '%s\n' ${times[$tool]} | spread)" \
            "$(awk -v k="$k" -v t="$t" 'BEGIN { print t / k }')"
    done
}

echo "Median of $repeat runs each, $(nproc) cores, 127.0.0.1, $(findmnt -no FSTYPE -T "$work") at $work:"
bench_case download "$size_mib"
bench_case upload "$size_mib"
bench_case many_down "$many_mib"
bench_case many_up "$many_mib"
