#!/usr/bin/env bash
# The main job on a fresh machine: install what is missing, build, and run the shipped examples.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -DKTR_BUILD_TESTS=ON >/dev/null
cmake --build build -j "$(nproc 2>/dev/null || echo 2)"
./build/examples/ktr-message-demo
