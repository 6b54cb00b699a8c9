#!/usr/bin/env bash
# Sets up what the tests need, builds the engine twice, optimised and with
# AddressSanitizer/UndefinedBehaviorSanitizer, and runs the whole test suite
# on both builds.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh test
jobs=$(nproc)

cmake -S . -B build -DCMAKE_BUILD_TYPE=Release
cmake --build build -j "$jobs"
(cd build && ctest --output-on-failure -j "$jobs")

cmake -S . -B build-sanitize -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTALVIN_SANITIZE=ON
cmake --build build-sanitize -j "$jobs"
(cd build-sanitize && ctest --output-on-failure -j "$jobs")
