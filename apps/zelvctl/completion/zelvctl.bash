# bash completion for zelvctl
_zelvctl() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} each
  COMPREPLY=()
  case $previous in
    --timeout | --interval | --name | --id | --address | --group | --port) return ;;
  esac
  local words="--json --timeout --interval --name --id --address --group --port --help"
  local verb=
  for each in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    [ "$each" != devices ] || verb=devices
  done
  if [ -n "$verb" ]; then
    words+=" --watch"
  else
    words+=" devices"
  fi
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _zelvctl zelvctl
