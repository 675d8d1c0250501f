#!/usr/bin/env bash
# The main job on a fresh machine: install what is missing, build ktrctl, and run it on the
# shipped examples (examples/containers/*.conf, examples/conflicts/*.conf and the node's global
# file examples/node.conf).
# The shipped files are never changed: edits are made on a copy in a temporary folder.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build >/dev/null
cmake --build build -j "$(nproc 2>/dev/null || echo 2)" --target ktrctl >/dev/null
ktrctl=$PWD/build/tools/ktrctl/ktrctl

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp -r examples/containers examples/conflicts examples/node.conf "$work"/
cd "$work"

# Prints the command as typed, then runs it; a negative answer (exit 1) or, where the step says
# so, a refusal (exit 2) is part of the show.
step() {
  local allowed=1
  if [[ $1 == --refused ]]; then allowed=2; shift; fi
  local shown="" arg
  for arg in "$@"; do
    [[ $arg =~ [[:space:]\"\$\`] ]] && arg="'$arg'"
    shown+=" $arg"
  done
  printf '\n$ ktrctl%s\n' "$shown"
  local rc=0
  "$ktrctl" "$@" 2>&1 || rc=$?
  if [[ $rc -ne 0 ]]; then
    [[ $rc -le $allowed ]] || exit "$rc"
    echo "(exit $rc)"
  fi
}

step get containers/101.conf HOSTNAME NUMPROC CPULIMIT DISK
step diff containers/101.conf containers/102.conf
step set --dry-run containers/101.conf NUMPROC=300:320 ONBOOT=no DESCRIPTION='Front end, "blue" pool'
step set containers/101.conf NUMPROC=300:320 ONBOOT=no DESCRIPTION='Front end, "blue" pool'
step get containers/101.conf NUMPROC ONBOOT DESCRIPTION
step --refused set containers/101.conf NUMPROC=lots
step validate containers/102.conf
step validate containers/103.conf
step check containers conflicts
step global get node.conf LOCKDIR TEMPLATE AGENT_LOG
step global set node.conf AGENT_LOG_LEVEL=3
step raw get node.conf AGENT_LOG_LEVEL VE_ROOT
"$ktrctl" read containers/102.conf >102.xml
printf '\n$ ktrctl read containers/102.conf | head -n 8\n'
head -n 8 102.xml
