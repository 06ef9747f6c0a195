#!/usr/bin/env bash
# Makes sure that what tasks need is installed: setup.sh build|tools|python|test|python-test|...
# (tools: the header libraries of all tools but stigruz)
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
command -v ninja >/dev/null || need make make

# The header libraries of the tools beside stigruz.
need_tools() {
    need libeigen3-dev /usr/include/eigen3/Eigen/Core
    need libcli11-dev /usr/include/CLI/CLI.hpp
    need nlohmann-json3-dev /usr/include/nlohmann/json.hpp
}

# The module is built with pybind11, for a Python with its headers and NumPy: Debian's, or one of the user's
# for which CMake looks.
need_python() {
    need pybind11-dev /usr/include/pybind11/pybind11.h
    python3 -c 'import numpy, sysconfig; open(sysconfig.get_path("include") + "/Python.h").close()' 2>/dev/null || {
        compgen -G '/usr/include/python3.*/Python.h' >/dev/null || missing+=(python3-dev)
        need python3-numpy /usr/lib/python3/dist-packages/numpy
    }
}

for task in "${@:-build}"; do
    case "$task" in
        build) ;;
        tools) need_tools ;;
        python) need_python ;;
        python-test)
            need_python
            need python3-pytest /usr/lib/python3/dist-packages/pytest
            need mypy stubtest
            need python3-ase /usr/lib/python3/dist-packages/ase
            need python3-matplotlib /usr/lib/python3/dist-packages/matplotlib
            ;;
        test)
            need libgtest-dev /usr/include/gtest/gtest.h
            need libgmock-dev /usr/include/gmock/gmock.h
            ;;
        lint)
            need_tools
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
        package)
            need_tools
            need_python
            need dpkg-dev dpkg-shlibdeps
            need file file
            ;;
        *)
            echo "usage: setup.sh build|tools|python|test|python-test|lint|fuzz|docs|package..." >&2
            exit 2
            ;;
    esac
done

if [ "${#missing[@]}" -eq 0 ]; then
    exit 0
fi
mapfile -t missing < <(printf '%s\n' "${missing[@]}" | sort -u)

if [ "$(id -u)" -ne 0 ]; then
    echo "These packages are missing: ${missing[*]}" >&2
    echo "Ask an administrator for them, or as root: apt-get install ${missing[*]}" >&2
    exit 1
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
apt-get update -qq >/dev/null
apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
