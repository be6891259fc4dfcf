# What the tests of the delivery share: a Wine prefix, a display and a folder of their own, which go
# when the test ends. Sourced, never run.
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/wine-env.sh"

readonly CSCRIPT_64='C:\windows\system32\cscript.exe'
readonly CSCRIPT_32='C:\windows\syswow64\cscript.exe'
readonly REGSVR32_64='C:\windows\system32\regsvr32.exe'
readonly REGSVR32_32='C:\windows\syswow64\regsvr32.exe'

skip() {
  echo "skipped: $1"
  exit 77
}

# Skips the test when one of the files was not built.
need_built() {
  local needed
  for needed; do
    [ -f "$needed" ] || skip "${needed#"$RDV_ROOT/"} was not built"
  done
}

need_tool() { command -v "$1" >/dev/null || skip "no $1 here: $2"; }

# Makes the folder $scratch and a display; the prefixes will lie in the folder. Mouse and windows are
# then this test's own, and what it leaves behind when it fails reaches no other.
#   begin [WIDTHxHEIGHT of the display]
begin() {
  mkdir -p "$RDV_OUT/wine"
  scratch=$(mktemp -d "$RDV_OUT/wine/delivery.XXXXXX")
  export RDV_WINE_PREFIX=$scratch/prefix
  display_pid=
  trap end EXIT
  start_display "$@"
}

# Ends what runs and removes the folder; the test's exit code stays what it was.
end() {
  local result=$?
  set +e
  stop_wine
  if [ -n "$display_pid" ]; then
    kill "$display_pid"
    wait "$display_pid"
    rm -f "$XAUTHORITY"
  fi 2>/dev/null
  # Programs that end with their server may still write for a moment.
  for _ in $(seq 50); do
    rm -rf "$scratch" 2>/dev/null && break
    sleep 0.1
  done
  exit "$result"
}

windows_path() { printf 'Z:%s' "${1//\//\\}"; }

# Runs a Windows program, for two minutes at most. Its exit code is the function's.
run_windows() { timeout --kill-after=10 120 wine "$@" </dev/null; }

# expect CODE WHAT COMMAND...: fails unless the command ends with that exit code.
expect() {
  local wanted=$1 what=$2 result=0
  shift 2
  "$@" || result=$?
  [ "$result" = "$wanted" ] || die "$what: exit code $result instead of $wanted"
}

# wait_for WHAT COMMAND...: repeats the command until it succeeds, for half a minute at most.
wait_for() {
  local what=$1
  shift
  for _ in $(seq 150); do
    ! "$@" || return 0
    sleep 0.2
  done
  die "waited in vain: $what"
}

# The software's part of the registry as text, without what any program that runs may write. Wine's own
# files of it are read, which takes a second; exporting takes ten. For that the prefix is stopped.
registry() {
  stop_wine
  local file root
  for file in system user; do
    root=HKEY_LOCAL_MACHINE
    [ $file = system ] || root=HKEY_CURRENT_USER
    awk -v root=$root '
      /^\[/ {
        sub(/\][^]]*$/, "]") # the time of the last change follows
        gsub(/\\\\/, "\\")
        sub(/^\[/, "[" root "\\")
        skip = !/^\[[A-Z_]*\\Software\\/ || /\\(Wine\\|Explorer\\|RNG|Cryptography)/
      }
      !skip && !/^#/' "$WINEPREFIX/$file.reg"
  done
}

# Makes a demonstration site and lets it play the common application data folder of the prefix.
lay_out_site() {
  [ -d "$scratch/site" ] || "$RDV_OUT/linux/rdvsite" create "$scratch/site" >/dev/null
  ln -sfn "$scratch/site/Tolvane" "$WINEPREFIX/drive_c/ProgramData/Tolvane"
}

readonly WINDOWS=$RDV_OUT/build/win64/tests/delivery/windows/rdvwindows.exe

# See the programs themselves.
windows() { run_windows "$WINDOWS" "$@" | tr -d '\r'; }
# A list view is asked in memory of its own program, as programs of its own word size lay things out.
locator() { printf '%s' "$RDV_OUT/build/win${BITS:-64}/tools/locate/rdvlocate.exe"; }
locate() { run_windows "$(locator)" "$@" | tr -d '\r'; }

# component BITS, regsvr32 BITS [ARG...]: the library of one word size, and its registering program.
component() { windows_path "$RDV_OUT/win$1/TLV_RDV_Line_Config.dll"; }
regsvr32() {
  local program=REGSVR32_$1
  shift
  run_windows "${!program}" "$@"
}

# Starts the host program; $host_pid is its process and $ready the file that tells what it did.
#   start_host BITS [ARG...]
start_host() {
  local bits=$1
  shift
  ready=$scratch/ready
  rm -f "$ready"
  run_windows "$RDV_OUT/win$bits/rdvhost.exe" "$@" --ready-file "$(windows_path "$ready")" &
  host_pid=$!
}

# The host program has called ShowControl, and the answer was that.
host_did() {
  wait_for "the host program calls ShowControl" test -s "$ready"
  [ "$(cat "$ready")" = "$1" ] || die "the host program says \"$(cat "$ready")\" instead of \"$1\""
}

close_host() {
  windows close rdvhost
  expect 0 "the host program" wait "$host_pid"
}

# Saves what is on the screen as soon as two pictures in a row are the same.
#   picture FILE.png
picture() {
  import -window root "$1"
  for _ in $(seq 50); do
    sleep 0.2
    import -window root "$scratch/next.png"
    if compare -metric AE "$1" "$scratch/next.png" null: 2>/dev/null; then return 0; fi
    mv "$scratch/next.png" "$1"
  done
  die "the screen does not come to rest"
}

# colours PICTURE LEFT TOP WIDTH HEIGHT: how many there are in that part.
colours() { convert "$1" -crop "$4x$5+$2+$3" +repage -format '%k' info:; }
