#!/usr/bin/env bash
# Runs every command that the README prints, in their order, in a fresh clone of what is committed.
# Each block of commands starts in the clone's folder, as its reader does.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# Below the project's own folder, so that a compiler cache knows its files again.
mkdir -p build
clone=$(mktemp -d "$PWD/build/readme.XXXXXX")
trap 'rm -rf "$clone"' EXIT
git clone -q . "$clone/project"
cd "$clone/project"

# The blocks of the language "sh", one file each.
awk -v folder="$clone" '
    /^```sh$/ { inside = 1; file = sprintf("%s/%02d.sh", folder, ++blocks); next }
    /^```/ { inside = 0 }
    inside { print >file }
    END { if (!blocks) { print "README.md has no commands"; exit 1 } }
' README.md

for block in "$clone"/*.sh; do
    printf -- '-- README.md:\n'
    sed 's/^/$ /' "$block"
    bash -eu "$block" >"$clone/output" 2>&1 || {
        tail -n 40 "$clone/output"
        echo "a command of the README failed"
        exit 1
    }
    tail -n 8 "$clone/output"
done
