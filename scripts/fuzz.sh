#!/usr/bin/env bash
# Builds the fuzz targets with clang's libFuzzer (plus ASan and UBSan) and runs each for a
# bounded time: SECONDS per target (default 20). Crashes and sanitizer reports fail the run.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-20}
bash scripts/install-deps.sh

build_dir=build-fuzz
CC=clang CXX=clang++ cmake -S . -B "$build_dir" -DKTR_BUILD_TESTS=OFF -DKTR_BUILD_FUZZERS=ON >/dev/null
cmake --build "$build_dir" -j "$(nproc 2>/dev/null || echo 2)"

status=0
for target in "$build_dir"/fuzz/fuzz_*; do
  [[ -x "$target" ]] || continue
  name=$(basename "$target")
  corpus=fuzz/corpus/${name#fuzz_}
  work=$(mktemp -d)
  [[ -d "$corpus" ]] && cp -r "$corpus"/. "$work"/
  [[ $name == fuzz_msg ]] && cp ktr/lib/tests/records/*.xml "$work"/  # every record's full form
  max_len=4096
  [[ $name == fuzz_cache ]] && max_len=20000  # whole cache files: 8 KiB when new
  echo "-- $name for ${seconds}s"
  if ! "$target" -max_total_time="$seconds" -max_len="$max_len" -timeout=10 -rss_limit_mb=2048 \
        -print_final_stats=1 "$work" >"$work.log" 2>&1; then
    tail -n 40 "$work.log"
    status=1
  else
    grep -E 'stat::number_of_executed_units|Done' "$work.log" | tail -n 2 || true
  fi
  rm -rf "$work" "$work.log"
done
exit $status
