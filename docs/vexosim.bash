# Completes vexosim in bash: source this file, or put it, as vexosim, where the completions of the
# system are (/usr/share/bash-completion/completions). Made by: vexosim completion bash

# Words that begin with what is typed.
_vexosim_words() {
  mapfile -t COMPREPLY < <(compgen -W "$1" -- "$cur")
}

# Files with this ending, or any, and folders.
_vexosim_files() {
  compopt -o filenames 2>/dev/null
  mapfile -t COMPREPLY < <({
    compgen -f -X "${1:+!*.$1}" -- "$cur"
    compgen -d -- "$cur"
  } | sort -u)
}

# An argument: the subcommand and how many are before it.
_vexosim_argument() {
  case "$1" in
    'run 0') _vexosim_files '[vV][eE][xX][oO]' ;;
    'shell 0') _vexosim_files '[vV][eE][xX][oO]' ;;
    'serve 0') _vexosim_files '[vV][eE][xX][oO]' ;;
    'compare 0') _vexosim_files '[dD][lL][lL]' ;;
    'compare '*) _vexosim_files '[vV][eE][xX][oO]' ;;
    'device 0') _vexosim_files ;;
    'device 1') _vexosim_files ;;
    'device '*) _vexosim_files ;;
    'trace 0') _vexosim_files ;;
    'diff 0') _vexosim_files ;;
    'diff 1') _vexosim_files ;;
    'replay 0') _vexosim_files ;;
    'plan '*) _vexosim_files '[vV][eE][xX][oO]' ;;
    'verdict 0') _vexosim_files ;;
    'verdict 1') _vexosim_files ;;
    'completion 0') _vexosim_words 'bash' ;;
  esac
}

