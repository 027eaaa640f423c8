# Shared by ./demo, ./check and .ci/run: saying what happens, stopping at the first error, installing packages.
# shellcheck shell=bash
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

step() { printf '\n== %s\n' "$*"; }
fail() {
  printf '\n%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# Each caller names the packages it needs, one list per purpose; what is there already is not touched.
build_packages=(ca-certificates cmake g++ gcc libc6-dev ninja-build)
test_packages=(binutils libc-bin libgtest-dev locales mount pkg-config python3 util-linux)
fuzz_packages=(clang libclang-rt-14-dev)
gate_packages=(clang clang-format libclang-rt-14-dev)
lint_packages=(clang-tidy cppcheck)
abi_packages=(abigail-tools dpkg-dev)
packaging_packages=(binutils dpkg-dev fakeroot file lintian pkg-config python3)
reference_packages=(doxygen)
bench_packages=(libbenchmark-dev pkg-config python3)

need() {
  local package missing=() as_root=()
  for package in "$@"; do
    dpkg-query -W -f '${db:Status-Abbrev}' "$package" 2>/dev/null | grep -q '^ii' || missing+=("$package")
  done
  [ "${#missing[@]}" -gt 0 ] || return 0
  step "Installing ${missing[*]}"
  if [ "$(id -u)" -ne 0 ]; then
    command -v sudo >/dev/null || fail "needs root or sudo to install ${missing[*]}"
    as_root=(sudo)
  fi
  "${as_root[@]}" apt-get -q update || fail "apt-get update failed"
  "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q install -y --no-install-recommends "${missing[@]}" ||
    fail "could not install ${missing[*]}"
}

# configure PRESET [CMAKE_OPTION...]: says something only when it goes wrong.
configure() {
  local log
  log=$(mktemp)
  cmake --preset "$@" >"$log" 2>&1 || {
    cat "$log"
    rm -f "$log"
    fail "configuring the $1 build failed"
  }
  rm -f "$log"
}

# build PRESET [CMAKE_OPTION...]: configures when there is something to configure, and builds what changed.
build() {
  step "Building ($1)"
  configure "$@"
  cmake --build --preset "$1" -- --quiet || fail "the $1 build failed"
}

# run_tests LABEL COMMAND...: runs a ctest command, shows what failed or was skipped, and adds up the counts.
tests_passed=0
tests_skipped=0
run_tests() {
  local label=$1 log passed skipped
  shift
  log=$(mktemp)
  step "Testing ($label)"
  if ! "$@" >"$log" 2>&1; then
    grep -vE '^ *[0-9]+/[0-9]+ .* Passed|^ *Start ' "$log" || true
    rm -f "$log"
    fail "tests failed ($label)"
  fi
  passed=$(grep -cE '^ *[0-9]+/[0-9]+ .* Passed ' "$log" || true)
  skipped=$(grep -cE '^ *[0-9]+/[0-9]+ .*\*\*\*Skipped' "$log" || true)
  grep -E '\*\*\*Skipped' "$log" || true
  rm -f "$log"
  [ "$passed" -gt 0 ] || fail "no test ran ($label)"
  printf '%s: %d passed, %d skipped, 0 failed\n' "$label" "$passed" "$skipped"
  tests_passed=$((tests_passed + passed))
  tests_skipped=$((tests_skipped + skipped))
}
