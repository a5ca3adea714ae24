# bash completion for jxfile
_jxfile() {
  local word=${COMP_WORDS[COMP_CWORD]} options=''
  if ((COMP_CWORD == 1)); then
    mapfile -t COMPREPLY < <(compgen -W 'lines convert write bytes truncate info fsinfo ls exists mkdir rm mv cp newname split build expand format detect encodings status version check-host --help --version' -- "$word")
    return
  fi
  case ${COMP_WORDS[1]} in
    lines) options='--from --record-length --direct -n --number --range --mark --json --module --expand --help' ;;
    convert) options='--from --to --bom --no-bom --append --record-length --records --eol --final-eol --on-error --translit --in-place --backup --into --files0-from --jobs --dry-run --module --expand --help' ;;
    write) options='--records --to --bom --append --update --at --record-length --module --expand --help' ;;
    bytes) options='--raw --record-length --offset --count --json --module --expand --help' ;;
    truncate) options='--module --expand --help' ;;
    info) options='--json --module --expand --help' ;;
    fsinfo) options='--json --module --expand --help' ;;
    ls) options='-a --all -l --long --full --parent --root --home --json --module --expand --help' ;;
    exists) options='--json --module --expand --help' ;;
    mkdir) options='-p --parents --module --expand --help' ;;
    rm) options='-r --recursive -f --force --module --expand --help' ;;
    mv) options='-T --no-target-directory --module --expand --help' ;;
    cp) options='-p --preserve -P --no-dereference -T --no-target-directory --module --expand --help' ;;
    newname) options='--prefix --extension --host --create --count --json --module --expand --help' ;;
    split) options='--json --module --expand --help' ;;
    build) options='--directory --member --extension --json --module --expand --help' ;;
    expand) options='--json --module --expand --help' ;;
    format) options='--capacity --json --module --expand --help' ;;
    detect) options='--json --module --expand --help' ;;
    encodings) options='--json --module --expand --help' ;;
    status) options='--json --module --expand --help' ;;
    version) options='--json --module --expand --help' ;;
    check-host) options='--json --tap --module --expand --help' ;;
  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
  fi
}
complete -F _jxfile jxfile
