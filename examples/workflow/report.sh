#!/usr/bin/env bash
# report.sh REFERENCE [JOB...]
# Tells how the set in the working directory stands: how many jobs have a result, which do not and
# why; whether qm_file finds in the dumps what amplitudes must be (its rows are in REFERENCE_dumps.txt);
# whether sgn_check finds the signs trustworthy (its table is in REFERENCE_sgn_check.txt); whether the
# jobs were run for the state whose signs these are; and, when all
# jobs are finished, makes the derivatives (REFERENCE_derivatives.txt, .json, .html). Which jobs: see
# jobs.sh.
#
# Status 0: all jobs are finished, dumps and signs were checked and fine, the derivatives too.
# The tools are $QM_FILE, $SGN_CHECK and $SGN_DERIVE, else qm_file, sgn_check and sgn_derive. They may
# have options: SGN_CHECK="sgn_check --no-pairs". An empty SGN_DERIVE leaves the derivatives out.
set -o pipefail
# shellcheck source=/dev/null
. "$(dirname "$0")/common.sh"
[ "$#" -gt 0 ] || complain "usage: report.sh REFERENCE [JOB...]"
reference=$(job_name "$1") || exit 1
shift
jobs=() passed_over=()
select_jobs "$reference" "$@"
require_one_set "$reference" "${jobs[@]}"
clear_left_over
status=0
# Two sets may be in one directory.
dumps_said=${reference}_dumps.txt
signs_said=${reference}_sgn_check.txt
derivatives=${reference}_derivatives

not_checked() {
    echo "signs NOT checked: $1"
    status=1
}
not_looked_at() {
    echo "dumps NOT looked at: $1"
    status=1
}
not_made() {
    echo "derivatives NOT made: $1"
    status=1
}

# What a tool said of its failure: its first complaint, else its first line.
complaint() {
    grep -m 1 -E '^[A-Za-z_]+: ' "$1" || head -n 1 "$1"
}

if ! is_finished "$reference"; then
    echo "The reference $reference has no result: $(reason "$reference")"
    not_checked "there is no result of the reference"
    exit 1
fi
results=()
missing=()
for name in "${jobs[@]}"; do
    if is_finished "$name" "$reference"; then
        results+=("$name.sgn")
    else
        missing+=("$name")
    fi
done

echo "${#jobs[@]} jobs: ${#results[@]} finished, ${#missing[@]} not"
for name in "${missing[@]}"; do
    echo "  $name: $(reason "$name")"
    status=1
done
if [ "${#passed_over[@]}" -gt 0 ]; then
    echo "passed over, not named like jobs of this set: ${passed_over[*]}"
fi

# check_dumps: a dump in a layout that nobody knows is noticed before its signs are believed.
check_dumps() {
    local said=0 doubts untold left command=()
    rm -f -- "$dumps_said"
    if [ "${#results[@]}" -eq 0 ]; then return; fi
    split_command "${QM_FILE:-qm_file}"
    if ! command -v -- "${command[0]}" >/dev/null; then
        not_looked_at "${command[0]} is not installed here"
        return
    fi
    # Those of finished jobs may have been removed.
    local dumps=() result
    for result in "$reference.sgn" "${results[@]}"; do
        if [ -e "${result%.sgn}.cis" ]; then dumps+=("./${result%.sgn}.cis"); fi
    done
    if [ "${#dumps[@]}" -lt 2 ]; then return; fi
    "${command[@]}" dump "${dumps[@]}" >"./$dumps_said" 2>&1 || said=$?
    if [ "$said" -ne 0 ]; then
        not_looked_at "$(complaint "./$dumps_said") (status $said)"
        return
    fi
    left=$(printf '%s: record 635: \n' "${dumps[@]}" | LC_ALL=C sort |
        LC_ALL=C comm -23 - <(grep -o '^.*: record 635: ' "./$dumps_said" | LC_ALL=C sort))
    if [ -n "$left" ]; then
        not_looked_at "'${command[*]}' finds no amplitudes in ${left%%: record*} (see $dumps_said)"
        return
    fi
    doubts=$(grep -c ' doubt: ' "./$dumps_said")
    untold=$(grep -c 'the layout is not told' "./$dumps_said")
    if [ "$doubts" -gt 0 ]; then
        echo "dumps: there is doubt whether these are amplitudes, see $dumps_said:"
        grep -m 5 ' doubt: ' "./$dumps_said" | sed 's|^|  |'
        dumps_in_doubt=1
        status=1
    elif [ "$untold" -gt 0 ]; then
        echo "dumps: $untold of ${#dumps[@]} do not tell their layout, so nothing in them was checked"
    else
        echo "dumps: no doubt"
    fi
}

