# fish completion for sgn_derive(1)
complete -c sgn_derive -f -a '(__fish_complete_suffix .sgn .fchk)'
complete -c sgn_derive -n 'string match -q -- "-*" (commandline -ct)' -a '(__stigruz_options sgn_derive)'
