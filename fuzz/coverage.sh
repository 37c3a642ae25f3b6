#!/usr/bin/env bash
# Prints how many lines of src/ each fuzz target reaches with its inputs: those of the repository
# and those that earlier runs found.
# Usage: coverage.sh [TARGET...]     (no target: all)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

(($# > 0)) || set -- convert reader text tokens srf pxl clp
folder=build/fuzz-coverage
fuzz/build.sh "$folder" -fprofile-instr-generate -fcoverage-mapping
for target in "$@"; do
    inputs=()
    for corpus in fuzz/corpus fuzz/regressions build/fuzz/corpus; do
        [[ ! -d "$corpus/$target" ]] || inputs+=("$corpus/$target")
    done
    program=$folder/fuzz/fuzz_$target
    LLVM_PROFILE_FILE=$folder/$target.profraw "$program" -runs=0 "${inputs[@]}" 2>/dev/null
    llvm-profdata merge -sparse "$folder/$target.profraw" -o "$folder/$target.profdata"
    echo "== $target: source lines reached"
    llvm-cov report "$program" -instr-profile="$folder/$target.profdata" \
        -show-functions=false -show-region-summary=false -show-branch-summary=false src
done
