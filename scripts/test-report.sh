# What a run of the tests comes to, told apart: run, skipped, and why. Sourced, never run.

# Every skip with its reason, one a line, of the log that CTest has kept. A Windows program is one
# test to CTest, whatever it skips inside; there the test inside is named.
skips_of() {
  tr -d '\r' <"$1" | awk '
    / Testing: /        { program = $NF; inside = "" }
    /^\[ RUN      \] /  { inside = $4 }
    /: Skipped$/        { getline reason; tell(reason) }
    /^skipped: /        { sub(/^skipped: /, ""); tell($0) }
    function tell(reason,    name) {
      name = program
      if (program ~ /^win/ && inside != "") name = program "." inside
      if (!seen[name]++) print name ": " reason
    }'
}

# The tests inside of the Windows programs, less the programs themselves.
more_inside_windows() {
  tr -d '\r' <"$1" | awk '
    / Testing: / { program = $NF }
    program ~ /^win/ && /^\[==========\] [0-9]+ tests? from .* ran\./ { sum += $2 - 1 }
    END { print sum + 0 }'
}

# report_tests FOLDER: of the last run there.
report_tests() {
  local log=$1/Testing/Temporary/LastTest.log summary=$1/summary.xml skips all failed skipped
  [ -f "$log" ] && [ -f "$summary" ] || return 0
  all=$(sed -n 's/.* tests="\([0-9]*\)".*/\1/p; /^\ttests="/s/[^0-9]//gp' "$summary" | head -1)
  failed=$(sed -n 's/.*failures="\([0-9]*\)".*/\1/p' "$summary" | head -1)
  [ -n "$all" ] || return 0
  all=$((all + $(more_inside_windows "$log")))
  skips=$(skips_of "$log")
  skipped=$(printf '%s' "$skips" | grep -c '' || true)
  if [ "$skipped" -gt 0 ]; then
    note "skipped, and why"
    printf '%s\n' "$skips" | sed 's/^/  /'
  fi
  note "$((all - skipped)) tests run, ${failed:-0} of them failed; $skipped skipped"
}
