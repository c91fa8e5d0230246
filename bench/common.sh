# Shared by the benchmark scripts (sourced after they set `root`): building a
# driver, wall times and their median.

# bench_driver TARGET: the release benchmark build of TARGET, made after the
# machine has what Kestrin needs; prints the executable's path. With
# KESTRIN_BENCH_DRIVERS set, the driver of that folder instead, so that two
# builds can be measured with the same script.
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
    echo "$build/bench/$1"
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
