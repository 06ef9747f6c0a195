# fish completion for stigruz(1): a checkpoint, then the reference's result file
complete -c stigruz -f -n '__fish_is_nth_token 1' -a '(__fish_complete_suffix .fchk)'
complete -c stigruz -f -n '__fish_is_nth_token 2' -a '(__fish_complete_suffix .sgn)'
