#!/usr/bin/env bash
# Makes sure that what a task needs is installed: setup.sh build|test|lint|fuzz|docs|package
# As root, what is missing is installed through apt; else it is named and the script fails.
set -euo pipefail

missing=()

# need PACKAGE COMMAND-OR-FILE: notes the package if the command or file is absent.
need() {
    case "$2" in
        /*) [ -e "$2" ] || missing+=("$1") ;;
        *) command -v "$2" >/dev/null || missing+=("$1") ;;
    esac
}

need g++ g++
need cmake cmake
need make make
case "${1:-build}" in
    build) ;;
    test)
        need libgtest-dev /usr/include/gtest/gtest.h
        need libgmock-dev /usr/include/gmock/gmock.h
        ;;
    lint)
        need clang clang++
        need clang-format clang-format
        need clang-tidy clang-tidy
        need cppcheck cppcheck
        need shellcheck shellcheck
        ;;
    fuzz)
        need clang clang++
        need libclang-rt-dev \
            "$(clang++ -print-resource-dir 2>/dev/null)/lib/linux/libclang_rt.fuzzer-$(uname -m).a"
        need llvm llvm-cov
        ;;
    docs) need doxygen doxygen ;;
    package) need dpkg-dev dpkg-shlibdeps ;;
    *)
        echo "usage: setup.sh build|test|lint|fuzz|docs|package" >&2
        exit 2
        ;;
esac

if [ "${#missing[@]}" -eq 0 ]; then
    exit 0
fi

if [ "$(id -u)" -ne 0 ]; then
    echo "These packages are missing: ${missing[*]}" >&2
    echo "Ask an administrator for them, or as root: apt-get install ${missing[*]}" >&2
    exit 1
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq >/dev/null
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
