# fish completion for sgn_displace(1)
complete -c sgn_displace -f -a '(__fish_complete_suffix .gjf)'
complete -c sgn_displace -n 'string match -q -- "-*" (commandline -ct)' -a '(__stigruz_options sgn_displace)'
