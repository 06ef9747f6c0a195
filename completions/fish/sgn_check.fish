# fish completion for sgn_check(1)
complete -c sgn_check -f -a '(__fish_complete_suffix .sgn)'
complete -c sgn_check -n 'string match -q -- "-*" (commandline -ct)' -a '(__stigruz_options sgn_check)'
