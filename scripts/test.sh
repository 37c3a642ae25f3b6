#!/usr/bin/env bash
# Installs what is missing, builds everything in release and runs every test.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

scripts/install-packages.sh build test tools
cmake --preset release -DMQF2VXB_BUILD_TESTS=ON -DMQF2VXB_BUILD_TOOLS=ON
cmake --build --preset release --parallel "$(nproc)"
ctest --preset release --parallel "$(nproc)"
