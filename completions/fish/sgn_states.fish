# fish completion for sgn_states(1)
complete -c sgn_states -f -a '(__fish_complete_suffix .fchk)'
complete -c sgn_states -n 'string match -q -- "-*" (commandline -ct)' -a '(__stigruz_options sgn_states)'
