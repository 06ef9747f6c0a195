# What the scripts of the workflow share. They run in the directory of the jobs, where each job NAME
# has its NAME.log, NAME.fchk and NAME.cis, and gets its NAME.sgn. Beside that stands NAME.made, which
# tells what the result was made from.
# shellcheck shell=bash

complain() {
    echo "${0##*/}: $1" >&2
    exit 1
}

# The name of the job $1, for which the name of one of its files may stand.
job_name() {
    local name=${1#./}
    case $name in
        *.log | *.out | *.fchk | *.chk | *.cis | *.rwf | *.sgn | *.gjf | *.com) name=${name%.*} ;;
    esac
    case $name in
        '' | */*) complain "'$1' names no job of this directory; the scripts run in that of the jobs" ;;
    esac
    printf '%s\n' "$name"
}

# names_of EXTENSION...: the names of all files with these extensions, one a line.
names_of() {
    local extension file
    for extension in "$@"; do
        for file in *."$extension"; do
            if [ -e "$file" ]; then printf '%s\n' "${file%.*}"; fi
        done
    done | LC_ALL=C sort -u
}

# select_jobs REFERENCE [JOB...]: puts the names of the set's jobs into the array `jobs`, in order and
# without the reference. A JOB is a name, a pattern in quotes, or @FILE with a name on each line.
# Without any, the set is
# - of a reference SET_ref what sgn_displace calls its jobs (SET_01xp, or SET_01xp10000 of several
#   steps) if there are such, whether their logs are there or not; other logs go into the array `passed_over`;
# - else everything in the directory that has a log or a dump.
select_jobs() {
    local reference=$1 each name found all set
    shift
    jobs=() passed_over=()
    mapfile -t all < <(names_of log cis)
    if [ "$#" -gt 0 ]; then
        for each in "$@"; do
            if [[ $each == @* ]]; then
                [ -r "${each#@}" ] || complain "the list '${each#@}' cannot be read"
                while IFS= read -r name || [ -n "$name" ]; do
                    name=${name%$'\r'}
                    if [ -n "$name" ]; then jobs+=("$(job_name "$name")") || exit 1; fi
                done <"${each#@}"
                continue
            fi
            each=$(job_name "$each") || exit 1
            if [[ $each != *[*?[]* || -e $each.log ]]; then
                jobs+=("$each")
                continue
            fi
            found=0
            for name in "${all[@]}"; do
                # shellcheck disable=SC2053
                if [[ $name == $each ]]; then
                    jobs+=("$name")
                    found=1
                fi
            done
            [ "$found" -eq 1 ] || complain "no job has a name like '$each'"
        done
    else
        set=${reference%_ref}
        if [ "$set" != "$reference" ]; then
            while IFS= read -r name; do
                if [[ ${name#"$set"} =~ ^_[0-9]+[xyz][pm]([0-9]{5,6})?$ && $name == "$set"_* ]]; then
                    jobs+=("$name")
                fi
            done < <(names_of log cis fchk gjf)
        fi
        if [ "${#jobs[@]}" -eq 0 ]; then
            jobs=("${all[@]}")
        else
            # shellcheck disable=SC2034
            mapfile -t passed_over < <(printf '%s\n' "$reference" "${jobs[@]}" |
                LC_ALL=C sort -u | LC_ALL=C comm -13 - <(names_of log))
        fi
    fi
    mapfile -t jobs < <(printf '%s\n' "${jobs[@]}" | LC_ALL=C sort -u | grep -vxF -e "$reference" -e '')
    if [ "${#jobs[@]}" -eq 0 ]; then complain "there are no jobs to do beside $reference$(where_else)"; fi
}

# clear_left_over [NAME]: removes what runs of the tools that were killed have left of the result of
# job NAME, without it of all results: .NAME.sgn.PID-N, where no process here has the number PID and
# nothing was written for a minute, since it may be that of another machine's process.
clear_left_over() {
    local file
    while IFS= read -r -d '' file; do
        [[ $file =~ ^\./\.(.+)\.sgn\.([1-9][0-9]*)-(0|[1-9][0-9]{0,3})$ ]] || continue
        [ "${1-${BASH_REMATCH[1]}}" = "${BASH_REMATCH[1]}" ] || continue
        [[ $(LC_ALL=C; kill -0 "${BASH_REMATCH[2]}" 2>&1) == *"No such process"* ]] || continue
        rm -f -- "$file"
    done < <(find . -maxdepth 1 -type f -name '.*.sgn.*-*' -mmin +1 -print0 2>/dev/null)
}

# Where the jobs may be instead.
where_else() {
    local file
    for file in */*.log; do
        if [ -e "$file" ]; then
            echo ": the files of all jobs must stand in this directory, not in their own like $file"
            echo "(here, as links: ln -s -- */*.log */*.fchk */*.cis .)"
            return
        fi
    done
    for file in *.out; do
        if [ -e "$file" ]; then
            echo ": logs must be called NAME.log, not $file"
            return
        fi
    done
    echo " in $PWD"
}

