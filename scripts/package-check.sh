#!/usr/bin/env bash
# Checks what a user of the installed library gets, from an already built folder (BUILD_DIR,
# default build; built here when it is not):
#   1. `cmake --install` into a staging prefix; examples/consumer built against it with
#      find_package and with pkg-config, and run on a shipped container file;
#   2. the Debian packages built by CPack, checked with lintian (no error) and for their
#      Depends, unpacked with dpkg -x into a fresh root; ktrctl --version and the consumer
#      (built against the unpacked -dev package, both ways) run from there.
# Every program runs without LD_LIBRARY_PATH, and the check makes sure it loads the project's
# libraries from the prefix or root it was built against: the libraries are found through run
# paths (ktrctl's $ORIGIN/../lib; for the consumers, the one the CMake targets and pkg-config
# give; pkg-config maps the unpacked root's /opt/srn/agent through PKG_CONFIG_SYSROOT_DIR).
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh --packaging

build=$(realpath -m "${BUILD_DIR:-build}")
[[ -f "$build/CMakeCache.txt" ]] || cmake -S . -B "$build" >/dev/null
cmake --build "$build" -j "$(nproc 2>/dev/null || echo 2)" >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
conf=examples/containers/101.conf
expected=$(sed -n 's/^HOSTNAME="\(.*\)"$/\1/p' "$conf")
[[ -n "$expected" ]] || { echo "no HOSTNAME in $conf" >&2; exit 1; }
version=$(sed -n 's/^project(KTRFunctionality VERSION \([0-9.]*\) .*/\1/p' CMakeLists.txt)
major=${version%%.*}

fail() { echo "package-check: $*" >&2; exit 1; }
# run_consumer NAME PROGRAM: runs PROGRAM on the container file without LD_LIBRARY_PATH and
# checks that it prints the file's HOSTNAME.
run_consumer() {
  local name=$1 out
  shift
  out=$(env -u LD_LIBRARY_PATH "$@" "$conf") || fail "$name: exit status $?"
  [[ "$out" == "$expected" ]] || fail "$name printed '$out', expected '$expected'"
  echo "ok: $name prints $out"
}
# libs_from PROGRAM DIR: every library of the project that PROGRAM loads comes from DIR.
libs_from() {
  local program=$1 dir lines name path
  dir=$(realpath "$2")
  lines=$(env -u LD_LIBRARY_PATH ldd "$program" | grep -E 'lib(KTRFunctionality|MBQ[A-Za-z]*)\.so') ||
    fail "$program: ldd shows none of the project's libraries"
  while read -r name _ path _; do
    [[ "$(realpath -m "$(dirname "$path")")" == "$dir" ]] || fail "$program loads $name from $path, not from $dir"
  done <<<"$lines"
}
# build_consumers TAG PREFIX [SYSROOT]: both builds of examples/consumer against PREFIX; the
# pkg-config files under an unpacked root name /opt/srn/agent, and SYSROOT (the root) maps them.
build_consumers() {
  local tag=$1 prefix=$2 sysroot=${3:-}
  cmake -S examples/consumer -B "$work/$tag-cmake" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_FLAGS="-Wall -Wextra -Werror" >/dev/null
  cmake --build "$work/$tag-cmake" >/dev/null
  # Installed, it loses CMake's build-tree run path and keeps the one the package's targets give.
  cmake --install "$work/$tag-cmake" --prefix "$work/$tag-cmake/installed" >/dev/null
  mkdir -p "$work/$tag-pc"
  PKG_CONFIG_SYSROOT_DIR=$sysroot make -s -C examples/consumer PREFIX="$prefix" OUT="$work/$tag-pc" CXXFLAGS="-O2 -Wall -Wextra -Werror" >/dev/null
}

echo "== install into a staging prefix"
stage=$work/stage
cmake --install "$build" --prefix "$stage" >/dev/null
build_consumers stage "$stage"
run_consumer "consumer (find_package, staging prefix)" "$work/stage-cmake/installed/bin/ktr-consumer"
run_consumer "consumer (pkg-config, staging prefix)" "$work/stage-pc/ktr-consumer"
libs_from "$work/stage-cmake/installed/bin/ktr-consumer" "$stage/lib"
libs_from "$work/stage-pc/ktr-consumer" "$stage/lib"

# The package version file: the same major version only, no newer minor than installed.
mkdir -p "$work/versions"
cat >"$work/versions/CMakeLists.txt" <<EOF
cmake_minimum_required(VERSION 3.16)
project(versions LANGUAGES CXX)
foreach(wanted IN ITEMS $((major - 1)).0 $((major + 1)).0 $major.99)
  find_package(KTRFunctionality \${wanted} QUIET)
  if(KTRFunctionality_FOUND)
    message(FATAL_ERROR "a request for \${wanted} accepted \${KTRFunctionality_VERSION}")
  endif()
