# bash completion, made from the commands of corvanectl by `make docs`
_corvanectl() {
  local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} words=
  COMPREPLY=()
  case ${COMP_WORDS[1]} in
    status)
      words='--help --json'
      ;;
    list)
      words='--help --filter --json'
      [[ $previous == --filter ]] && words='all needsUpdate alerts upToDate'
      ;;
    discover)
      words='--help --json'
      ;;
    check)
      words='--help --json'
      [[ $word != -* ]] && words+=" $(corvanectl list 2>/dev/null | awk 'NR > 1 { print $1 }')"
      ;;
    update)
      words='--help --all --json'
      [[ $word != -* ]] && words+=" $(corvanectl list 2>/dev/null | awk 'NR > 1 { print $1 }')"
      ;;
    defer)
      words='--help --json'
      ;;
    deadline)
      words='--help --json'
      ;;
    explain)
      words='--help --json'
      [[ $word != -* ]] && words+=" $(corvanectl list 2>/dev/null | awk 'NR > 1 { print $1 }')"
      ;;
    history)
      words='--help --json'
      [[ $word != -* ]] && words+=" $(corvanectl list 2>/dev/null | awk 'NR > 1 { print $1 }')"
      ;;
    settings)
      words='--help --json'
      ;;
    bundle)
      words='--help --output --json'
      [[ $word != -* ]] && COMPREPLY=($(compgen -f -- "$word"))
      ;;
    validate)
      words='--help --json'
      [[ $word != -* ]] && COMPREPLY=($(compgen -f -- "$word"))
      ;;
  esac
  [[ $COMP_CWORD -eq 1 ]] && words='status list discover check update defer deadline explain history settings bundle validate help --help --version'
  COMPREPLY+=($(compgen -W "$words" -- "$word"))
}
complete -F _corvanectl corvanectl
