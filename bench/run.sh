#!/usr/bin/env bash
# Builds the converter in release, makes the models of the benchmark and prints what converting
# them costs, measured against the floor program. docs/benchmarks.md explains the table.
#
# usage: bench/run.sh [-p PROGRAM] [-s SECONDS] [FAMILY...]
#     -p PROGRAM  measures this converter in place of the one that is built
#     -s SECONDS  for how long each model is measured (default 4)
#     FAMILY      only these families, among them "tiny" (default: all)
#
# Everything stands in build/bench. outputs.sha256 there has the sums of all files that were
# converted, to compare two versions of the converter.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

build=$PWD/build/bench
models=$build/models
program=$build/src/mqf2vxb
seconds=4
while getopts p:s: option; do
    case $option in
    p) program=$(realpath "$OPTARG") ;;
    s) seconds=$OPTARG ;;
    *) exit 2 ;;
    esac
done
shift $((OPTIND - 1))
wanted=" $* "

targets=(make_models floor tiny measure)
if [[ $program == "$build"/* ]]; then
    targets+=(mqf2vxb)
fi
cmake --preset release -B "$build" -DMQF2VXB_BUILD_TESTS=OFF -DMQF2VXB_BUILD_BENCHMARKS=ON >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target "${targets[@]}" >&2
if [[ ! "$models/models.txt" -nt "$build/bench/make_models" ]]; then
    rm -rf "$models"
    "$build/bench/make_models" "$models"
fi

# convert FOLDER [OPTION...]: one conversion, which has to print its banner and nothing else.
convert() {
    local folder=$1 said
    shift
    rm -f "$folder"/out.*
    said=$(cd "$folder" && "$program" "$@" -o out model.mqf | tail -n +4)
    if [[ -n $said || ! -s $folder/out.vxb ]]; then
        printf '%s: not converted\n%s\n' "$folder" "$said" >&2
        exit 1
    fi
}

# measure_model FAMILY SIZE [OPTION...]: prints the bytes of output and the line of "measure" for the
# converter with these options and the floor.
measure_model() {
    local folder=$models/$1/$2 sizes output
    shift 2
    convert "$folder" "$@"
    (cd "$folder" && sha256sum out.*) | sed "s|  |  ${folder#"$models/"}/|" >>"$build/sums.new"
    sizes=()
    for output in "$folder"/out.*; do
        sizes+=("floor.${output##*.}" "$(stat -c %s "$output")")
    done
    cat "$folder"/out.* | wc -c
    "$build/bench/measure" "$seconds" "$folder" out.vxb out.hex floor.vxb floor.hex -- \
        "$program" "$@" -o out model.mqf -- "$build/bench/floor" model.mqf "${sizes[@]}"
    rm -f "$folder"/out.* "$folder"/floor.*
}

# table HEADING LARGEST-RATIO [OPTION...]: one line per family.
table() {
    local heading=$1 most=$2 family size bytes records line
    shift 2
    printf '\n%s\n\n' "$heading"
    printf '%-12s %9s %9s %9s %8s %7s %7s %9s %9s %9s\n' family "input MB" "output MB" seconds \
        MB/s ratio growth exponent "peak MB" "limit MB"
    for family in "${families[@]}"; do
        line=
        while read -r name size bytes records; do
            if [[ $name == "$family" ]]; then
                line+="$size $bytes $records $(measure_model "$family" "$size" "$@") "
            fi
        done <"$models/models.txt"
        # Both sizes on one line, "eighth" first, with 12 words each.
        awk -v family="$family" -v most="$most" '{
            bytes = $14 + $16; growth = $19 / $7
            exponent = log($17 / $5) / log(bytes / ($2 + $4))
            limit = 3 * bytes + 200 * $15
            missed = ($19 > most ? " RATIO" : "") (growth > 1.2 ? " GROWTH" : "") \
                ($23 > limit ? " MEMORY" : "")
            printf "%-12s %9.1f %9.1f %9.4f %8.1f %7.2f %7.2f %9.2f %9.1f %9.1f%s\n", family,
                $14 / 1e6, $16 / 1e6, $17, $14 / 1e6 / $17, $19, growth, exponent, $23 / 1e6,
                limit / 1e6, missed
        }' <<<"${line//$'\n'/ }"
    done
}

# The tiny model is measured from start to end against a C program without any work.
tiny_table() {
    local folder=$models/tiny/full bytes
    convert "$folder"
    bytes=$(stat -c %s "$folder/out.vxb")
    printf '\nA tiny model against a C program that opens, reads and writes the same files\n\n'
    printf '%12s %12s %7s %12s %12s %7s\n' "milliseconds" "C program" ratio "CPU ms" "C program" ratio
    (cd "$folder" && "$build/bench/measure" "$seconds" . out.vxb tiny.vxb -- \
        "$program" -o out model.mqf -- "$build/bench/tiny" tiny.vxb "$bytes" model.* ./*.pxl ./*.clp) |
        awk '{ printf "%12.3f %12.3f %7.2f %12.3f %12.3f %7.2f%s\n", $4 * 1e3, $5 * 1e3, $6,
            $1 * 1e3, $2 * 1e3, $3, ($6 > 2 ? " RATIO" : "") }'
    rm -f "$folder"/out.* "$folder/tiny.vxb"
}

families=()
while read -r name size _; do
    if [[ $size == full && $name != tiny && ($wanted == "  " || $wanted == *" $name "*) ]]; then
        families+=("$name")
    fi
done <"$models/models.txt"

: >"$build/sums.new"
if ((${#families[@]} > 0)); then
    table "Conversion against the floor (ratio at most 1.5, aim 1.2; growth at most 1.2)" 1.5
    table "The same with -bin2cl (ratio at most 2)" 2 -bin2cl out.hex
fi
if [[ $wanted == "  " || $wanted == *" tiny "* ]]; then
    tiny_table
fi
sort -u -k 2 "$build/sums.new" >"$build/outputs.sha256"
rm "$build/sums.new"
