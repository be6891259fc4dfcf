# Completion of rdvlines for bash: source it, or put it into a folder of bash-completion as "rdvlines".
_rdvlines() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command=${COMP_WORDS[1]:-}
  local commands='show check set restore export import compare report undo'
  local options
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then
    mapfile -t COMPREPLY < <(compgen -W "$commands help --help --version" -- "$current")
    return
  fi
  case $command in
    help)
      mapfile -t COMPREPLY < <(compgen -W "$commands site writing" -- "$current")
      return
      ;;
    show) options='--csv --json' ;;
    check | compare) options='--json' ;;
    set | restore | import | undo) options='--dry-run' ;;
    export) options='--output' ;;
    report) options='--output --title' ;;
    *) return ;;
  esac
  if [ "$command" = set ] && [[ $current == '=' || $previous == '=' ]]; then
    # Bash takes "Soft\ Stop=En" for three words. What other columns take is the site's to say.
    local column=${COMP_WORDS[COMP_CWORD - 2]} value=$current
    [ "$current" != '=' ] || column=$previous value=
    if [ "$column" = 'Soft\ Stop' ]; then
      mapfile -t COMPREPLY < <(compgen -W 'Enabled Disabled' -- "$value")
    fi
  elif [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options --help" -- "$current")
  elif [ "$command" = set ] && [ "$COMP_CWORD" -ge 4 ]; then
    compopt -o nospace
    mapfile -t COMPREPLY < <(
      local IFS=$'\n'
      compgen -W $'Partition=\nStarting\\ Node=\nVolume=\nMode=\nNIS\\ Option=\nEWT\\ Option=\nImpedance=\nSoft\\ Stop=\nLabel=' -- "$current"
    )
  elif [ "$command" = restore ] && [ "$COMP_CWORD" -ge 4 ]; then
    mapfile -t COMPREPLY < <(
      local IFS=$'\n'
      compgen -W $'8\\ Hybrid\\ Lines\\ 2\\ MOH\\ Lines\n4\\ Hybrid\\ Lines\\ 2\\ MOH\\ Lines\n8\\ Impedance\\ Lines\\ 2\\ MOH\\ Lines' -- "$current"
    )
  elif [[ $previous == -o || $previous == --output || $command == import ]] || [ "$COMP_CWORD" -le 3 ]; then
    compopt -o filenames
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}
complete -F _rdvlines rdvlines
