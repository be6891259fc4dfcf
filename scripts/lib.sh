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

# Of a script that was asked for help: prints what stands at its head, and ends it.
answer_help() {
  case ${1:-} in
    --help | -h | help)
      sed -n '2,/^[^#]/{s/^# \{0,1\}//p}' "$0"
      exit 0
      ;;
  esac
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

# The name of the Debian release that this machine runs.
this_release() { (. /etc/os-release && printf '%s' "${VERSION_CODENAME:-}"); }

# The archive that apt takes this very release from, as its own sources say; other releases lie beside it.
debian_archive() {
  apt-get indextargets --format '$(ORIGIN) $(CODENAME) $(REPO_URI)' 'Created-By: Packages' |
    awk -v release="$(this_release)" '$1 == "Debian" && $2 == release && !found { found = $3 } END { print found }'
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

# Runs a build, shows how far it is (a line that changes on a terminal, a line for each tenth elsewhere),
# and its output only when it fails or RDV_VERBOSE is set.
progressing() {
  if [ -n "${RDV_VERBOSE:-}" ]; then
    "$@"
    return
  fi
  local log result=0
  log=$(mktemp)
  NINJA_STATUS='[%f/%t] ' "$@" 2>&1 | tee "$log" | show_steps || result=$?
  [ "$result" -eq 0 ] || cat "$log" >&2
  rm -f "$log"
  return "$result"
}

# Reads what ninja prints and shows the steps.
show_steps() {
  local line done_ total tenth=0
  while IFS= read -r line; do
    [[ $line =~ ^\[([0-9]+)/([0-9]+)\] ]] || continue
    done_=${BASH_REMATCH[1]}
    total=${BASH_REMATCH[2]}
    if [ -t 1 ]; then
      printf '\r   %s of %s ' "$done_" "$total"
    elif [ "$total" -ge 20 ] && [ $((10 * done_ / total)) -gt "$tenth" ]; then
      tenth=$((10 * done_ / total))
      printf '   %s of %s\n' "$done_" "$total"
    fi
  done
  [ ! -t 1 ] || printf '\r\033[K'
}
