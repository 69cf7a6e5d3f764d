#!/usr/bin/env bash
# Tournament overheads, measured on whole runs of the real program:
#  1. Two embedded souls, GAMES games, two at a time: the wall time against
#     the games' own durations shared by the two threads, and against the
#     sum of each round's longest game (rounds are played one after the
#     other, so that is the least a run can take). Ratios; 1.00 is no overhead.
#  2. Embedded Simple5 against fairymax, FAIRY_GAMES games at 10 s + 100 ms,
#     two at a time, with the default 100 ms pause after every command and
#     with none (command_pause_ms 0): how many games were lost on time, and
#     by whom; the games' wall time against the players' thinking time (from
#     each game's log: a move's thinking runs from the last line before it,
#     the opponent's move or the last command sent, to the move).
#   bench/tourney.sh build/talvena [GAMES] [FAIRY_GAMES]
set -euo pipefail
TALVENA=$(readlink -f "${1:-build/talvena}")
GAMES=${2:-20}
FAIRY_GAMES=${3:-100}
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

fairy='<engine active="true" name="Simple5" protocol="embedded"/><engine active="true" name="Fairy-Max" protocol="xboard" filename="/usr/games/fairymax"/>'
for pause in 100 0; do
  wall=$(tourney fairy$pause $(((FAIRY_GAMES + 1) / 2)) 10000 100 "<command_pause_ms>$pause</command_pause_ms>" "$fairy")
  awk -F'\t' -v wall="$wall" -v pause="$pause" 'NR > 1 {
      games++; played += $8
      if ($6 == "forfeit") { forfeits++; loser = ($5 == "1-0") ? $4 : $3; lost[loser]++ }
    } END {
      printf "fairymax, command_pause_ms %d: %d games in %.1f s, %d lost on time (Simple5 %d, Fairy-Max %d)\n",
             pause, games, wall / 1000, forfeits, lost["Simple5"], lost["Fairy-Max"]
      printf "  game wall time %.1f s in all\n", played / 1000 }' "$WORK/fairy$pause-1-results.tsv"
  # The logs of the last round (each round writes its games' logs anew).
  awk -F'\t' '
    function ms(stamp, parts) { sub(/^# /, "", stamp); split(stamp, parts, ":"); return (parts[1] * 3600 + parts[2] * 60 + parts[3]) * 1000 }
    FNR == 1 { wall += end; games++ }
    { end = ms($1) }
    /new match:/ { last = end }
    $2 == "white" || $2 == "black" {
      if ($3 == "--->") { last = end; next }
      if ($3 ~ /^move /) { think += end - last; moves++; last = end }
    }
    END { wall += end
          printf "  last round: %d games, wall %.1f s, thinking %.1f s (%.2f), %d moves, %.0f ms a move besides thinking\n",
                 games, wall / 1000, think / 1000, wall / think, moves, (wall - think) / moves }' "$WORK"/fairy$pause-1-*.log
done
echo "files in $WORK"
