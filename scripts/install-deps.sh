#!/usr/bin/env bash
# Installs the Debian packages this project needs to build, test, benchmark and fuzz; with
# --packaging also what building and checking the Debian packages needs (scripts/package-check.sh).
# Idempotent: packages already present are skipped, and nothing is printed when all are there.
set -euo pipefail

packages=(
  build-essential cmake pkg-config
  libboost-dev libboost-date-time-dev libboost-system-dev
  uuid-dev libxml2-dev
  libgtest-dev libgmock-dev libbenchmark-dev
  clang libclang-rt-14-dev
)
if [[ "${1:-}" == "--packaging" ]]; then
  # CPack's dependency computation (dpkg-shlibdeps from dpkg-dev) tells binaries by `file`.
  packages+=(dpkg-dev file lintian)
fi

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
