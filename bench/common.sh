# Shared by the benchmark scripts (sourced after they set `root`): building a
# driver, wall times and their median.

# bench_driver TARGET: the release benchmark build of TARGET (a driver of
# bench/, or one of Kestrin's own programs), made after the machine has what
# Kestrin needs; prints the executable's path.
bench_driver() {
    local build="$root/build/bench"
    "$root/scripts/setup" bench >&2
    cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DKESTRIN_TESTS=OFF \
        -DKESTRIN_BENCH=ON >/dev/null
    cmake --build "$build" -j "$(nproc)" --target "$1" >/dev/null
    if [ -x "$build/bench/$1" ]; then echo "$build/bench/$1"; else echo "$build/src/$1"; fi
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
