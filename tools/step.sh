# shellcheck shell=bash
# Sourced by ./run and ./test: runs the steps of a build quietly.

# step TITLE COMMAND...: one line on the terminal; the command's output only if it fails.
step() {
  local title=$1 log status=0
  shift
  log=$(mktemp)
  echo "$title"
  "$@" >"$log" 2>&1 </dev/null || status=$?
  if [[ $status -ne 0 ]]; then
    tail -n 200 "$log" >&2
    echo "$title: failed ($*)" >&2
  fi
  rm -f "$log"
  return "$status"
}
