# Completion of knob-diff for bash: options, server forms and files.
_knob_diff() {
  local word=${COMP_WORDS[COMP_CWORD]}
  COMPREPLY=()
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W '-JSON --settings --changed --ignore --all --user-a --user-b
      --help --version' -- "$word")
  elif [[ ${COMP_WORDS[COMP_CWORD - 1]} != --user-[ab] ]]; then
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
    ((${#COMPREPLY[@]} > 0)) && compopt -o filenames
    if [[ -n $word ]]; then
      mapfile -t -O ${#COMPREPLY[@]} COMPREPLY < <(compgen -W 'localhost file: registry:
        postgresql:// postgres:// patroni:// patronis:// etcd:// etcds://' -- "$word")
      [[ ${COMPREPLY[*]} == *: || ${COMPREPLY[*]} == */ ]] && compopt -o nospace
    fi
  fi
}

complete -F _knob_diff knob-diff
