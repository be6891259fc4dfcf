#!/usr/bin/env bash
# Makes Wine able to run 32-bit programs, and says how on the last line of its output:
#   scripts/wine32.sh
#   full   Debian's wine32 is installed
#   wow64  the 64-bit Wine runs them with the 32-bit DLLs in out/wine/wine32; they do everything
#          but paint
#   none   this machine offers neither; the reason goes to stderr
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
answer_help "$@"

readonly FOLDER=$RDV_OUT/wine/wine32
readonly DLLS=usr/lib/i386-linux-gnu/wine/i386-windows

have_wine32() { [ -x /usr/lib/wine/wine ]; }

# apt with lists, cache and state of its own, for the named architectures; the system's are not
# touched. What it downloads is received by its own user, who has no other rights.
own_apt() {
  local tool=$1 state=$2 architectures=$3
  shift 3
  local options=(-o "Dir::State::Lists=$state/lists" -o "Dir::Cache=$state/cache"
    -o "Dir::State::status=$state/status")
  local architecture
  for architecture in $architectures; do
    options+=(-o "APT::Architectures::=$architecture")
  done
  "$tool" "${options[@]}" "$@"
}

new_state() {
  local state=$1 status=$2
  mkdir -p "$state/lists/partial" "$state/cache/archives/partial" "$state/download"
  cp "$status" "$state/status"
  [ "$(id -u)" -ne 0 ] || chown _apt "$state/download"
}

# Whether wine32 could be installed beside everything that is installed now.
installable() {
  local state=$1
  new_state "$state" /var/lib/dpkg/status
  own_apt apt-get "$state" "amd64 i386" update &&
    own_apt apt-get "$state" "amd64 i386" -s install --no-install-recommends wine32:i386
}

install_wine32() {
  as_root dpkg --add-architecture i386 &&
    as_root apt-get update &&
    as_root env DEBIAN_FRONTEND=noninteractive \
      apt-get install -y --no-install-recommends wine32:i386
}

# Downloads the 32-bit DLLs of the very Wine that is installed.
fetch_dlls() {
  local state=$1 version
  version=$(dpkg-query -W -f='${Version}' libwine) || return 1
  new_state "$state" /dev/null
  # An index that is not needed may fail; the download tells whether those that are came.
  own_apt apt-get "$state" i386 update || true
  (cd "$state/download" && own_apt apt-get "$state" i386 download "libwine:i386=$version") || return 1
  dpkg-deb --fsys-tarfile "$state"/download/libwine_*_i386.deb |
    tar -x -C "$state" --wildcards "./$DLLS/*" || return 1
  # The symbols make three quarters of their size, and every new prefix gets a copy.
  find "$state/$DLLS" -type f -print0 | xargs -0 -n 50 i686-w64-mingw32-strip || true
  mkdir -p "$FOLDER"
  mv "$state/$DLLS" "$FOLDER/"
}

provide() {
  local scratch
  # Where apt's own user gets to, which it may not where this tree lies.
  scratch=$(mktemp -d)
  chmod 755 "$scratch"
  trap "rm -rf '$scratch'" EXIT
  if [ "${RDV_WINE32:-}" != wow64 ] && installable "$scratch/both" && install_wine32; then
    return
  fi
  fetch_dlls "$scratch/i386"
}

mkdir -p "$RDV_OUT/wine"
if have_wine32; then
  echo full
elif [ -d "$FOLDER/i386-windows" ]; then
  echo wow64
else
  log=$RDV_OUT/wine/wine32.log
  if [ -e "$log" ] && [ -n "$(find "$log" -mmin -60)" ]; then
    echo "32-bit Wine was not to be had within the last hour; see $log" >&2
    echo none
    exit 0
  fi
  note "looking for a Wine that runs 32-bit programs"
  if ! (provide) >"$log" 2>&1; then
    echo "no 32-bit Wine is to be had here; see $log" >&2
    echo none
    exit 0
  fi
  rm -f "$log"
  if have_wine32; then echo full; else echo wow64; fi
fi
