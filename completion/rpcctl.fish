# fish completion for rpcctl, which knows its own words (rpcctl --complete).
function __rpcctl_words
    set -l words (commandline -opc) (commandline -ct)
    $words[1] --complete $words[2..-1] 2>/dev/null
end
complete -c rpcctl -f -n 'not contains -- (commandline -opc)[2] backup restore diff' -a '(__rpcctl_words)'
complete -c rpcctl -n 'contains -- (commandline -opc)[2] backup restore diff' -a '(__rpcctl_words)'
