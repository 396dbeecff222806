# shellcheck shell=bash
# Completions of the command quillet for bash.

_quillet() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command='' word words='' kind=file
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ $word == @(play|render|waveform|info|separate) ]]; then
      command=$word
      break
    fi
  done
  COMPREPLY=()
  case $previous in
    --from | --to | --speed | --pitch | --eq | --passes | --delay | --hold) return ;;
    --stems) words='vocals= drums= bass= guitar= piano= other=' ;;
    -o | --output) [[ $command != separate ]] || kind=directory ;;
    --png) ;;
    *)
      if [[ $current == -* ]]; then
        words='--help'
        case $command in
          play | render) words+=' --from --to --speed --pitch --keep-formants --channels --eq --stems --passes --delay --hold' ;;&
          render | separate) words+=' --output' ;;
          waveform) words+=' --png --json' ;;
          info) words+=' --json' ;;
          '') words+=' --version' ;;
        esac
      elif [[ -z $command ]]; then
        words='play render waveform info separate'
      fi
      ;;
  esac
  [[ -z $words ]] || mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
  if [[ $previous == --stems ]]; then
    compopt -o nospace
  elif [[ $current != -* ]]; then
    compopt -o filenames
    mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -A "$kind" -- "$current")
  fi
}

complete -F _quillet quillet
