# bash completion for zelvctl
_zelvctl() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} each
  COMPREPLY=()
  case $previous in
    --timeout | --interval | --name | --id | --address | --group | --port | --returns | --answer | \
      --package | --package-id)
      return
      ;;
    -o | --output)
      mapfile -t COMPREPLY < <(compgen -d -- "$word")
      return
      ;;
  esac
  local words="--json --timeout --interval --name --id --address --group --port --help"
  local verb=
  for each in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $each in
      devices | get | watch | set | command | input | asset | serve) verb=${verb:-$each} ;;
    esac
  done
  case $verb in
    "") words+=" devices get watch set command input asset serve" ;;
    devices) words+=" --watch" ;;
    command) words+=" --no-wait --returns" ;;
    asset) words+=" --id --package --package-id --output --list" ;;
    serve) words+=" --answer" ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _zelvctl zelvctl
