#!/bin/bash
# Smoke match: talvena against fairymax in xboard's match mode on a virtual
# display (installed from Debian when missing). Fails when a game ends without a
# rules result or an adjudication, or talvena plays an illegal move or loses on
# time. The PGN and xboard's debug log stay in the printed work folder.
# With "uci" xboard speaks UCI to talvena through Debian's polyglot adapter
# (-fUCI), as a UCI-only setup would.
#   tests/xboard_match.sh /path/to/talvena [games] [uci]
set -u
[ $# -ge 1 ] && [ -x "$1" ] || { echo "usage: $0 /path/to/talvena [games] [uci]" >&2; exit 2; }
TALVENA=$(readlink -f "$1")
GAMES=${2:-4}
UCI=false
[ "${3:-}" = uci ] && UCI=true
export PATH=$PATH:/usr/games  # where xboard looks for polyglot

missing=()
[ -x /usr/games/xboard ] || missing+=(xboard)
[ -x /usr/games/fairymax ] || missing+=(fairymax)
command -v xvfb-run >/dev/null || missing+=(xvfb xauth)
$UCI && [ ! -x /usr/games/polyglot ] && missing+=(polyglot)
if [ ${#missing[@]} -gt 0 ]; then
  apt-get update -qq && DEBIAN_FRONTEND=noninteractive apt-get install -y -qq "${missing[@]}" >/dev/null || exit 2
fi

WORK=$(mktemp -d /tmp/talvena-match.XXXXXX)
PGN=$WORK/match.pgn
PROTOCOL=()
# polyglot logs its UCI dialogue with talvena beside the PGN.
$UCI && PROTOCOL=(-fUCI -adapterCommand "polyglot -noini -log true -lf \"$WORK/polyglot.log\" -ec \"%fcp\" -ed \"%fd\"")
echo "match of $GAMES games${PROTOCOL:+ over UCI}, 1 minute + 1 second per move; files in $WORK"
# A game lasts a few minutes at most; the timeout only guards against a hung GUI.
timeout $((GAMES * 480 + 120)) xvfb-run -a /usr/games/xboard \
  -fcp "$TALVENA" -fd "$WORK" "${PROTOCOL[@]}" -scp /usr/games/fairymax -sd "$WORK" \
  -tc 1 -inc 1 -mg "$GAMES" -matchMode true -sgf "$PGN" -debug -nameOfDebugFile "$WORK/xboard.debug" \
  -autoCallFlag true -testLegality true -checkMates true -testClaims true -materialDraws true \
  -trivialDraws true -ruleMoves 50 -repeatsToDraw 3 -adjudicateDrawMoves 200 \
  -popupExitMessage false -popupMoveErrors false -showThinking true >"$WORK/xboard.out" 2>&1 ||
  echo "xboard ended with status $?"
[ -s "$PGN" ] || { echo "FAIL: no games were saved"; exit 1; }

python3 - "$PGN" "$WORK/xboard.debug" "$GAMES" <<'PY'
import os, re, sys
pgn = open(sys.argv[1], encoding="latin-1").read()
log = open(sys.argv[2], encoding="latin-1").read() if os.path.exists(sys.argv[2]) else ""
games = [g for g in re.split(r"\n(?=\[Event )", pgn) if g.strip()]
fair = re.compile(r"mates|checkmate|stalemate|repetition|insufficient|material|50-move|"
                  r"fifty|adjudication|resigns|draw|wins on time", re.I)
score = {"1-0": (1, 0), "0-1": (0, 1), "1/2-1/2": (0.5, 0.5)}
failures, points = 0, 0.0
for number, game in enumerate(games, 1):
    tag = lambda name: (re.search(r'\[%s "([^"]*)"\]' % name, game) or [None, "?"])[1]
    white, black, result = tag("White"), tag("Black"), tag("Result")
    comments = re.findall(r"\{([^}]*)\}\s*(?:1-0|0-1|1/2-1/2|\*)\s*$", game.strip())
    reason = comments[-1] if comments else "(no reason given)"
    ours_white = white.lower().startswith("talvena")
    verdict = "ok"
    if result not in score:
        verdict = "FAIL: unfinished game"
    elif not fair.search(reason):
        verdict = "FAIL: ended by neither the rules nor an adjudication"
    elif re.search(r"illegal", game, re.I):
        verdict = "FAIL: an illegal move"
    elif "wins on time" in reason and reason.lower().startswith("white") != ours_white:
        verdict = "FAIL: talvena lost on time"
    points += score[result][0 if ours_white else 1] if result in score else 0
    failures += verdict != "ok"
    print("game %d: %s - %s  %s  {%s}  %s" % (number, white, black, result, reason, verdict))
for line in log.splitlines():
    if re.search(r"illegal move", line, re.I) and "first" in line:
        print("log:", line.strip())
        failures += 1
if len(games) < int(sys.argv[3]):
    print("FAIL: only %d of %s games were played" % (len(games), sys.argv[3]))
    failures += 1
print("talvena scored %.1f of %d" % (points, len(games)))
sys.exit(1 if failures else 0)
PY
verdict=$?
[ $verdict -eq 0 ] && echo "PASS" || echo "FAIL"
exit $verdict
