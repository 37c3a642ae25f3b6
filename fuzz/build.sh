#!/usr/bin/env bash
# Builds the fuzz targets with Clang into a folder.
# Usage: build.sh FOLDER [COMPILER FLAG...]
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

folder=$1
shift
scripts/install-packages.sh build tools fuzz
cmake -S . -B "$folder" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_CXX_FLAGS_RELWITHDEBINFO="-O1 -g -D_GLIBCXX_ASSERTIONS" -DCMAKE_CXX_FLAGS="$*" \
    -DMQF2VXB_BUILD_TESTS=OFF -DMQF2VXB_BUILD_TOOLS=ON -DMQF2VXB_BUILD_FUZZERS=ON
cmake --build "$folder" --target fuzzers --parallel "$(nproc)"
