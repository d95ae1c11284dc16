# bash completion for rpcctl, which knows its own words (rpcctl --complete).
_rpcctl() {
  local line=${COMP_LINE:0:COMP_POINT} typed candidate
  local -a words
  read -ra words <<<"$line"
  [[ $line == *[[:space:]] ]] && words+=("")
  typed=${words[-1]}
  COMPREPLY=()
  while IFS=$'\t' read -r candidate _; do
    COMPREPLY+=("$candidate")
  done < <("${words[0]}" --complete "${words[@]:1}" 2>/dev/null)
  # bash takes a word of its own to begin behind '='
  if [[ $typed == *=* && $COMP_WORDBREAKS == *=* ]]; then
    COMPREPLY=("${COMPREPLY[@]#"${typed%"${typed##*=}"}"}")
  fi
  [[ ${#COMPREPLY[@]} -eq 1 && ${COMPREPLY[0]} == *= ]] && compopt -o nospace
  return 0
}
complete -o default -F _rpcctl rpcctl
