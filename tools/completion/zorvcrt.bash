# Completion of zorvcrt for bash. Commands, options and their choices are asked of the command itself, so that
# what is offered is what the installed version takes.
# shellcheck shell=bash

# _zorvcrt_options COMMAND: a line for each option and letter of the command, with its value behind a tab.
_zorvcrt_options() {
  "${COMP_WORDS[0]}" "$1" --help 2>/dev/null | sed -n '/^options:/,/^$/ {
    s/^ *\(-[^ ,]*\), \(--[^ ]*\) .*/\1\n\2/p; t
    s/^ *\(--[^ ]*\) \([^ ][^ ]*\)  .*/\1\t\2/p; t
    s/^ *\(--[^ ]*\)  .*/\1/p
  }'
}

# _zorvcrt_operands COMMAND NUMBER: what the operand of that number may be; nothing stands for a file.
_zorvcrt_operands() {
  case $1.$2 in
    date.*) echo 'day week month year now' ;;
    log.2) echo 'fatal error warning info debug' ;;
    connect.1) echo 'localhost' ;;
    help.1) "${COMP_WORDS[0]}" --help 2>/dev/null | sed -n 's/^  \([a-z0-9]*\) .*/\1/p' ;;
  esac
}

# _zorvcrt_value OPTION: the value that the option takes, out of the lines of _zorvcrt_options on standard input.
_zorvcrt_value() {
  local name value
  while IFS=$'\t' read -r name value; do
    if [ "$name" = "$1" ]; then echo "$value"; fi
  done
}

_zorvcrt() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
  local IFS=$' \t\n' options value word number=1
  COMPREPLY=()
  if [ "$COMP_CWORD" -eq 1 ]; then
    mapfile -t COMPREPLY < <(compgen -W "$(_zorvcrt_operands help 1) help --help --version" -- "$current")
    return
  fi
  options=$(_zorvcrt_options "$command")
  # Bash makes a word of its own of the '=' between an option and its value.
  if [ "$previous" = = ]; then previous=${COMP_WORDS[COMP_CWORD - 2]}; fi
  if [ "$current" = = ]; then current=; fi
  value=$(_zorvcrt_value "$previous" <<<"$options")
  if [ -n "$value" ]; then
    # A value without choices is the user's own.
    [[ $value != *'|'* ]] || mapfile -t COMPREPLY < <(compgen -W "${value//|/ }" -- "$current")
    return
  fi
  if [[ $current == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$(cut -f1 <<<"$options")" -- "$current")
    return
  fi
  previous=
  for word in "${COMP_WORDS[@]:2:COMP_CWORD-2}"; do
    # Neither an option nor its value is an operand.
    [[ $word == -* ]] || [ -n "$(_zorvcrt_value "$previous" <<<"$options")" ] || number=$((number + 1))
    previous=$word
  done
  word=$(_zorvcrt_operands "$command" "$number")
  if [ -n "$word" ]; then
    mapfile -t COMPREPLY < <(compgen -W "$word" -- "$current")
  else
    compopt -o filenames 2>/dev/null || true
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
  fi
}

complete -F _zorvcrt zorvcrt
