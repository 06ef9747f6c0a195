#!/usr/bin/env bash
# docs/headers.md is what scripts/headers.sh makes of the headers, and every header says what it is.
set -euo pipefail
cd "$1"
diff <(scripts/headers.sh) docs/headers.md >&2 || { echo "run scripts/headers.sh >docs/headers.md" >&2; exit 1; }
if grep -n '|  |' docs/headers.md >&2; then exit 1; fi
