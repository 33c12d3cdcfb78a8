# shellcheck shell=bash
# How the scripts run Driftmark on a Mac. Sourced after lib.sh.

require_mac() {
  [[ $(uname) == Darwin ]] || fail "this needs a Mac"
}

require_no_driftmark() {
  if pgrep -x Driftmark >/dev/null; then
    fail "Driftmark runs already"
  fi
}

# Copies the bundle $1, or the one in the archive $1, into the folder $2.
copy_bundle() {
  mkdir -p "$2"
  case $1 in
    *.zip) ditto -x -k "$1" "$2" ;;
    *) ditto "$1" "$2/Driftmark.app" ;;
  esac
  [[ -d $2/Driftmark.app ]] || fail "$1 holds no Driftmark.app"
}

# Checks the property list and the signature of the bundle $1. The linker signs the program alone: its
# signature is checked in a copy in the folder $2, since a bundle would have to be signed as a whole.
check_bundle() {
  plutil -lint "$1/Contents/Info.plist"
  if [[ -d $1/Contents/_CodeSignature ]]; then
    codesign --verify --deep --strict --verbose=2 "$1"
  else
    cp "$1/Contents/MacOS/Driftmark" "$2"
    codesign --verify --strict --verbose=2 "$2/Driftmark"
  fi
}

# Starts the program of the bundle $1, with its output in the file $2. Sets pid.
start_program() {
  "$1/Contents/MacOS/Driftmark" >>"$2" 2>&1 &
  # shellcheck disable=SC2034 # used by those who source this
  pid=$!
}

# Waits for a child of the process $1. Without one in ten seconds, prints nothing; fails when the
# process ends.
await_children() {
  local tenths children=''
  for ((tenths = 0; tenths < 100; ++tenths)); do
    kill -0 "$1" 2>/dev/null || return 1
    children=$(pgrep -P "$1" || true)
    [[ -z $children ]] || break
    sleep 0.1
  done
  echo "$children"
}

# Whether the process $1 ends within $2 seconds.
await_end() {
  local tenths
  for ((tenths = 0; tenths < $2 * 10; ++tenths)); do
    kill -0 "$1" 2>/dev/null || return 0
    sleep 0.1
  done
  ! kill -0 "$1" 2>/dev/null
}

# Prints those of the processes that run.
running_of() {
  local process
  for process in "$@"; do
    if kill -0 "$process" 2>/dev/null; then
      echo "$process"
    fi
  done
}

kill_and_wait() {
  kill -KILL "$1" 2>/dev/null || true
  wait "$1" 2>/dev/null || true
}
