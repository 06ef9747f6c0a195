#!/usr/bin/env bash
# The workflow of the README, run as it is written there. The programs of the Gaussian family are
# stand-ins that give the files of the bundled set.
set -euo pipefail
source=$1
build=$2
for tool in sgn_derive sgn_states; do [ -x "$build/tools/$tool" ] || exit 77; done

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin" "$work/set"
# Each makes its output only of what the step before has left.
cat >"$work/bin/g16" <<END
#!/bin/sh
grep -qx "%chk=\${1%.gjf}.chk" "\$1" && touch "\${1%.gjf}.chk" &&
    cp "$source/examples/water/\${1%.gjf}.log" .
END
cat >"$work/bin/formchk" <<END
#!/bin/sh
[ -e "\$1" ] && cp "$source/examples/water/\$2" "\$2"
END
cat >"$work/bin/rwfdump" <<END
#!/bin/sh
[ -e "\$1" ] && [ "\$1" = "\${2%.cis}.chk" ] && [ "\$3" = 635R ] && cp "$source/examples/water/\$2" "\$2"
END
chmod +x "$work"/bin/*
export PATH=$work/bin:$build/tools:$PATH

fail() {
    echo "$*" >&2
    exit 1
}

# The indented blocks of the section, a file each.
awk -v prefix="$work/block" '
    /^## / { inside = ($0 == "## In a workflow") }
    !inside { next }
    /^    / { if (!open) { open = 1; file = sprintf("%s%d", prefix, ++n) }
              printf "%s%s\n", blank, substr($0, 5) >file; blank = ""; next }
    /^$/ { if (open) blank = blank "\n"; next }
    { open = 0; blank = "" }' "$source/README.md"

# results: each must have been made, and its dipole points where the reference does.
results() {
    local right
    right=$(grep -c '^ Corrected_tdip = *-5\.[234]' h2o_ref.sgn h2o_[0-9]*[pm].sgn | grep -c ':1$')
    [ "$right" -eq 19 ] || fail "$right right results after $1"
}

cd "$work/set"
cp "$source/examples/water/h2o.gjf" .
for block in "$work"/block?; do
    case $(head -n 1 "$block") in
        %*)
            diff <(cat "$block"; echo) "$(sed -n 's/^%chk=\(.*\)\.chk$/\1.gjf/p' "$block")" >&2
            ;;
        '#!'*)
            rm h2o_[0-9]*.sgn
            read -r first last < <(sed -n 's/^#SBATCH --array=\([0-9]*\)-/\1 /p' "$block")
            for ((task = first; task <= last; ++task)); do
                SLURM_ARRAY_TASK_ID=$task bash "$block" || fail "task $task failed"
            done
            results "the job array"
            ;;
        *)
            bash -e "$block" >"$block.said" 2>&1 || fail "$(cat "$block" "$block.said")"
            ! grep 'failed' "$block.said" || fail "a job of the loop failed"
            [ ! -e h2o_ref.sgn ] || results "$(cat "$block")"
            ;;
    esac
done
