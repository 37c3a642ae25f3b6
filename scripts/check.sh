#!/usr/bin/env bash
# The checks that scripts/test.sh leaves out for their time: warnings as errors, the tests under the
# sanitizers, format, lint, the order of the folders, the growth of time and memory, the commands of
# the README and the package.
# shellcheck disable=SC2317  # the functions are called through "stage"
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

jobs=$(nproc)
summary=()
failures=0

# stage HEADING COMMAND...: runs the command, notes how it ended and how long it took, and leaves
# its status in $status. Never call it in a condition: there bash ignores "set -e" all the way down.
stage() {
    local heading=$1 start=$SECONDS result=passed
    shift
    printf '\n== %s\n' "$heading"
    set +e
    (
        set -e
        "$@"
    )
    status=$?
    set -e
    if ((status != 0)); then
        result=FAILED
        failures=$((failures + 1))
    fi
    printf '== %s: %s in %d s\n' "$heading" "$result" $((SECONDS - start))
    summary+=("$(printf '%-8s%4d s  %s' "$result" $((SECONDS - start)) "$heading")")
}

skip() {
    summary+=("$(printf '%-8s        %s' skipped "$1")")
}

build() {
    local preset=$1
    shift
    cmake --preset "$preset" "$@"
    cmake --build --preset "$preset" --parallel "$jobs"
}

run_tests() {
    ctest --preset "$1" --parallel "$jobs"
}

source_files() {
    local folder
    for folder in "$@"; do
        if [[ -d "$folder" ]]; then
            find "$folder" -type f \( -name '*.h' -o -name '*.cpp' \)
        fi
    done | sort
}

check_format() {
    source_files src tools tests bench fuzz |
        xargs -r -d '\n' clang-format --style=file --dry-run -Werror
}

lint_one() {
    local report
    if ! report=$(clang-tidy -p build/release --quiet --warnings-as-errors='*' \
        --extra-arg=-Wno-unknown-warning-option "$1" 2>&1); then
        printf '%s\n' "$report"
        return 1
    fi
}
export -f lint_one

# The compiler's units: a unity build gathers many source files in one of its own. What stands in for
# a part that this build has is named for CMake, and no unit.
lint() {
    local units unit unlisted=0 root
    root=$(pwd -P)
    mapfile -t units < <(sed -n 's/^ *"file": "\([^"]*\)".*/\1/p' build/release/compile_commands.json |
        grep -E "^$root/(build/release/)?(src|tools)/")
    while read -r unit; do
        if ! grep -qsF "/$unit\"" build/release/compile_commands.json "${units[@]}" &&
            ! grep -qsF "${unit#tools/}" tools/CMakeLists.txt tools/*.cmake; then
            echo "$unit is in no CMakeLists.txt"
            unlisted=1
        fi
    done < <(source_files src tools | grep '\.cpp$')
    # shellcheck disable=SC2016  # the inner shell expands it
    printf '%s\n' "${units[@]}" | xargs -d '\n' -n 1 -P "$jobs" bash -c 'lint_one "$1"' lint_one
    return "$unlisted"
}

# The package as Debian's own tools see it, but for its licence, which is not chosen yet, and for the
# list of bugs that only an archive has.
check_package() {
    local package
    rm -f build/release/*.deb
    (cd build/release && cpack)
    package=$(echo build/release/*.deb)
    lintian --allow-root --fail-on error,warning \
        --suppress-tags no-copyright-file,initial-upload-closes-no-bugs "$package"
}

stage "packages" scripts/install-packages.sh build test tools check
. scripts/compiler-cache.sh

stage "release build, warnings as errors" build release -DMQF2VXB_BUILD_TESTS=ON \
    -DMQF2VXB_BUILD_TOOLS=ON -DMQF2VXB_BUILD_BENCHMARKS=ON
release_status=$status

stage "sanitizer build" build sanitize -DMQF2VXB_BUILD_TOOLS=ON
if ((status == 0)); then
    stage "sanitizer tests" run_tests sanitize
else
    skip "sanitizer tests"
fi

stage "format" check_format
stage "order of the folders" scripts/check-folder-order.sh

if ((release_status == 0)); then
    stage "growth of time and memory" fuzz/growth.py build/release/src/mqf2vxb \
        build/release/tools/vxbtool
    stage "real models" scripts/check-real-models.py build/release/tools/vxbtool \
        build/release/tests/surface_distance
    stage "lint" lint
    stage "package" check_package
else
    skip "growth of time and memory"
    skip "real models"
    skip "lint"
    skip "package"
fi

stage "commands of the README" scripts/check-readme.sh

printf '\n== summary, %d s\n' "$SECONDS"
printf '%s\n' "${summary[@]}"
((failures == 0))
