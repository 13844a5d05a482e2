# bash completion for avmngctl and sdptool. The program itself lists what can follow the
# words typed so far (TOOL --complete WORD... CURRENT): subcommands, options, and for
# `avmngctl send` the command ids and names. Where it lists nothing, file names complete.
_pimav_tool_complete() {
    local IFS=$'\n'
    COMPREPLY=($("$1" --complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null))
}
complete -o default -F _pimav_tool_complete avmngctl sdptool
