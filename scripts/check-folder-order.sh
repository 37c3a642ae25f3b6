#!/usr/bin/env bash
# Checks that every include of src/ and tools/ points at a folder of a lower floor or stays in its
# own. The floors stand in the table of docs/architecture.md. Prints each include that does not.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

find src tools -type f \( -name '*.h' -o -name '*.cpp' \) -print0 | sort -z |
    xargs -0 awk '
    function fault(where, text) { printf "%s: %s\n", where, text; faults = 1 }

    # A row of the table: | floor | `folder/`, `folder/` | what lives there |
    FILENAME == page {
        if (split($0, cells, "|") >= 4 && cells[2] ~ /^ *[0-9]+ *$/) {
            count = split(cells[3], folders, "`")
            for (i = 2; i <= count; i += 2) {
                sub(/\/$/, "", folders[i])
                floor[folders[i]] = cells[2] + 0
                ++known
            }
        }
        next
    }

    FNR == 1 {
        if (!known) { fault(page, "it has no table of floors"); exit }
        folder = FILENAME
        sub(/\/[^\/]*$/, "", folder)
        if (!(folder in floor)) fault(FILENAME, folder " has no floor in " page)
    }

    # What the converter and the tools include of themselves stands in quotes, named from src/ or
    # tools/.
    /^#include "/ {
        split($0, parts, "\"")
        target = parts[2]
        sub(/\/?[^\/]*$/, "", target)
        target = (target ~ /^vxbtool/ ? "tools/" : "src/") target
        if (target == folder || !(folder in floor)) next
        if (!(target in floor)) {
            fault(FILENAME ":" FNR, target " has no floor in " page)
        } else if (floor[target] >= floor[folder]) {
            fault(FILENAME ":" FNR, folder " (floor " floor[folder] ") includes " target " (floor " floor[target] ")")
        }
    }

    END { exit faults }
    ' page=docs/architecture.md docs/architecture.md
