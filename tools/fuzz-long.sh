#!/usr/bin/env bash
# The long fuzz run before a release: many seeds of tests/fuzz's harness against the release
# build (SEEDS x CASES zorexp runs, ten times as many cases in process) and fewer against the
# sanitizer build, where each zorexp run takes about 0.5 s; then, when clang is installed, the
# libFuzzer targets of the flowsheet reader and the --set value parser. Prints the outcome
# counts over all seeds; ends with status 1 when any case crashed, hung, drew a sanitizer
# report or got a wrong status. Each seed's log and the files of faulty cases are kept in
# fuzz-findings/.
#
# usage: tools/fuzz-long.sh [SEEDS] [CASES_PER_SEED]     (default 100 seeds x 1000 cases)
# environment: ASAN_SEEDS (default 10), JOBS (parallel seeds, default 2),
#              LIBFUZZER_SECONDS (default 600 per target)
set -euo pipefail
cd "$(dirname "$0")/.."

SEEDS="${1:-100}"
CASES="${2:-1000}"
ASAN_SEEDS="${ASAN_SEEDS:-10}"
JOBS="${JOBS:-2}"
LIBFUZZER_SECONDS="${LIBFUZZER_SECONDS:-600}"
mkdir -p fuzz-findings

cmake -S . -B build-asan -DCMAKE_BUILD_TYPE=Debug -DZX_SANITIZE=ON -DZX_BENCH=OFF > /dev/null
cmake --build build-asan -j"$JOBS" --target fuzz_host zorexp_cli Morvanex220_1 > /dev/null
cmake -S . -B build-release -DCMAKE_BUILD_TYPE=Release > /dev/null
cmake --build build-release -j"$JOBS" --target fuzz_host zorexp_cli Morvanex220_1 > /dev/null

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
run_seed() {   # build seed
    "$1/bin/fuzz_host" --seed "$2" --cases "$3" --reader-cases "$(( $3 * 10 ))" --keep fuzz-findings/"$(basename "$1")" \
        > "fuzz-findings/$(basename "$1")-seed-$2.log" 2>&1 || true
}
export -f run_seed
seq 1 "$SEEDS" | xargs -P "$JOBS" -I{} bash -c "run_seed build-release {} $CASES"
seq 1 "$ASAN_SEEDS" | xargs -P "$JOBS" -I{} bash -c "run_seed build-asan {} $CASES"

# Totals over all seeds, from the "zorexp runs:" and "in process:" lines of the logs.
status=0
cat fuzz-findings/*-seed-*.log | awk -F'  ' '
    /^(zorexp runs|in process):/ {
        part = substr($1, 1, length($1) - 1)
        for (i = 2; i <= NF; i++) { n = split($i, w, " "); count = w[n]; name = $i; sub(/ [0-9]+$/, "", name)
            total[part ": " name] += count; all[part] += count
            if (name != "clean refusal" && name != "expected status") faults += count } }
    END { for (k in total) print k " " total[k]; for (p in all) print p ": total " all[p]; exit faults > 0 }' || status=1

if command -v clang++ > /dev/null; then
    CXX=clang++ cmake -S . -B build-libfuzzer -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZX_BENCH=OFF -DZX_LIBFUZZER=ON > /dev/null
    cmake --build build-libfuzzer -j"$JOBS" --target fuzz_flowsheet_reader fuzz_set_value > /dev/null
    for target in fuzz_flowsheet_reader fuzz_set_value; do
        mkdir -p "fuzz-findings/$target"
        build-libfuzzer/bin/$target -max_total_time="$LIBFUZZER_SECONDS" -artifact_prefix="fuzz-findings/$target/" \
            -print_final_stats=1 2>&1 | tail -3 || status=1
    done
fi
exit $status
