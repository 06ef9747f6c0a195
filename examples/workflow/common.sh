# What the scripts of the workflow share. They run in the directory of the jobs, where each job NAME
# has its NAME.log, NAME.fchk and NAME.cis, and gets its NAME.sgn.
# shellcheck shell=bash

# The jobs of the set, one a line: every log but that of the reference $1.
job_names() {
    local log
    for log in *.log; do
        if [ -e "$log" ] && [ "$log" != "$1.log" ]; then printf '%s\n' "${log%.log}"; fi
    done
}

# Whether job $1 has a result that is not older than what it was made from: the files of the job and
# the result of the reference $2 (left out for the reference itself). Files that were removed since
# do not count.
is_finished() {
    local input
    [ -e "$1.sgn" ] || return 1
    for input in "$1.log" "$1.fchk" "$1.cis" ${2:+"$2.sgn"}; do
        [ "$input" -nt "$1.sgn" ] && return 1
    done
    return 0
}

# Why job $1 has no result that counts.
reason() {
    local input
    if [ -e "$1.err" ]; then
        cat "$1.err"
        return
    fi
    for input in "$1.log" "$1.fchk" "$1.cis"; do
        if [ ! -e "$input" ]; then
            echo "there is no $input"
            return
        fi
    done
    if [ -e "$1.sgn" ]; then echo "not run since its files changed"; else echo "not run"; fi
}
