# Wine as this project uses it, apart from the Wine of the user. Sourced, never run.
# RDV_WINE_PREFIX names other prefixes than out/wine/prefix-*. Prefixes are made for a display of our
# own, or for that of the user when RDV_WINDOW_MANAGER is set.
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"

export WINEDEBUG=${WINEDEBUG:--all}
export LC_ALL=C.UTF-8 # Wine takes the encoding of file names from it.
# No add-ons are fetched; menus and file types of the user are not touched.
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"

# Which way 32-bit programs run now; the words of wine32.sh.
wine32_mode() {
  if [ -x /usr/lib/wine/wine ]; then
    echo full
  elif [ -d "$RDV_OUT/wine/wine32/i386-windows" ]; then
    echo wow64
  else
    echo none
  fi
}

# Sets the prefix for programs of 64 or 32 bits and makes it where there is none. Each has its own, so
# that both can run at once. Without a full Wine, windows are not painted in that of the 32-bit
# programs, because the driver that paints has no 32-bit half there and without "null" in its place no
# window comes up.
use_wine() {
  local bits=$1 kind=win64
  unset WINEDLLPATH
  case $(wine32_mode)-$bits in
    full-*) kind=full$bits ;;
    wow64-32)
      kind=win32
      export WINEDLLPATH=$RDV_OUT/wine/wine32
      ;;
  esac
  export WINEPREFIX=${RDV_WINE_PREFIX:-$RDV_OUT/wine/prefix}-$kind
  [ ! -e "$WINEPREFIX/made" ] || return 0
  local model=$RDV_OUT/wine/model${RDV_WINDOW_MANAGER:+-managed}-$kind
  mkdir -p "$(dirname "$WINEPREFIX")" "$(dirname "$model")"
  (
    flock 9
    [ ! -e "$model/made" ] || exit 0
    rm -rf "$model"
    WINEPREFIX=$model quietly make_prefix "$kind"
    touch "$model/made"
  ) 9>"$model.lock"
  (
    flock 9
    [ ! -e "$WINEPREFIX/made" ] || exit 0
    rm -rf "$WINEPREFIX"
    copy_prefix "$model" "$WINEPREFIX"
  ) 9>"$WINEPREFIX.lock"
}

# A new prefix takes up to half a minute and hundreds of megabytes, so it is made once; every other
# one is a copy that shares the libraries of the system with it. What programs change in place (the
# registry, settings, the users' files) is not shared.
copy_prefix() {
  local model=$1 copy=$2 file
  rm -rf "$copy.new"
  cp -al "$model" "$copy.new" 2>/dev/null || {
    # On another file system nothing can be shared.
    rm -rf "$copy.new"
    cp -a "$model" "$copy.new"
  }
  (cd "$model" && find . -type f \( -not -path './drive_c/*' -o -iname '*.ini' \
    -o -path './drive_c/users/*' -o -path './drive_c/ProgramData/*' \) -print0) |
    while IFS= read -r -d '' file; do
      cp -p --remove-destination "$model/$file" "$copy.new/$file"
    done
  mv "$copy.new" "$copy"
}

make_prefix() {
  timeout --kill-after=10 300 wineboot --init </dev/null || return
  # A program that crashes ends; a dialog would wait for somebody to press a button.
  set_wine_option WineDbg ShowCrashDialog REG_DWORD 0
  # On a virtual display no window manager runs; a window that waits for one takes seconds to go.
  [ -n "${RDV_WINDOW_MANAGER:-}" ] || set_wine_option 'X11 Driver' Managed REG_SZ N
  [ "$1" != win32 ] || set_wine_option Drivers Graphics REG_SZ null
  # Wine does not find the symbols of its captions by itself everywhere. Its letters stay those that the
  # tests are measured with.
  cp /usr/share/wine/fonts/marlett.ttf "$WINEPREFIX/drive_c/windows/Fonts/" 2>/dev/null || true
  # The settings hold from the next start of the prefix on.
  wineserver -k || true
  wineserver -w
}

set_wine_option() {
  timeout 60 wine reg add "HKCU\\Software\\Wine\\$1" /v "$2" /t "$3" /d "$4" /f </dev/null
}

# Ends what still runs in the prefixes, and nothing elsewhere.
stop_wine() {
  local kind prefix
  for kind in win64 win32 full64 full32; do
    prefix=${RDV_WINE_PREFIX:-$RDV_OUT/wine/prefix}-$kind
    [ ! -d "$prefix" ] || WINEPREFIX=$prefix wineserver -k >/dev/null 2>&1 || true
  done
}

# Starts a virtual display of that size on a free number and waits until it answers; sets DISPLAY
# and display_pid.
#   start_display [WIDTHxHEIGHT]
start_display() {
  local size=${1:-1280x1024} number cookie
  number=$(mktemp)
  # Whoever knows the cookie may see the windows and type into them, and nobody else.
  XAUTHORITY=$RDV_OUT/wine/display-$$.auth
  mkdir -p "$RDV_OUT/wine"
  rm -f "$XAUTHORITY"
  (umask 077 && : >"$XAUTHORITY")
  cookie=$(mcookie)
  xauth -q -f "$XAUTHORITY" add "$(hostname)/unix:0" . "$cookie"
  Xvfb -displayfd 3 -screen 0 "${size}x24" -nolisten tcp -auth "$XAUTHORITY" 3>"$number" >/dev/null 2>&1 &
  display_pid=$!
  for _ in $(seq 200); do
    [ ! -s "$number" ] && kill -0 "$display_pid" 2>/dev/null || break
    sleep 0.05
  done
  export DISPLAY=:$(cat "$number")
  rm -f "$number"
  xauth -q -f "$XAUTHORITY" add "$(hostname)/unix$DISPLAY" . "$cookie"
  export XAUTHORITY
  [ "$DISPLAY" != : ] || die "the virtual display did not start"
}
