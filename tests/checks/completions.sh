#!/usr/bin/env bash
# What bash, zsh and fish complete after "--" is what the tool's --help lists; and bash, which quotes
# "=" in the names of files, leaves it as it is in options. A shell that is not here is left out.
set -euo pipefail
source=$1
build=$2
export PATH=$build/tools:$PATH

fail() {
    echo "$*" >&2
    exit 1
}

# In an interactive shell, compopt changes how the offered words are treated.
in_bash() {
    bash -c '
        compopt() { [ "$*" != "+o filenames" ] || quoted=; }
        . "$1"
        quoted=$(complete -p "$2" | grep -oF "o filenames")
        COMP_WORDS=("$2" --) COMP_CWORD=1
        "_$2"
        [[ -z $quoted || ${COMPREPLY[*]} != *=* ]] || echo "quoted:"
        printf "%s\n" "${COMPREPLY[@]%=}"' - "$source/completions/$1" "$1"
}

# shellcheck disable=SC2016 # fish's own variables
in_fish() {
    fish --no-config -c '
        set -p fish_complete_path $argv[1]
        set -p fish_function_path $argv[1]
        complete -C "$argv[2] --"' "$source/completions/fish" "$1" | cut -f 1
}

# With "--" as its last argument, _arguments asks the tool for its options.
in_zsh() {
    zsh -f -c '
        service=$2
        _arguments() { [[ $argv[-1] == -- ]] && $service --help | grep -oE -e "--[a-z][a-z-]*" }
        . "$1"' - "$source/completions/zsh/_stigruz" "$1"
}

for tool in "$build"/tools/*; do
    tool=${tool##*/}
    if [ ! -f "$build/tools/$tool" ] || [ ! -e "$source/man/$tool.1.in" ]; then continue; fi
    grep -qE "^#compdef.* ?$tool( |$)" "$source/completions/zsh/_stigruz" ||
        fail "$tool is not completed in zsh"
    [ -e "$source/completions/fish/$tool.fish" ] || fail "$tool is not completed in fish"
    if [ "$tool" = stigruz ]; then continue; fi
    options=$("$tool" --help | grep -oE -e '--[a-z][a-z-]*' | sort -u)
    for shell in bash fish zsh; do
        if ! command -v "$shell" >/dev/null; then continue; fi
        diff <(echo "$options") <("in_$shell" "$tool" | sort -u) >&2 ||
            fail "$tool: --help (<) and completion in $shell (>) differ"
    done
done
