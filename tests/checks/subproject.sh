#!/usr/bin/env bash
# As a part of another project this one is its libraries, and nothing else: no tools, no tests, no rules
# of installation.
set -euo pipefail
source=$1
compiler=$3

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cat >"$work/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.20)
project(parent LANGUAGES CXX)
add_subdirectory("$source" stigruz)
add_executable(count_atoms "$source/tests/checks/consumer/count_atoms.cpp")
target_link_libraries(count_atoms PRIVATE flib::flib)
get_property(targets DIRECTORY "$source" PROPERTY BUILDSYSTEM_TARGETS)
get_property(library DIRECTORY "$source/lib" PROPERTY BUILDSYSTEM_TARGETS)
if(NOT "\${targets};\${library}" MATCHES "^build_flags;flib;sgn_job(;sgn)?\$" OR CMAKE_BUILD_TYPE OR TARGET stigruz)
    message(FATAL_ERROR "also here: \${targets} \${library} \${CMAKE_BUILD_TYPE}")
endif()
END
cmake -S "$work" -B "$work/build" -DCMAKE_CXX_COMPILER="$compiler" >"$work/log" 2>&1 || {
    cat "$work/log" >&2
    exit 1
}
[ ! -e "$work/build/CPackConfig.cmake" ] || { echo "packages of the other project" >&2; exit 1; }
