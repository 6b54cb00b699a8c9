#!/usr/bin/env bash
# Sets up what building needs, builds the optimised engine and starts it.
# Arguments go to the engine.
set -euo pipefail
cd "$(dirname "$0")/.."
tools/setup.sh build
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release > /dev/null
cmake --build build -j "$(nproc)" --target talvin > /dev/null
exec build/src/talvin "$@"
