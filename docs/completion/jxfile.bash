# bash completion for jxfile
_jxfile() {
  local word=${COMP_WORDS[COMP_CWORD]} options=''
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W 'lines convert write bytes truncate info fsinfo ls exists mkdir rm mv cp newname split build expand format status version --help --version' -- "$word")
    return
  fi
  case ${COMP_WORDS[1]} in
    lines) options='--from --record-length --direct -n --number --mark --json --module --help' ;;
    convert) options='--from --to --bom --no-bom --append --record-length --records --module --help' ;;
    write) options='--records --to --bom --append --update --at --record-length --module --help' ;;
    bytes) options='--raw --record-length --offset --count --json --module --help' ;;
    truncate) options='--module --help' ;;
    info) options='--json --module --help' ;;
    fsinfo) options='--json --module --help' ;;
    ls) options='-a --all -l --long --full --parent --root --home --json --module --help' ;;
    exists) options='--json --module --help' ;;
    mkdir) options='--module --help' ;;
    rm) options='-r --recursive --module --help' ;;
    mv) options='--module --help' ;;
    cp) options='--module --help' ;;
    newname) options='--prefix --extension --host --count --json --module --help' ;;
    split) options='--json --module --help' ;;
    build) options='--directory --member --extension --json --module --help' ;;
    expand) options='--json --module --help' ;;
    format) options='--capacity --json --module --help' ;;
    status) options='--json --module --help' ;;
    version) options='--json --module --help' ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}
complete -F _jxfile jxfile
