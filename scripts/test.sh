#!/usr/bin/env bash
# Builds everything with the tests and runs them all. BUILD_DIR picks the build folder
# (default build); KTR_SANITIZE=ON builds with ASan and UBSan.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh

build_dir=${BUILD_DIR:-build}
sanitize=${KTR_SANITIZE:-OFF}
jobs=$(nproc 2>/dev/null || echo 2)

cmake -S . -B "$build_dir" -DKTR_BUILD_TESTS=ON -DKTR_SANITIZE="$sanitize" -DKTR_BUILD_BENCHMARKS=ON >/dev/null
cmake --build "$build_dir" -j "$jobs"

export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
ctest --test-dir "$build_dir" --output-on-failure -j "$jobs"
