#!/usr/bin/env bash
# Installs what the build and the tests need (Debian 12), builds and runs every test.
#   tests/run.sh                      Release build in build/
#   tests/run.sh address,undefined    sanitizer build in build-address,undefined/
#   tests/run.sh thread               ThreadSanitizer build, threaded tests only
set -euo pipefail
cd "$(dirname "$0")/.."

packages=(g++ cmake make libgtest-dev libpugixml-dev pgn-extract fairymax gnuchess hoichess stockfish libsqlite3-dev unixodbc-dev unixodbc libsqliteodbc)
missing=()
for p in "${packages[@]}"; do dpkg -s "$p" >/dev/null 2>&1 || missing+=("$p"); done
if ((${#missing[@]})); then
  echo "installing: ${missing[*]}"
  SUDO=""; [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  $SUDO apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq "${missing[@]}" >/dev/null
fi

sanitize="${1:-}"
dir="build${sanitize:+-$sanitize}"
type=Release; [ -n "$sanitize" ] && type=RelWithDebInfo
cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE="$type" -DTALVENA_SANITIZE="$sanitize" -DTALVENA_TESTS=ON -DTALVENA_BENCH=OFF >/dev/null
cmake --build "$dir" -j"$(nproc)"

filter=()
# ThreadSanitizer checks the code that runs threads: base, engine thread, driver, tournaments, learning and end-to-end.
# Two tests measure the program itself rather than its threads and are left to
# the other builds: ThreadSanitizer's allocator touches every calloc'd page
# (the lazily zeroed table) and slows a perft 7 past any sensible wait.
[ "$sanitize" = thread ] && filter=(-R '^(base|engine|driver|tourney|learning|e2e)' -E 'LargeTableIsNotTouchedWhenSized|LongPerftReportsProgress')
export ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1 TSAN_OPTIONS=halt_on_error=1
ctest --test-dir "$dir" --no-tests=error --output-on-failure -j"$(nproc)" "${filter[@]}"
