#!/usr/bin/env bash
# A gauntlet of Talvena's default soul against Debian's chess engines, played
# by Talvena's own tournament: fairymax and phalanx in xboard, stockfish in
# UCI. (Debian's GNU Chess 6.2.7 is left out: behind pipes it answers a bare
# move with "My move is : e7e5" instead of "move e7e5", and nothing at all
# after "usermove", so it can only lose on time.) Installs the engines when missing, then checks that every
# game ended with a result and a reason, that no real engine was judged to
# have played an illegal move or crashed, and that pgn-extract reads every
# PGN written without a complaint.
#   tests/engines_match.sh [build/talvena] [GAMES_PER_ENGINE] [GAME_MS] [INC_MS]
#   tests/engines_match.sh build/talvena 2 10000 100      (the default)
#   QUICK=1: fairymax only (what CI runs)
set -euo pipefail
cd "$(dirname "$0")/.."
TALVENA=$(readlink -f "${1:-build/talvena}")
GAMES=${2:-2}
GAME_MS=${3:-10000}
INC_MS=${4:-100}
[ -x "$TALVENA" ] || { echo "no program at $TALVENA (build it first)" >&2; exit 2; }

engines=(fairymax phalanx stockfish pgn-extract)
[ -n "${QUICK:-}" ] && engines=(fairymax pgn-extract)
missing=()
for p in "${engines[@]}"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
if ((${#missing[@]})); then
  SUDO=""; [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  $SUDO apt-get update -qq && DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" >/dev/null
fi

WORK=$(mktemp -d /tmp/talvena-match.XXXXXX)
rounds=$(((GAMES + 1) / 2))
{
  echo "<tourney name=\"engines\" type=\"gauntlet\">"
  echo "  <options><rounds>$rounds</rounds><threads>2</threads><logfolder>$WORK</logfolder>"
  echo "    <opening_plies>4</opening_plies></options>"
  echo "  <clock moves_per_second=\"0\" game_ms=\"$GAME_MS\" increment_ms=\"$INC_MS\"/>"
  echo "  <engines>"
  echo "    <engine active=\"true\" name=\"Talvena\" protocol=\"embedded\" parameters=\"Simple5\"/>"
  echo "    <engine active=\"true\" name=\"Fairy-Max\" protocol=\"xboard\" filename=\"/usr/games/fairymax\"/>"
  if [ -z "${QUICK:-}" ]; then
    echo "    <engine active=\"true\" name=\"Phalanx\" protocol=\"xboard\" filename=\"/usr/games/phalanx\"/>"
    echo "    <engine active=\"true\" name=\"Stockfish\" protocol=\"uci\" filename=\"/usr/games/stockfish\"/>"
  fi
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
expected=$((2 * rounds * ($([ -n "${QUICK:-}" ] && echo 1 || echo 3))))
[ "$games" -eq "$expected" ] || { echo "FAIL: $games games finished, $expected expected"; status=1; }
while IFS=$'\t' read -r round game white black result reason plies ms; do
  [ "$round" = round ] && continue
  case "$result" in 1-0 | 0-1 | 1/2-1/2) ;; *) echo "FAIL: game $game has no result ($result)"; status=1 ;; esac
  loser=$([ "$result" = 1-0 ] && echo "$black" || echo "$white")
  case "$reason" in
    "illegal move" | "engine crashed" | "game aborted") echo "FAIL: '$reason' in game $game ($white - $black)"; status=1 ;;
    forfeit) echo "note: $loser lost game $game on time" ;;
  esac
  printf '%-10s %-10s %-8s %-22s %4s plies\n' "$white" "$black" "$result" "${reason:-claimed}" "$plies"
done <"$results"
for pgn in "$WORK"/engines-1-*.pgn; do
  report=$(/usr/games/pgn-extract -s -r "$pgn" 2>&1 || true)
  [ -z "$report" ] || { echo "FAIL: pgn-extract on $pgn: $report"; status=1; }
done
[ $status -eq 0 ] && echo "PASS: $games games" || echo "FAILED"
exit $status
