#!/usr/bin/env bash
# Builds the fuzz targets and runs each for a number of seconds of processor time.
# Usage: run.sh SECONDS [TARGET...]     (no target: all)
# New inputs go to build/fuzz/corpus, inputs that show a fault to build/fuzz/findings.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

if (($# == 0)); then
    sed -n '3,4s/^# //p' fuzz/run.sh >&2
    exit 2
fi
seconds=$1
shift
(($# > 0)) || set -- convert reader text tokens srf pxl clp

fuzz/build.sh build/fuzz
export ASAN_OPTIONS=detect_leaks=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

failures=0
for target in "$@"; do
    corpus=build/fuzz/corpus/$target
    findings=build/fuzz/findings/$target
    mkdir -p "$corpus" "$findings"
    seeds=()
    for folder in "fuzz/corpus/$target" "fuzz/regressions/$target"; do
        [[ ! -d "$folder" ]] || seeds+=("$folder")
    done
    # The fuzzer counts seconds of the clock, and a busy machine gives it few of them. A model just below
    # a ceiling, such as 16777216 materials by one range, takes nine of them under the sanitizers.
    spent=0
    status=0
    while ((spent < seconds && status == 0)); do
        TIMEFORMAT=%U
        { used=$({ time "build/fuzz/fuzz/fuzz_$target" -max_total_time=$((seconds - spent)) \
            -max_len=16384 -timeout=30 -rss_limit_mb=2048 -malloc_limit_mb=1024 \
            -dict=fuzz/mqf2vxb.dict -artifact_prefix="$findings/" -print_final_stats=1 \
            "$corpus" "${seeds[@]}" >&3 2>&4; } 2>&1); } 3>&1 4>&2 || status=$?
        used=${used##*$'\n'}
        spent=$((spent + ${used%.*} + 1))
    done
    echo "== $target: $spent s of processor time, status $status"
    ((status == 0)) || failures=$((failures + 1))
done
((failures == 0))
