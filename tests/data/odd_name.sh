#!/bin/sh
# sh odd_name.sh TOOL NAME: runs the job "a" under another name, whose result is a link.
for suffix in log fchk cis; do cp "a.$suffix" "./$2.$suffix"; done
ln -s a.sgn "./$2.sgn"
exec "$1" "$2.fchk"
