#!/bin/bash
# Soul learning over a Slurm cluster, run on the login node:
#
#   examples/slurm/learn.sh FILE GENERATIONS SLICES [-souls=E -ms=M -moves=X -seed=S]
#
# The first breed step makes a generation ready to play when FILE holds none
# (a missing FILE starts from the presets; the options after SLICES apply
# then). Each generation is then played as SLICES array tasks of
# learn_slice.sbatch, waited for, and bred into the next one. FILE must lie
# on a file system that every node sees. Stopped half-way, the script is
# simply run again: a slice keeps its finished pairs, and the breed step
# refuses until every slice is complete.
set -euo pipefail
FILE=${1:?usage: learn.sh FILE GENERATIONS SLICES [-souls=E -ms=M -moves=X -seed=S]}
GENERATIONS=${2:?usage: learn.sh FILE GENERATIONS SLICES}
SLICES=${3:?usage: learn.sh FILE GENERATIONS SLICES}
shift 3
TALVENA=${TALVENA:-talvena}
HERE=$(cd "$(dirname "$0")" && pwd)
FILE=$(realpath -m "$FILE")

# The number of the generation FILE holds to play, or nothing.
to_play() {
  [ -f "$FILE" ] && sed -n 's/^# generation \([0-9]*\) to play .*/\1/p' "$FILE" | tail -n 1
}

if [ -z "$(to_play)" ]; then
  "$TALVENA" -use=learn "$FILE" -breed "$@" </dev/null
fi
for ((i = 0; i < GENERATIONS; i++)); do
  generation=$(to_play)
  sbatch --wait --array=0-$((SLICES - 1)) "$HERE/learn_slice.sbatch" "$FILE" "$generation"
  "$TALVENA" -use=learn "$FILE" -breed </dev/null
done
