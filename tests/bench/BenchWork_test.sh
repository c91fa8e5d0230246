#!/usr/bin/env bash
# The benchmarks' work folder: one named on the command line that does not
# exist yet is made (with its parents), a relative one becomes absolute, and
# every benchmark script takes its folder that way.
set -euo pipefail
root="$1"
# shellcheck source=../../bench/common.sh
source "$root/bench/common.sh"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
fail() { echo "FAIL: $*"; exit 1; }

made="$(bench_work test "$scratch/not/there yet")"
[ "$made" = "$scratch/not/there yet" ] || fail "named folder came back as '$made'"
[ -d "$made" ] || fail "named folder was not made"
relative="$(cd "$scratch" && bench_work test "rel")"
[ "$relative" = "$scratch/rel" ] && [ -d "$relative" ] || fail "relative folder came back as '$relative'"
temporary="$(bench_work test)"
trap 'rm -rf "$scratch" "$temporary"' EXIT
[ -d "$temporary" ] || fail "no temporary folder"
if (bench_work test /proc/no/such 2>/dev/null); then fail "a folder that cannot be made is not an error"; fi

for script in "$root"/bench/*.sh; do
    [ "$(basename "$script")" = common.sh ] && continue
    grep -q '^work="$(bench_work ' "$script" || fail "$(basename "$script") does not take its folder from bench_work"
done
echo "bench work folders: ok"
