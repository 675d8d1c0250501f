#!/usr/bin/env bash
# The main job on a fresh machine: install what is missing, build, and run ktrctl on the
# shipped examples (examples/containers/*.conf and the node's global file examples/node.conf).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -DKTR_BUILD_TESTS=ON >/dev/null
cmake --build build -j "$(nproc 2>/dev/null || echo 2)" >/dev/null
ktrctl=./build/tools/ktrctl/ktrctl

step() { printf '\n$ ktrctl %s\n' "$*"; }

step get examples/containers/101.conf HOSTNAME NUMPROC CPULIMIT ARCH DISK
"$ktrctl" get examples/containers/101.conf HOSTNAME NUMPROC CPULIMIT ARCH DISK

step diff examples/containers/101.conf examples/containers/102.conf
"$ktrctl" diff examples/containers/101.conf examples/containers/102.conf || [[ $? -eq 1 ]]

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp examples/containers/101.conf "$work/101.conf"
step set "$work/101.conf" NUMPROC=300:320 ONBOOT=no
"$ktrctl" set "$work/101.conf" NUMPROC=300:320 ONBOOT=no
diff examples/containers/101.conf "$work/101.conf" || true

step validate examples/containers/101.conf
"$ktrctl" validate examples/containers/101.conf && echo "(no formula violated)"

step validate examples/containers/103.conf
"$ktrctl" validate examples/containers/103.conf || [[ $? -eq 1 ]]

step global get examples/node.conf lockdir template agent_log
"$ktrctl" global get examples/node.conf lockdir template agent_log

step read examples/containers/102.conf "(first lines)"
"$ktrctl" read examples/containers/102.conf | head -n 12
