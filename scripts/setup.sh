# shellcheck shell=bash disable=SC2034
# Shared by quickstart, check and .ci/run; to be sourced. Says what goes on to standard error and
# keeps the long output of package manager and compiler for the case that something fails.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

build_packages=(g++ cmake ninja-build pkg-config libjpeg-dev libvips-dev libutf8proc-dev libfmt-dev)
test_packages=(libgtest-dev libexpat1-dev locales tzdata)
bench_packages=(libpugixml-dev libplist-dev libvips-tools python3 jq)
analysis_packages=(clang clang-format clang-tidy gcovr libclang-rt-14-dev mold python3)

say() {
  printf '%s\n' "$*" >&2
}

# quietly COMMAND...: runs it with its output kept back, and shows that output when it fails.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" >"$log" 2>&1 </dev/null || status=$?
  if [ "$status" -ne 0 ]; then
    cat "$log" >&2
    say "Failed with status $status: $*"
  fi
  rm -f "$log"
  return "$status"
}

# install_missing PACKAGE...: installs those of these Debian packages that are not there yet.
install_missing() {
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    say "This is no Debian system; taking for granted what these packages bring: $*"
    return 0
  fi
  local installed package missing=() as_root=()
  installed=$(dpkg-query -W -f '${Package} ${db:Status-Status}\n' "$@" 2>/dev/null) || true
  for package in "$@"; do
    grep -qxF "$package installed" <<<"$installed" || missing+=("$package")
  done
  [ "${#missing[@]}" -gt 0 ] || return 0

  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      say "These packages are missing, and installing them takes root or sudo: ${missing[*]}"
      return 1
    fi
    as_root=(sudo)
  fi
  say "Installing ${missing[*]} ..."
  local apt=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -y
    -o DPkg::Lock::Timeout=300)
  quietly "${apt[@]}" update && quietly "${apt[@]}" install --no-install-recommends "${missing[@]}"
}

# build PRESET: configures and builds it.
build() {
  say "Building ($1) ..."
  if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=ccache
  fi
  # A build folder that was copied or moved here from elsewhere still names the other place.
  local cache="$root/build/$1/CMakeCache.txt"
  if [ -f "$cache" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$cache"; then
    rm -rf "${root:?}/build/$1"
  fi
  # What is built to be tested links two dozen programs, each of the whole library.
  local kind options=()
  if command -v mold >/dev/null && [[ "$1" != release && "$1" != bench ]]; then
    for kind in EXE SHARED MODULE; do
      options+=("-DCMAKE_${kind}_LINKER_FLAGS=-fuse-ld=mold")
    done
  fi
  (cd "$root" && quietly cmake --preset "$1" "${options[@]}" && quietly cmake --build --preset "$1")
}
