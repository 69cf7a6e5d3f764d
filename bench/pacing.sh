#!/usr/bin/env bash
# Pacing of games against an external engine: embedded Simple5 against
# fairymax at 10 s + 100 ms, two games at a time, with the default 100 ms
# pause after every command and with none (command_pause_ms 0). Per game, its
# wall time (the results file's ms) against the players' thinking time (from
# the game's log: a move's thinking runs from the last line before it, the
# opponent's move or the last command sent, to the move); prints the medians
# over the games and the games lost on time.
# Each pair of games is a run of its own, so that every game keeps its log.
#   bench/pacing.sh build/talvena [GAMES]
set -euo pipefail
TALVENA=$(readlink -f "${1:-build/talvena}")
GAMES=${2:-100}
# WORK=FOLDER with GAMES 0 reads the games of an earlier run again.
WORK=${WORK:-$(mktemp -d /tmp/talvena-bench-pacing.XXXXXX)}

players='<engine active="true" name="Simple5" protocol="embedded"/><engine active="true" name="Fairy-Max" protocol="xboard" filename="/usr/games/fairymax"/>'
for pause in 0 100; do
  name=pace$pause
  cat >"$WORK/$name.xml" <<EOF
<tourney name="$name" type="gauntlet"><options><rounds>1</rounds><threads>2</threads>
<logfolder>$WORK</logfolder><opening_plies>6</opening_plies><command_pause_ms>$pause</command_pause_ms></options>
<clock moves_per_second="0" game_ms="10000" increment_ms="100"/><engines>$players</engines></tourney>
EOF
  for ((run = 1; run <= (GAMES + 1) / 2; ++run)); do
    "$TALVENA" -use=tourney -ini="$WORK/$name.xml" </dev/null >>"$WORK/$name.out" 2>&1
  done
  # One line per game: wall ms, thinking ms, the player lost on time ("-" for none).
  for results in "$WORK"/$name-*-results.tsv; do
    run=${results#"$WORK/$name-"}
    run=${run%-results.tsv}
    awk -F'\t' 'NR > 1 { print $2, $8, ($6 != "forfeit") ? "-" : ($5 == "1-0") ? $4 : $3 }' "$results" |
      while read -r game wall forfeit; do
        awk -F'\t' -v wall="$wall" -v forfeit="$forfeit" '
          function ms(stamp, parts) { sub(/^# /, "", stamp); split(stamp, parts, ":"); return (parts[1] * 3600 + parts[2] * 60 + parts[3]) * 1000 }
          { now = ms($1) }
          /new match:/ { last = now }
          $2 == "white" || $2 == "black" {
            if ($3 == "--->") { last = now; next }
            if ($3 ~ /^move /) { think += now - last; last = now }
          }
          END { print wall, think, forfeit }' "$WORK/$name-$run-$game.log"
      done
  done >"$WORK/$name.games"
  awk -v pause="$pause" '
    { wall[NR] = $1; think[NR] = $2; ratio[NR] = $2 > 0 ? $1 / $2 : 0; if ($3 != "-") { forfeits++; lost[$3]++ } }
    function median(values, n, sorted, i, j, t) {
      for (i = 1; i <= n; ++i) sorted[i] = values[i]
      for (i = 2; i <= n; ++i) for (j = i; j > 1 && sorted[j - 1] > sorted[j]; --j) { t = sorted[j]; sorted[j] = sorted[j - 1]; sorted[j - 1] = t }
      return n % 2 ? sorted[(n + 1) / 2] : (sorted[n / 2] + sorted[n / 2 + 1]) / 2
    }
    END {
      printf "command_pause_ms %3d: %d games, %d lost on time (Simple5 %d, Fairy-Max %d); per game (median) wall %.1f s, thinking %.1f s, wall/thinking %.2f\n",
             pause, NR, forfeits, lost["Simple5"], lost["Fairy-Max"], median(wall, NR) / 1000, median(think, NR) / 1000, median(ratio, NR)
    }' "$WORK/$name.games"
done
echo "files in $WORK"