_vexosim() {
  local cur="${COMP_WORDS[COMP_CWORD]}" before="${COMP_WORDS[COMP_CWORD - 1]}"
  local command="${COMP_WORDS[1]}" options valued i arguments=0
  COMPREPLY=()
  # --color=auto comes as three words.
  [[ "$before" != "=" ]] || before="${COMP_WORDS[COMP_CWORD - 2]}"
  [[ "$cur" != "=" ]] || cur=""
  if ((COMP_CWORD == 1)); then
    _vexosim_words 'demo run shell serve compare device trace diff replay plan verdict manual completion -h --help'
    return
  fi
  case "$command" in
    demo)
      options='-h --help --picture --image --image-base --color --colour'
      valued=' --picture --image --image-base --color --colour '
      ;;
    run)
      options='-h --help --variant --picture --registers --trace --vcd --cycle-ns --limit --limit-real --seed --quiet --image --image-base --color --colour'
      valued=' --variant --picture --trace --vcd --cycle-ns --limit --limit-real --seed --image --image-base --color --colour '
      ;;
    shell)
      options='-h --help --chips --pal --bare --trace --vcd --cycle-ns --limit --limit-real --seed --image --image-base --color --colour'
      valued=' --chips --trace --vcd --cycle-ns --limit --limit-real --seed --image --image-base --color --colour '
      ;;
    serve)
      options='-h --help --port --listen --control-port --chips --pal --bare --trace --vcd --cycle-ns --limit --limit-real --seed --image --image-base'
      valued=' --port --listen --control-port --chips --trace --vcd --cycle-ns --limit --limit-real --seed --image --image-base '
      ;;
    compare)
      options='-h --help --image-base --seed --relocations'
      valued=' --image-base --seed '
      ;;
    device)
      options='-h --help --script --trace --vcd --cycle-ns --limit --limit-real --seed --without-import --machine --unshared --base-taken'
      valued=' --script --trace --vcd --cycle-ns --limit --limit-real --seed --without-import --machine '
      ;;
    trace)
      options='-h --help --chip --register --thread --from --to --calls --summary --vcd --cycle-ns --column --hex'
      valued=' --chip --register --thread --from --to --vcd --cycle-ns --column '
      ;;
    diff)
      options='-h --help --registers --column --hex'
      valued=' --column '
      ;;
    replay)
      options='-h --help -o --output'
      valued=' -o --output '
      ;;
    plan)
      options='-h --help --variant -o --output'
      valued=' --variant -o --output '
      ;;
    verdict)
      options='-h --help'
      valued=' '
      ;;
    manual)
      options='-h --help --man'
      valued=' '
      ;;
    completion)
      options='-h --help'
      valued=' '
      ;;
    *) return ;;
  esac

  # The arguments before this word that are neither options nor theirs.
  for ((i = 2; i < COMP_CWORD; ++i)); do
    if [[ "$valued" == *" ${COMP_WORDS[i]} "* ]]; then
      [[ "${COMP_WORDS[++i]}" != "=" ]] || ((++i))
    elif [[ "${COMP_WORDS[i]}" != -?* ]]; then
      ((++arguments))
    fi
  done

  case "$command $before" in
    'demo --picture') _vexosim_files '[pP][nN][gG]' ;;
    'demo --image') _vexosim_files '[dD][lL][lL]' ;;
    'demo --image-base') : ;;
    'demo --color' | 'demo --colour') _vexosim_words 'auto always never' ;;
    'run --variant') : ;;
    'run --picture') _vexosim_files '[pP][nN][gG]' ;;
    'run --trace') _vexosim_files ;;
    'run --vcd') _vexosim_files '[vV][cC][dD]' ;;
    'run --cycle-ns') : ;;
    'run --limit') : ;;
    'run --limit-real') : ;;
    'run --seed') : ;;
    'run --image') _vexosim_files '[dD][lL][lL]' ;;
    'run --image-base') : ;;
    'run --color' | 'run --colour') _vexosim_words 'auto always never' ;;
    'shell --chips') : ;;
    'shell --trace') _vexosim_files ;;
    'shell --vcd') _vexosim_files '[vV][cC][dD]' ;;
    'shell --cycle-ns') : ;;
    'shell --limit') : ;;
    'shell --limit-real') : ;;
    'shell --seed') : ;;
    'shell --image') _vexosim_files '[dD][lL][lL]' ;;
    'shell --image-base') : ;;
    'shell --color' | 'shell --colour') _vexosim_words 'auto always never' ;;
    'serve --port') : ;;
    'serve --listen') : ;;
    'serve --control-port') : ;;
    'serve --chips') : ;;
    'serve --trace') _vexosim_files ;;
    'serve --vcd') _vexosim_files '[vV][cC][dD]' ;;
    'serve --cycle-ns') : ;;
    'serve --limit') : ;;
    'serve --limit-real') : ;;
    'serve --seed') : ;;
    'serve --image') _vexosim_files '[dD][lL][lL]' ;;
    'serve --image-base') : ;;
    'compare --image-base') : ;;
    'compare --seed') : ;;
    'device --script') : ;;
    'device --trace') _vexosim_files ;;
    'device --vcd') _vexosim_files '[vV][cC][dD]' ;;
    'device --cycle-ns') : ;;
    'device --limit') : ;;
    'device --limit-real') : ;;
    'device --seed') : ;;
    'device --without-import') : ;;
    'device --machine') : ;;
    'trace --chip') : ;;
    'trace --register') : ;;
    'trace --thread') : ;;
    'trace --from') : ;;
    'trace --to') : ;;
    'trace --vcd') _vexosim_files '[vV][cC][dD]' ;;
    'trace --cycle-ns') : ;;
    'trace --column') : ;;
    'diff --column') : ;;
    'replay -o' | 'replay --output') _vexosim_files '[vV][eE][xX][oO]' ;;
    'plan --variant') : ;;
    'plan -o' | 'plan --output') _vexosim_files '[pP][lL][aA][nN]' ;;
    *)
      if [[ "$cur" == -* ]]; then
        _vexosim_words "$options"
      else
        _vexosim_argument "$command $arguments"
      fi
      ;;
  esac
}

complete -F _vexosim vexosim
