#!/usr/bin/env bash
# Installs the Debian packages that the named purposes need, and nothing when all are there.
#   scripts/install-packages.sh PURPOSE...     purposes: build test run lint package bench
#                                              newer-wine foreign
#   native, for the native tests alone
source "$(dirname "${BASH_SOURCE[0]}")/lib.sh"
answer_help "$@"

# package            purposes             why
readonly PACKAGES='
cmake                build,native         configures the trees
ninja-build          build,native         builds them
g++                  build,native         compiles for Linux
g++-mingw-w64-x86-64 build                compiles for 64-bit Windows
g++-mingw-w64-i686   build                compiles for 32-bit Windows
clang                build,native         compiles the tree with the sanitizers, in two thirds of the time
libclang-rt-14-dev   build,native         its sanitizers
mingw-w64-tools      build                widl makes the type library
libcli11-dev         build,native         reads the arguments of the tools; headers only, for every system
nlohmann-json3-dev   build,native         reads and writes JSON in tools and tests; headers only likewise
libgmock-dev         build,native         the test framework for Linux
googletest           build                its sources, built for Windows
python3              test,lint            runs scripts/mutate, and parses the example in Python
mono-mcs             test                 compiles the example in C#
libmono-system-windows-forms4.0-cil test  with the forms that it uses
fp-compiler          test                 compiles the example for Delphi
git                  test,lint            lists the files that the checks of the tree read
clang-format         test,lint            checks the layout of the sources
clang-tidy           lint                 analyses the sources
wine                 test,run             runs the Windows programs
wine64               test,run             the 64-bit loader of it
xvfb                 test,run             a display where there is none
xauth                test,run             whose cookie it asks for
fonts-liberation     test,run             the letters on it
fonts-wine           test,run             the usual letters of Windows, and the symbols on its windows
mdbtools             test,run,native      reads the database files with a reader that is not ours
xdotool              test,run             a real mouse and keyboard
x11-utils            run                  tells where the windows lie
chromium-headless-shell test          looks at the page of rdvlines report
imagemagick          test,run             takes the pictures and measures them
nsis                 test,package         makes the Windows installer
zip                  package              makes the archive
debootstrap          newer-wine           makes a root folder with the next release
dpkg-dev             foreign              unpacks the sources of a container of others
make                 foreign              builds it
pkg-config           bench                finds the libraries below
libbenchmark-dev     bench                measures
mdbtools-dev         bench                a yardstick for reading
libsqlite3-dev       bench                a yardstick for reading and writing
'

# The packages that one of the purposes needs, one on a line.
wanted() {
  local package purposes why purpose
  while read -r package purposes why; do
    for purpose in "$@"; do
      if [[ ,$purposes, == *,$purpose,* ]]; then
        printf '%s\n' "$package"
        break
      fi
    done
  done < <(grep . <<<"$PACKAGES")
}

missing() {
  local package
  for package in $(wanted "$@"); do
    [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
      printf '%s\n' "$package"
  done
}

[ $# -gt 0 ] || die "name a purpose: build test run lint package bench newer-wine foreign"
command -v dpkg-query >/dev/null || die "only Debian and its relatives are known here"
mapfile -t packages < <(missing "$@")
[ ${#packages[@]} -gt 0 ] || exit 0

note "installing: ${packages[*]}"
install_them() {
  as_root env DEBIAN_FRONTEND=noninteractive \
    apt-get install -y --no-install-recommends "${packages[@]}" </dev/null
}
# Package lists that are missing or too old make the first attempt fail.
quietly install_them 2>/dev/null || {
  quietly as_root apt-get update </dev/null
  quietly install_them
}