# check_signs: fine or in doubt is only what sgn_check has said of every file.
check_signs() {
    local said=0 left
    rm -f -- "$signs_said"
    local command=()
    split_command "${SGN_CHECK:-sgn_check}"
    if [ "${#results[@]}" -eq 0 ]; then
        not_checked "there is no result"
        return
    fi
    if ! command -v -- "${command[0]}" >/dev/null; then
        not_checked "${command[0]} is not installed here"
        return
    fi
    "${command[@]}" "$reference.sgn" "${results[@]}" >"./$signs_said" 2>&1 || said=$?
    if [ "$said" -gt 1 ]; then
        not_checked "$(complaint "./$signs_said") (status $said)"
        return
    fi
    left=$(printf '%s\n' "$reference.sgn" "${results[@]}" | LC_ALL=C sort |
        LC_ALL=C comm -23 - <(printf '%s\n' "$reference.sgn" "${results[@]}" |
            grep -oFf - "./$signs_said" | LC_ALL=C sort -u))
    if [ -n "$left" ]; then
        not_checked "'${command[*]}' says nothing of ${left%%$'\n'*} (see $signs_said)"
    elif [ "$said" -eq 0 ]; then
        echo "sgn_check: all fine"
    else
        echo "sgn_check: there is doubt, see $signs_said"
        status=1
    fi
}

# The root of a log's route, "root=2"; 1 where it names none. It may be cut anywhere after 70 columns.
root_of() {
    local root
    root=$(awk '/^ #/ { found = 1 } found { if (/^ ---/) exit; printf "%s", substr($0, 2) }' "$1" |
        tr -d ' ' | grep -m 1 -ioE 'root=[0-9]+')
    printf '%s\n' "${root:-root=1}" | sed 's/^.*=0*//'
}

# check_roots: signs and dipoles are those of the first state; forces are those of the root that the
# log's job was run for.
check_roots() {
    local root of_reference result log other=''
    [ -e "$reference.log" ] || return 0
    of_reference=$(root_of "./$reference.log")
    for result in "${results[@]}"; do
        log=${result%.sgn}.log
        [ -e "$log" ] || continue
        root=$(root_of "./$log")
        if [ "$root" != "$of_reference" ]; then other="${other:+$other, }$log: root $root"; fi
    done
    if [ -n "$other" ]; then
        echo "roots: not all jobs were run for the same root ($reference.log: root $of_reference):" \
            "the forces are not those of one state: $other"
        status=1
    elif [ "$of_reference" != 1 ]; then
        echo "roots: the jobs were run for root $of_reference: forces and wavenumbers are those of that" \
            "state, signs and dipoles those of state 1 (sgn_derive takes both of any state from the jobs)"
    fi
}

make_derivatives() {
    local said=0 form command=()
    rm -f -- "$derivatives".{txt,json,html}
    if [ -n "${SGN_DERIVE+set}" ] && [ -z "$SGN_DERIVE" ]; then return; fi
    split_command "${SGN_DERIVE:-sgn_derive}"
    if [ "${#missing[@]}" -gt 0 ]; then
        not_made "jobs are missing"
    elif [ "$dumps_in_doubt" -eq 1 ]; then
        not_made "there is doubt about the dumps"
    elif ! command -v -- "${command[0]}" >/dev/null; then
        if [ -n "${SGN_DERIVE-}" ]; then
            not_made "${command[0]} is not installed here"
        else
            echo "derivatives: left out, as sgn_derive is not installed here"
        fi
    else
        # Without options of the user's own, all forms that the tool has.
        if [ "${#command[@]}" -eq 1 ]; then
            for form in json html; do
                if [[ $("${command[0]}" --help 2>/dev/null) == *" --$form="* ]]; then
                    command+=("--$form=./$derivatives.$form")
                fi
            done
        fi
        "${command[@]}" "$reference.sgn" "${results[@]}" >"./$derivatives.txt" 2>&1 || said=$?
        if [ "$said" -gt 1 ]; then
            not_made "$(complaint "./$derivatives.txt") (status $said)"
            rm -f -- "$derivatives".{txt,json,html}
        elif [ "$said" -eq 1 ]; then
            echo "derivatives: in $derivatives.txt, but there is doubt"
            status=1
        else
            echo "derivatives: in $derivatives.txt"
        fi
    fi
}

dumps_in_doubt=0
check_dumps
check_signs
check_roots
make_derivatives
exit "$status"
