# Shared by the benchmark scripts (sourced after they set `root`): building a
# driver, wall times and their median.

# bench_driver TARGET: the release benchmark build of TARGET (a driver of
# bench/, or one of Kestrin's own programs), made after the machine has what
# Kestrin needs; prints the executable's path. With KESTRIN_BENCH_DRIVERS
# set, the program of that folder instead, so that two builds can be measured
# with the same script.
bench_driver() {
    if [ -n "${KESTRIN_BENCH_DRIVERS:-}" ]; then
        echo "$KESTRIN_BENCH_DRIVERS/$1"
        return
    fi
    local build="$root/build/bench"
    "$root/scripts/setup" bench >&2
    cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKESTRIN_TESTS=OFF \
        -DKESTRIN_BENCH=ON >/dev/null
    cmake --build "$build" -j "$(nproc)" --target "$1" >/dev/null
    if [ -x "$build/bench/$1" ]; then echo "$build/bench/$1"; else echo "$build/src/$1"; fi
}

# bench_work NAME [FOLDER]: the benchmark's work folder as an absolute path:
# FOLDER, made with its parents when it does not exist yet, or a new
# temporary folder named after NAME in /var/tmp.
bench_work() {
    local name="$1" folder="${2:-}"
    if [ -z "$folder" ]; then
        mktemp -d "/var/tmp/kestrin-$name.XXXXXX"
        return
    fi
    mkdir -p -- "$folder" && (cd -- "$folder" && pwd)
}

seconds() { date +%s.%N; }

# elapsed COMMAND...: the command's wall time in seconds; its output is dropped.
elapsed() {
    local start end
    start=$(seconds)
    "$@" >/dev/null
    end=$(seconds)
    awk -v a="$start" -v b="$end" 'BEGIN { print b - a }'
}

# median: the median of the numbers on standard input, one a line.
median() { sort -n | awk '{a[NR]=$1} END {print (NR % 2) ? a[(NR+1)/2] : (a[NR/2] + a[NR/2+1]) / 2}'; }

# spread: "min-max" of the numbers on standard input, one a line.
spread() { sort -n | awk 'NR == 1 {lo = $1} {hi = $1} END {printf "%.3f-%.3f", lo, hi}'; }

# bench_vsftpd WORK SERVE [SETTINGS]: starts vsftpd on 127.0.0.1 serving
# SERVE to anonymous users (its configuration in WORK, which also holds an
# empty folder it needs), with the lines SETTINGS added to its configuration,
# waits until it answers, and sets `port` and `server` (its process id) for
# the caller, who stops it.
bench_vsftpd() {
    local work="$1" serve="$2" settings="${3:-}"
    port="${FTP_PORT:-$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')}"
    cat >"$work/vsftpd.conf" <<CONF
listen=YES
listen_ipv6=NO
listen_address=127.0.0.1
listen_port=$port
background=NO
run_as_launching_user=YES
seccomp_sandbox=NO
secure_chroot_dir=$work/empty
anonymous_enable=YES
no_anon_password=YES
anon_root=$serve
local_enable=NO
write_enable=YES
anon_upload_enable=YES
anon_other_write_enable=YES
anon_umask=022
pasv_enable=YES
pasv_address=127.0.0.1
port_enable=YES
connect_from_port_20=NO
xferlog_enable=NO
dirmessage_enable=NO
$settings
CONF
    "$(command -v vsftpd || echo /usr/sbin/vsftpd)" "$work/vsftpd.conf" &
    server=$!
    for _ in $(seq 50); do
        curl -s --max-time 2 -o /dev/null "ftp://127.0.0.1:$port/" && break
        sleep 0.1
    done
}
