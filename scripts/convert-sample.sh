#!/usr/bin/env bash
# Builds the program and converts the example model into build/sample/crawler.vxb.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-packages.sh build

cmake --preset release -DMQF2VXB_BUILD_TESTS=OFF
cmake --build --preset release --target mqf2vxb --parallel "$(nproc)"

# The program opens relative names from the working directory, and the result's name ends at
# the first "." of its path: so it runs inside a copy of the examples, on plain names.
program=$PWD/build/release/src/mqf2vxb
rm -rf build/sample
mkdir -p build/sample
cp -R examples/. build/sample
cd build/sample
rm -f crawler.vxb
"$program" crawler.mqf

# The exit status is 0 after a reported error too; the file tells.
if [[ ! -s crawler.vxb ]]; then
    echo "crawler.vxb was not written" >&2
    exit 1
fi
echo
echo "build/sample/crawler.vxb: $(wc -c <crawler.vxb) bytes, beginning with the words"
od -A d -t x4 --endian=little -N 64 crawler.vxb
