# Shared by the scripts: where things lie, and how they speak. Sourced, never run.
set -euo pipefail

readonly RDV_ROOT=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
readonly RDV_OUT=$RDV_ROOT/out
readonly RDV_JOBS=${RDV_JOBS:-$(nproc)}

note() { printf '== %s\n' "$*"; }
die() {
  printf '%s: %s\n' "$(basename "$0")" "$*" >&2
  exit 1
}

# Runs a command with the rights of the system's administrator.
as_root() {
  if [ "$(id -u)" -eq 0 ]; then
    "$@"
  elif command -v sudo >/dev/null; then
    sudo "$@"
  else
    die "needs the administrator's rights (run as root or install sudo): $*"
  fi
}

# Runs a command and shows its output only when it fails, or when RDV_VERBOSE is set.
quietly() {
  if [ -n "${RDV_VERBOSE:-}" ]; then
    "$@"
    return
  fi
  local log
  log=$(mktemp)
  if "$@" >"$log" 2>&1; then
    rm -f "$log"
  else
    local result=$?
    cat "$log" >&2
    rm -f "$log"
    return "$result"
  fi
}