endforeach()
find_package(KTRFunctionality $major.0 REQUIRED COMPONENTS KTRFunctionality MBQFunctionalityCore MBQMessage MBQCore)
EOF
cmake -S "$work/versions" -B "$work/versions/build" -DCMAKE_PREFIX_PATH="$stage" >/dev/null ||
  fail "the CMake package's version or components are wrong (above)"
echo "ok: find_package accepts $major.0 with every component, refuses $((major - 1)).0, $((major + 1)).0, $major.99"

echo "== Debian packages"
(cd "$build" && cpack -G DEB -B "$work/deb" >"$work/cpack.log" 2>&1) || { cat "$work/cpack.log"; fail "cpack failed"; }
runtime_deb=$(echo "$work"/deb/libktrfunctionality${major}_"$version"_*.deb)
dev_deb=$(echo "$work"/deb/libktrfunctionality-dev_"$version"_*.deb)
[[ -f "$runtime_deb" && -f "$dev_deb" ]] || fail "cpack did not make both packages: $(ls "$work/deb")"
# lintian's remarks stay visible; only its exit status decides.
lintian --fail-on error,warning "$runtime_deb" "$dev_deb" >"$work/lintian.log" 2>&1 || status=$?
grep -v "^running with root privileges" "$work/lintian.log" || true
[[ ${status:-0} -eq 0 ]] || fail "lintian found errors or warnings (above)"
echo "ok: lintian reports no error and no warning"

runtime_depends=$(dpkg-deb -f "$runtime_deb" Depends)
for dependency in libc6 libstdc++6 libxml2 libuuid1; do
  [[ ", $runtime_depends," == *", $dependency "* ]] || fail "runtime Depends lacks $dependency: $runtime_depends"
done
dev_depends=$(dpkg-deb -f "$dev_deb" Depends)
[[ "$dev_depends" == *"libktrfunctionality$major (= $version)"* ]] ||
  fail "dev Depends lacks the runtime package of the same version: $dev_depends"
echo "ok: Depends: $runtime_depends"

root=$work/root
dpkg -x "$runtime_deb" "$root"
dpkg -x "$dev_deb" "$root"
agent=$root/opt/srn/agent
[[ "$(readlink "$root/usr/bin/ktrctl")" == /opt/srn/agent/bin/ktrctl && -x "$agent/bin/ktrctl" ]] ||
  fail "/usr/bin/ktrctl is not a link to /opt/srn/agent/bin/ktrctl"
for soname in libKTRFunctionality.so.$major libMBQCore.so.$major libMBQMessage.so.$major libMBQFunctionalityCore.so.$major; do
  [[ -f "$agent/lib/$soname" ]] || fail "the runtime package lacks $soname"
done
if grep -rl -F -e "$PWD" -e "$build" "$agent/lib/cmake" "$agent/lib/pkgconfig"; then
  fail "build paths in the files above"
fi
# The second line comes from the records module, which must load from the unpacked root.
env -u LD_LIBRARY_PATH "$agent/bin/ktrctl" --version | tee "$work/version"
grep -q "^libKTRFunctionality.so.$major " "$work/version" || fail "ktrctl did not load its records module"
libs_from "$agent/bin/ktrctl" "$agent/lib"
libs_from "$agent/lib/ktrctl/ktrctl-records.so" "$agent/lib"
for doc in "$agent/share/man/man1/ktrctl.1.gz" "$agent/share/bash-completion/completions/ktrctl"; do
  [[ -f "$doc" ]] || fail "the runtime package lacks $doc"
done
# The installed schemas are the ones compiled in: a record the library writes validates with both.
for schemas in "" "--schemas $agent/share/KTRFunctionality/schema"; do
  # shellcheck disable=SC2086
  env -u LD_LIBRARY_PATH "$agent/bin/ktrctl" msg validate $schemas ktr/lib/tests/records/KTREnv.xml ||
    fail "ktrctl msg validate ${schemas:-(built-in schemas)} refused a record the library writes"
done
echo "ok: installed schemas"

build_consumers root "$agent" "$root"
run_consumer "consumer (find_package, unpacked packages)" "$work/root-cmake/installed/bin/ktr-consumer"
libs_from "$work/root-cmake/installed/bin/ktr-consumer" "$agent/lib"
run_consumer "consumer (pkg-config, unpacked packages)" "$work/root-pc/ktr-consumer"
libs_from "$work/root-pc/ktr-consumer" "$agent/lib"
echo "package check: all passed"