# made_from NAME [REFERENCE]: what a result of job NAME is made from now, one thing a line: the
# reference (NAME itself without REFERENCE) and its result, and the files of the job. Size and times
# stand for the contents; the time of the last change of a file cannot be set back, so that copies
# which keep the older time of modification are seen.
made_from() {
    local file
    printf 'reference %s\n' "${2:-$1}"
    if [ -n "${2-}" ]; then printf 'its result %s\n' "$(cksum <"$2.sgn")"; fi
    for file in "$1.log" "$1.fchk" "$1.cis"; do
        if [ -e "$file" ]; then printf 'file %s %s\n' "$file" "$(stat -L -c '%s %.9Y %.9Z' -- "$file")"; fi
    done
}

# Whether job $1 has a result that was made from what is there now: the files of the job and the
# result of the reference $2 (left out for the reference itself). Files that were removed since do
# not count.
is_finished() {
    local recorded line
    [ -e "$1.sgn" ] && [ -e "$1.made" ] || return 1
    if [ -n "${2-}" ] && [ ! -e "$2.sgn" ]; then return 1; fi
    recorded=$'\n'$(<"$1.made")$'\n'
    while IFS= read -r line; do
        [[ $recorded == *$'\n'"$line"$'\n'* ]] || return 1
    done < <(made_from "$@" && printf 'result %s\n' "$(cksum <"$1.sgn")")
}

# Tells, and succeeds, if the result of job $1 was made with another reference than $2 (itself
# without).
is_of_another_set() {
    local word was=''
    [ -e "$1.sgn" ] && [ -e "$1.made" ] || return 1
    read -r word was <"$1.made"
    [ "$word" = reference ] && [ "$was" != "${2:-$1}" ] || return 1
    if [ "$was" = "$1" ]; then
        echo "$1.sgn was made as a reference, not mapped on ${2-}"
    else
        echo "$1.sgn was mapped on the reference $was, not ${2:-made as a reference itself}"
    fi
}

# require_one_set REFERENCE JOB...: ends the script if there are results of other references.
require_one_set() {
    local reference=$1 name said
    shift
    for name in '' "$@"; do
        if said=$(is_of_another_set "${name:-$reference}" ${name:+"$reference"}); then
            complain "$said; results of two references do not belong together.
To start anew with $reference: rm -f -- *.sgn *.made"
        fi
    done
}

# Why job $1 cannot be run, if a file is missing.
missing_file() {
    local input
    for input in "$1.log" "$1.fchk" "$1.cis"; do
        if [ ! -e "$input" ]; then
            printf 'there is no %s' "$input"
            if [ "$input" = "$1.log" ] && [ -e "$1.out" ]; then
                printf ", but %s.out (ln -s -- '%s.out' '%s')" "$1" "$1" "$input"
            fi
            echo
            return 0
        fi
    done
    return 1
}

# Why job $1 has no result that counts.
reason() {
    if [ -e "$1.err" ]; then
        cat "$1.err"
    elif missing_file "$1"; then
        return
    elif [ ! -e "$1.sgn" ]; then
        echo "not run"
    elif [ ! -e "$1.made" ]; then
        echo "$1.sgn was not made by these scripts"
    else
        echo "not run since its files or the reference changed"
    fi
}

# split_command TEXT: puts a command with options into the array `command`. Its path may hold blanks:
# the longest beginning of TEXT that can be run is the command.
split_command() {
    local head=$1 options
    while ! command -v -- "$head" >/dev/null && [[ $head == *' '* ]]; do
        head=${head% *}
    done
    command=("${head:-$1}")
    if [ -n "$head" ] && [ "$head" != "$1" ]; then
        read -ra options <<<"${1#"$head"}"
        command+=("${options[@]}")
    fi
}
