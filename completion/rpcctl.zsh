#compdef rpcctl
# zsh completion for rpcctl, which knows its own words (rpcctl --complete); installed
# as _rpcctl where zsh looks.
_rpcctl() {
  local line candidate meaning
  local -a plain open plain_shown open_shown
  "${words[1]}" --complete "${(@)words[2,CURRENT-1]}" "$PREFIX" 2>/dev/null | while IFS= read -r line; do
    candidate=${line%%$'\t'*} meaning=
    [[ $line == *$'\t'* ]] && meaning="  -- ${line#*$'\t'}"
    if [[ $candidate == *= ]]; then
      open+=("$candidate") open_shown+=("$candidate$meaning")
    else
      plain+=("$candidate") plain_shown+=("$candidate$meaning")
    fi
  done
  (( $#plain )) && compadd -l -d plain_shown -- "${plain[@]}"
  (( $#open )) && compadd -S '' -l -d open_shown -- "${open[@]}"
  (( $#plain + $#open )) || _files
}
if [ "$funcstack[1]" = _rpcctl ]; then
  _rpcctl "$@"
else
  compdef _rpcctl rpcctl
fi
