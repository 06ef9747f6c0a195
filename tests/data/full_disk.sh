#!/bin/sh
# full_disk.sh TOOL: runs the tool on a copy of the job "a" on a small file system that is full.
# Status 77: there is none to be had.
mkdir disk
mount -t tmpfs -o size=64k none disk 2>errors || exit 77
cp a.* disk
cd disk || exit 77
cat /dev/zero >rest 2>/dev/null
ls -A >../before
"$1" a.fchk
status=$?
ls -A >../after
cmp ../before ../after >&2 && cmp a.sgn ../a.sgn >&2 && exit $status
exit 99
