# fish completion for qm_file(1)
complete -c qm_file -n 'string match -q -- "-*" (commandline -ct)' -a '(__stigruz_options qm_file)'
