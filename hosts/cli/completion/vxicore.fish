# Completion of vxicore for fish: commands, options and their values are read from its help.

function __vxicore_command
    set -l words (commandline -opc)
    test (count $words) -gt 1; and string match -qr '^[a-z]' -- $words[2]; and echo $words[2]
end

# What may stand at the cursor behind a command: values of the option before, or options.
function __vxicore_complete
    set -l words (commandline -opc)
    set -l help (vxicore $words[2] --help 2>/dev/null)
    set -l previous $words[-1]
    if test "$previous" = --preset
        string join ' ' $help | string replace -ra ' +' ' ' |
            string replace -rf '.*or one of these by name: ([^.]*)\..*' '$1' | string replace -a ' ' '' | string split ','
        return
    end
    if string match -q -- '--*' $previous
        set -l value (string replace -rf "^  $previous ([^ ]*[|][^ ]*).*" '$1' -- $help)
        test -n "$value"; and string split '|' $value | string match -rv '^[A-Z]'; and return
    end
    string replace -rf '^  (?:-[a-z],)?(--[a-z-]+)(?: [^ ]+)? *(.*)' '$1\t$2' -- $help
end

complete -c vxicore -n 'not __vxicore_command' -f -l help -d 'Show the options'
complete -c vxicore -n 'not __vxicore_command' -f -l help-all -d 'Show the options of all commands'
complete -c vxicore -n 'not __vxicore_command' -f -l version -d 'Show the version'
complete -c vxicore -n 'not __vxicore_command' -f -a "(vxicore --help 2>/dev/null | string replace -rf '^  ([a-z]+) +(.*)' '\$1\t\$2')"
complete -c vxicore -n __vxicore_command -a '(__vxicore_complete)'
