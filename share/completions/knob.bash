# Completion of knob for bash.
#
# A part of a setting's name becomes its id; after the id come the choices, the words of a boolean
# setting or the current value. The settings are those of the engine that the line names. Nothing
# of the line or of an engine's answer is evaluated; a password goes to knob in the environment.

# Splits what was typed before the cursor into the array `words`, as the shell would, but expands
# nothing except plain variables.
_knob_split() {
  local line=$1 char quote= word= open= name
  words=()
  while [[ -n $line ]]; do
    char=${line:0:1} line=${line:1}
    if [[ $char == '$' && $quote != "'" && $line =~ ^(\{([A-Za-z_][A-Za-z_0-9]*)\}|([A-Za-z_][A-Za-z_0-9]*)) ]]; then
      name=${BASH_REMATCH[2]}${BASH_REMATCH[3]}
      line=${line:${#BASH_REMATCH[0]}} word+=${!name-} open=1
    elif [[ -n $quote ]]; then
      if [[ $char == "$quote" ]]; then
        quote=
      elif [[ $char == '\' && $quote == '"' && $line == [\"\\\$\`]* ]]; then
        word+=${line:0:1} line=${line:1}
      else
        word+=$char
      fi
    else
      case $char in
        \'|\") quote=$char open=1 ;;
        '\') word+=${line:0:1} line=${line:1} open=1 ;;
        ' '|$'\t')
          [[ -n $open ]] && words+=("$word")
          word= open= ;;
        *) word+=$char open=1 ;;
      esac
    fi
  done
  words+=("$word")
}

# knob with the given arguments on the server of the line, its answer line by line in `answer`.
_knob_ask() {
  local address=$server secret=$password variable=PGPASSWORD
  if [[ $address =~ ^([a-z]+://[^/@:]*):([^/@]*)(@.*)$ ]]; then
    address=${BASH_REMATCH[1]}${BASH_REMATCH[3]} secret=${BASH_REMATCH[2]//\\/\\\\}
    printf -v secret '%b' "${secret//%/\\x}"
  elif [[ $address == *[?\&]password=* ]]; then
    return # how it would have to be decoded is the client library's business
  fi
  [[ $address == etcd*://* ]] && variable=ETCDCTL_PASSWORD
  mapfile -t answer < <(
    [[ -n $secret ]] && export "$variable=$secret"
    timeout -s KILL 0.8 "$program" ${address:+-S "$address"} ${user:+-U "$user"} -JSON "$@" \
      < /dev/null 2> /dev/null)
}

# Puts one candidate; shows several and leaves what was typed: ids have no beginning in common that
# would mean anything.
_knob_offer() {
  if (($# == 1)); then
    COMPREPLY=("${1%%$'\t'*}")
  elif (($# > 1)); then
    COMPREPLY=("${@//$'\t'/  }" '')
    compopt -o nosort
  fi
}

_knob_settings() {
  local line found=() pattern=$'^\t\t\{"ID": ([0-9]+),\t"Setting": "(.*)"\},?$'
  [[ -z $1 || $1 == -* || $1 =~ ^[0-9]+$ ]] && return
  _knob_ask -H "$1"
  for line in "${answer[@]}"; do
    [[ $line =~ $pattern ]] && found+=("${BASH_REMATCH[1]}"$'\t'"${BASH_REMATCH[2]}")
  done
  _knob_offer "${found[@]}"
}

# The values of the setting $1 that begin with $2.
_knob_values() {
  local line type= value= found=() option=$'^\t\t\{"index": ([0-9]+),"value": "(.*)"\},?$'
  [[ $1 =~ ^[0-9]+$ ]] || return
  _knob_ask "$1"
  for line in "${answer[@]}"; do
    if [[ $line =~ ^$'\t'\"type\":\ ([0-9]+),$ ]]; then
      type=${BASH_REMATCH[1]}
    elif [[ $line =~ ^$'\t'\"value\":\ \"(.*)\",$ ]]; then
      value=${BASH_REMATCH[1]//\\\\/\\}
    elif [[ $line =~ $option ]]; then
      if [[ $type == 0 ]]; then
        [[ ${BASH_REMATCH[2],,} == "${2,,}"* ]] && found+=("${BASH_REMATCH[2]}")
      elif [[ ${BASH_REMATCH[1]} == "$2"* || ${BASH_REMATCH[2],,} == "${2,,}"* ]]; then
        found+=("${BASH_REMATCH[1]}"$'\t'"${BASH_REMATCH[2]}")
      fi
    fi
  done
  case $type in
    0) for line in "${found[@]}"; do printf -v line %q "$line" && COMPREPLY+=("$line"); done ;;
    1|2) [[ -z $2 && -n $value ]] && printf -v value %q "$value" && COMPREPLY=("$value") ;;
    *) _knob_offer "${found[@]}" ;;
  esac
}

_knob_files() {
  local path
  compopt -o filenames
  while IFS= read -r path; do COMPREPLY+=("$2$path"); done < <(compgen -f -- "$1")
}

_knob_servers() {
  if [[ $1 == file:* || $1 == registry:* ]]; then
    _knob_files "${1#*:}" "${1%%:*}:"
  else
    mapfile -t COMPREPLY < <(compgen -W \
      'localhost file: registry: postgresql:// postgres:// patroni:// patronis:// etcd:// etcds://' -- "$1")
    [[ ${COMPREPLY[*]} == *: || ${COMPREPLY[*]} == */ ]] && compopt -o nospace
  fi
}

_knob() {
  local words=() answer=() server= user= password= program=$1 i last word plain=()
  COMPREPLY=()
  _knob_split "${COMP_LINE:0:COMP_POINT}"
  last=$((${#words[@]} - 1)) word=${words[-1]}
  for ((i = 1; i < last; ++i)); do
    case ${words[i]} in
      -S|-s|--SERVER) server=${words[++i]} ;;
      -U|-u|--USERNAME) user=${words[++i]} ;;
      -P|-p|--PASSWORD) password=${words[++i]} ;;
      -[OoIiHhDd]|--OUTPUTFILE|--INPUTFILE|--KEYWORD|--DEBUG) ((++i)) ;;
      -*) ;;
      *) plain+=("${words[i]}") ;;
    esac
  done
  case ${words[last - 1]} in
    -S|-s|--SERVER) _knob_servers "$word" ;;
    -[OoIi]|--OUTPUTFILE|--INPUTFILE) _knob_files "$word" ;;
    -D|-d|--DEBUG)
      mapfile -t COMPREPLY < <(compgen -W 'SEVERE WARNING INFO CONFIG FINE FINER FINEST ALL' -- "$word") ;;
    -[UuPpHh]|--USERNAME|--PASSWORD|--KEYWORD) ;;
    *)
      if [[ $word == --* ]]; then
        mapfile -t COMPREPLY < <(compgen -W '--SERVER --USERNAME --PASSWORD --OUTPUTFILE --INPUTFILE
          --KEYWORD --IGNORE_ERR --SUPPRESS_PROMPT --DEBUG' -- "$word")
      elif [[ $word == -* || -z $word && ${#plain[@]} -eq 0 ]]; then
        mapfile -t COMPREPLY < <(compgen -W '-S -U -P -O -I -H -E -F -D -JSON' -- "$word")
      elif ((${#plain[@]} == 0)); then
        _knob_settings "$word"
      else
        _knob_values "${plain[0]}" "$word"
      fi ;;
  esac
  # The shell takes a colon for the beginning of a word.
  if [[ $word == *:* && $COMP_WORDBREAKS == *:* ]]; then
    COMPREPLY=("${COMPREPLY[@]#"${word%"${word##*:}"}"}")
  fi
}

complete -F _knob knob
