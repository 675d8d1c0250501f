#!/usr/bin/env bash
# Installs the Debian packages this project needs to build, test, benchmark and fuzz.
# Idempotent: packages already present are skipped, and nothing is printed when all are there.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libboost-dev libboost-date-time-dev libboost-system-dev
  uuid-dev libxml2-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
)

missing=()
for pkg in "${packages[@]}"; do
  status=$(dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null || true)
  [[ "$status" == "install ok installed" ]] || missing+=("$pkg")
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "installing: ${missing[*]}"
sudo_cmd=()
[[ $(id -u) -eq 0 ]] || sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
