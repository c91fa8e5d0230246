# Shared by the benchmark scripts (sourced): wall times and their median.

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
