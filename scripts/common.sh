# shellcheck shell=bash
# SPDX-License-Identifier: MIT
# Sourced by the scripts beside it.
root=$(CDPATH='' cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# quietly <command...>: shows the command's output, on standard error, only when it fails.
quietly() {
  local log status=0
  log=$(mktemp)
  "$@" </dev/null >"$log" 2>&1 || status=$?
  [ "$status" = 0 ] || cat "$log" >&2
  rm -f "$log"
  return "$status"
}

# build <preset> [arguments of cmake --build...]: configures first where that is due. Scripts that
# build at the same time take turns.
build() (
  preset=$1
  shift
  cd "$root" || exit
  mkdir -p build
  exec 9>build/.lock
  ! command -v flock >/dev/null || flock 9
  ninja=build/$preset/build.ninja
  if [ ! -e "$ninja" ] || [ CMakePresets.json -nt "$ninja" ]; then
    cmake --preset "$preset" || exit
  fi
  cmake --build --preset "$preset" "$@"
)

# run_program <target> [arguments...]: sets up and builds a program where that is due, and becomes it.
# Only the program itself writes to standard output.
run_program() {
  "$root/scripts/setup" >&2
  program=$root/build/release/$1
  [ -e "$program" ] || echo "${0##*/}: building the program, a minute or two" >&2
  quietly build release --target "$1"
  shift
  exec "$program" "$@"
}

# source_files <folder...>: the C++ files in those of the project's folders that exist.
source_files() (
  cd "$root" || exit
  for folder in "$@"; do
    [ ! -d "$folder" ] || find "$folder" \( -name '*.cpp' -o -name '*.h' \) -print
  done | LC_ALL=C sort
)
