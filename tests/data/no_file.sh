#!/bin/sh
# no_file.sh TOOL: runs the tool where its result "a.sgn" is a link to something that no result may
# replace. As root, devices are among that: nodes made here, because a tool that failed this test
# would replace them.
mkfifo pipe
mkdir directory
: >errors
others="a.sgn pipe directory a.log/x"
if mknod full c 1 7 2>errors && mknod null c 1 3 2>errors; then others="$others full null"; fi
mv a.sgn earlier
for other in $others; do
    ln -s "$other" a.sgn
    before=$(stat -c '%n %f %i' -- * 2>&1)
    "$1" a.fchk 2>errors
    if test $? != 2 || test "$(stat -c '%n %f %i' -- * 2>&1)" != "$before"; then exit 99; fi
    rm a.sgn
done
mv earlier a.sgn
cat errors >&2
exit 2
