#!/usr/bin/env bash
# A gauntlet of Talvena's default soul against every chess engine Debian
# packages for the standard game, played by Talvena's own tournament: xboard
# fairymax, phalanx, sjeng, hoichess, gnuchess; UCI stockfish, ethereal-chess,
# toga2, glaurung, fairy-stockfish. Installs the engines when missing, then
# checks that every game ended with a result and a reason, that none ended
# by forfeit, "engine not ready", an illegal move or a crash, and that
# pgn-extract reads every PGN written without a complaint. Prints a table per
# engine: games, its wins, draws and losses, its forfeits.
#   tests/engines_match.sh [build/talvena] [GAMES_PER_ENGINE] [GAME_MS] [INC_MS]
#   tests/engines_match.sh build/talvena 2 20000 1000      (the default)
#   QUICK=1: fairymax, gnuchess and hoichess at 5 s + 100 ms, games cut at
#   60 plies (what CI runs)
#   PAUSE_MS=N: N ms after every command to an engine (0 unless given)
set -euo pipefail
cd "$(dirname "$0")/.."
TALVENA=$(readlink -f "${1:-build/talvena}")
GAMES=${2:-2}
GAME_MS=${3:-20000}
INC_MS=${4:-1000}
[ -x "$TALVENA" ] || { echo "no program at $TALVENA (build it first)" >&2; exit 2; }

# name protocol program package
players=(
  "Fairy-Max xboard /usr/games/fairymax fairymax"
  "GNU-Chess xboard /usr/games/gnuchess gnuchess"
  "HoiChess xboard /usr/games/hoichess hoichess"
  "Phalanx xboard /usr/games/phalanx phalanx"
  "Sjeng xboard /usr/games/sjeng sjeng"
  "Stockfish uci /usr/games/stockfish stockfish"
  "Ethereal uci /usr/games/ethereal-chess ethereal-chess"
  "Toga2 uci /usr/games/toga2 toga2"
  "Glaurung uci /usr/games/glaurung glaurung"
  "Fairy-Stockfish uci /usr/games/fairy-stockfish fairy-stockfish"
)
# No pause after commands: every one of these engines reads its input as it
# comes, and the default 100 ms a command would cost them time they do not
# know of. PAUSE_MS=100 plays with the default.
options="<command_pause_ms>${PAUSE_MS:-0}</command_pause_ms>"
if [ -n "${QUICK:-}" ]; then
  players=("${players[@]:0:3}")
  GAME_MS=5000 INC_MS=100
  options="$options<max_plies>60</max_plies>"
fi

packages=(pgn-extract)
for p in "${players[@]}"; do packages+=("${p##* }"); done
missing=()
for p in "${packages[@]}"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
if ((${#missing[@]})); then
  SUDO=""; [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  $SUDO apt-get update -qq && DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" >/dev/null
fi

WORK=$(mktemp -d /tmp/talvena-match.XXXXXX)
rounds=$(((GAMES + 1) / 2))
{
  echo "<tourney name=\"engines\" type=\"gauntlet\">"
  echo "  <options><rounds>$rounds</rounds><threads>2</threads><logfolder>$WORK</logfolder>"
  echo "    <opening_plies>4</opening_plies>$options</options>"
  echo "  <clock moves_per_second=\"0\" game_ms=\"$GAME_MS\" increment_ms=\"$INC_MS\"/>"
  echo "  <engines>"
  echo "    <engine active=\"true\" name=\"Talvena\" protocol=\"embedded\" parameters=\"Simple5\"/>"
  for p in "${players[@]}"; do
    read -r name protocol program _ <<<"$p"
    echo "    <engine active=\"true\" name=\"$name\" protocol=\"$protocol\" filename=\"$program\"/>"
  done
  echo "  </engines>"
  echo "</tourney>"
} >"$WORK/engines.xml"

echo "gauntlet in $WORK: $((2 * rounds)) games per engine at $GAME_MS ms + $INC_MS ms"
start=$(date +%s)
"$TALVENA" -use=tourney -ini="$WORK/engines.xml" </dev/null | grep --line-buffered -E 'standings|^# +([-0-9]+|rank) |finished' || true
echo "wall time: $(($(date +%s) - start)) s"

status=0
results="$WORK/engines-1-results.tsv"
[ -f "$results" ] || { echo "FAIL: no results file"; exit 1; }
games=$(($(wc -l <"$results") - 1))
expected=$((2 * rounds * ${#players[@]}))
[ "$games" -eq "$expected" ] || { echo "FAIL: $games games finished, $expected expected"; status=1; }
# awk, not read: an empty reason (a claimed draw) is a field of its own.
awk -F'\t' 'NR > 1 {
    if ($5 != "1-0" && $5 != "0-1" && $5 != "1/2-1/2") { print "FAIL: game " $2 " has no result (" $5 ")"; bad = 1 }
    if ($6 ~ /^(forfeit|engine not ready|illegal move|engine crashed|game aborted)$/) {
      print "FAIL: \x27" $6 "\x27 in game " $2 " (" $3 " - " $4 ", " $5 ")"; bad = 1
    }
    printf "%-16s %-16s %-8s %-22s %4s plies\n", $3, $4, $5, ($6 == "" ? "claimed" : $6), $7
  } END { exit bad }' "$results" || status=1

echo
printf '%-16s %5s %4s %4s %4s %9s\n' engine games wins draws losses forfeits
awk -F'\t' 'NR > 1 {
    engine = $3 == "Talvena" ? $4 : $3; white = $3 != "Talvena"
    games[engine]++
    if ($5 == "1/2-1/2") draws[engine]++
    else if (($5 == "1-0") == white) wins[engine]++
    else { losses[engine]++; if ($6 == "forfeit") forfeits[engine]++ }
    if ($6 == "forfeit" && (($5 == "1-0") == white)) own["Talvena"]++
  }
  END {
    for (e in games) printf "%-16s %5d %4d %4d %4d %9d\n", e, games[e], wins[e], draws[e], losses[e], forfeits[e]
    printf "%-16s %5s %4s %4s %4s %9d\n", "(Talvena)", "", "", "", "", own["Talvena"]
  }' "$results" | sort

for pgn in "$WORK"/engines-1-*.pgn; do
  report=$(/usr/games/pgn-extract -s -r "$pgn" 2>&1 || true)
  [ -z "$report" ] || { echo "FAIL: pgn-extract on $pgn: $report"; status=1; }
done
[ $status -eq 0 ] && echo "PASS: $games games" || echo "FAILED"
exit $status
