#!/usr/bin/env bash
# Installs the Debian packages that the project needs and that are missing.
# Usage: install-packages.sh [build] [test] [tools] [check] [fuzz]     (no argument: all sets)
set -euo pipefail

build_packages=(g++ cmake ninja-build)
test_packages=(chromium libgtest-dev libgmock-dev make)
tools_packages=(
    libcli11-dev libfmt-dev nlohmann-json3-dev
    libassimp-dev libstb-dev libimagequant-dev libmeshoptimizer-dev libtinygltf-dev
    libjpeg62-turbo-dev libpng-dev libegl-dev libgles-dev libegl1 libgl1-mesa-dri
)
check_packages=(
    git ccache clang-format clang-tidy dpkg-dev file libbenchmark-dev lintian python3
    assimp-testmodels
)
fuzz_packages=(clang libclang-rt-14-dev llvm)
# The page of vxbtool view is built with npm, which need not have come as a package.
command -v node >/dev/null || tools_packages+=(nodejs)
command -v npm >/dev/null || tools_packages+=(npm)

if (($# == 0)); then
    set -- build test tools check fuzz
fi
wanted=()
for set_name in "$@"; do
    case "$set_name" in
    build) wanted+=("${build_packages[@]}") ;;
    test) wanted+=("${test_packages[@]}") ;;
    tools) wanted+=("${tools_packages[@]}") ;;
    check) wanted+=("${check_packages[@]}") ;;
    fuzz) wanted+=("${fuzz_packages[@]}") ;;
    *)
        echo "usage: $0 [build] [test] [tools] [check] [fuzz]" >&2
        exit 2
        ;;
    esac
done

if ! command -v dpkg-query >/dev/null; then
    echo "Not a Debian system; these packages or their like are needed: ${wanted[*]}"
    exit 0
fi

missing=()
for package in "${wanted[@]}"; do
    state=$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)
    if [[ "$state" != installed ]]; then
        missing+=("$package")
    fi
done
if ((${#missing[@]} == 0)); then
    exit 0
fi

echo "Installing ${missing[*]}"
as_root=(env DEBIAN_FRONTEND=noninteractive)
if ((EUID != 0)); then
    if ! command -v sudo >/dev/null; then
        echo "Neither root nor sudo: install these packages first: ${missing[*]}" >&2
        exit 1
    fi
    as_root=(sudo "${as_root[@]}")
fi
apt=("${as_root[@]}" apt-get -qq -o Acquire::Retries=3 -o Dpkg::Use-Pty=0)
"${apt[@]}" update
"${apt[@]}" install -y --no-install-recommends "${missing[@]}" </dev/null >/dev/null
