# __stigruz_options TOOL: the options in its --help, each with what is said of it.
function __stigruz_options
    $argv[1] --help |
        string replace -rf '^ +(?:-\w, ?)?(--[a-z][a-z-]+)(?:[= ][A-Z]\S*)? *(.*)' '$1\t$2'
end
