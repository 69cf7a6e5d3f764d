#!/usr/bin/env bash
# Tournament overheads, measured on whole runs of the real program:
#  Two embedded souls, GAMES games, two at a time: the wall time against
#     the games' own durations shared by the two threads, and against the
#     sum of each round's longest game (rounds are played one after the
#     other, so that is the least a run can take). Ratios; 1.00 is no overhead.
#  Games against an external engine and their pacing: bench/pacing.sh.
#   bench/tourney.sh build/talvena [GAMES]
set -euo pipefail
TALVENA=$(readlink -f "${1:-build/talvena}")
GAMES=${2:-20}
WORK=$(mktemp -d /tmp/talvena-bench-tourney.XXXXXX)

tourney() {  # name rounds game_ms inc_ms options engines...
  local name=$1 rounds=$2 game_ms=$3 inc_ms=$4 options=$5
  shift 5
  {
    echo "<tourney name=\"$name\" type=\"gauntlet\"><options><rounds>$rounds</rounds><threads>2</threads>"
    echo "<logfolder>$WORK</logfolder><opening_plies>6</opening_plies>$options</options>"
    echo "<clock moves_per_second=\"0\" game_ms=\"$game_ms\" increment_ms=\"$inc_ms\"/><engines>$*</engines></tourney>"
  } >"$WORK/$name.xml"
  local start=$(date +%s%N)
  "$TALVENA" -use=tourney -ini="$WORK/$name.xml" </dev/null >"$WORK/$name.out" 2>&1
  echo $((($(date +%s%N) - start) / 1000000))
}

embedded='<engine active="true" name="Simple5" protocol="embedded"/><engine active="true" name="Mass161" protocol="embedded"/>'
wall=$(tourney souls $(((GAMES + 1) / 2)) 3000 30 "" "$embedded")
awk -F'\t' -v wall="$wall" 'NR > 1 {
    games++; summed += $8; if ($8 > longest[$1]) longest[$1] = $8
  } END {
    for (round in longest) bound += longest[round]
    printf "souls: %d games, wall %.1f s; game time %.1f s over 2 threads = %.1f s (ratio %.3f); longest game of each round %.1f s (ratio %.3f)\n",
           games, wall / 1000, summed / 1000, summed / 2000, wall / (summed / 2), bound / 1000, wall / bound }' "$WORK/souls-1-results.tsv"

echo "files in $WORK"
