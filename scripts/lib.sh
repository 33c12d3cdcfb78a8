# shellcheck shell=bash
# What the scripts share. A script sources it and defines usage(), which prints its help.
# shellcheck disable=SC2034 # used by those who source this
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
script=scripts/$(basename "$0")

# Ends the script, as every wrong call does, with status 2.
usage_error() {
  echo "$script: $1; see --help" >&2
  exit 2
}

fail() {
  echo "$script: $1" >&2
  exit 1
}

# Called with "$@" where an option needs a value.
need_value() {
  (($# >= 2)) || usage_error "$1 needs a value"
}

# Installs and builds what the demo runs. Sets build and program. The folder DRIFTMARK_BUILD, already
# built, takes the place of the build.
build_demo() {
  build=${DRIFTMARK_BUILD:-$root/build/release}
  program=$build/Driftmark.app/Contents/MacOS/Driftmark
  [[ -z ${DRIFTMARK_BUILD:-} ]] || return 0
  "$root/scripts/bootstrap" --demo
  echo "Building Driftmark and the simulated iCloud, which takes some minutes the first time."
  local quiet=(--quiet)
  [[ ! -t 1 ]] || quiet=() # one line with its progress
  (cd "$root" && cmake --preset release >/dev/null &&
    cmake --build --preset release --target driftmark icloud-demo -- ${quiet[@]+"${quiet[@]}"})
  echo
}
