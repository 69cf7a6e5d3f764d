#!/usr/bin/env bash
# Line coverage of the program's own code (base/, chess/, main/) by the whole
# test suite: a Debug build with gcc's --coverage at -O0 in build-cov/, every
# test, then gcovr's summary (Debian's gcovr). The per-file report is left in
# build-cov/coverage.txt.
#   bench/coverage.sh
set -euo pipefail
cd "$(dirname "$0")/.."
dpkg -s gcovr >/dev/null 2>&1 || apt-get install -y -qq gcovr >/dev/null
cmake -S . -B build-cov -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS="--coverage -O0" \
  -DCMAKE_EXE_LINKER_FLAGS=--coverage -DTALVENA_TESTS=ON -DTALVENA_BENCH=OFF >/dev/null
cmake --build build-cov -j"$(nproc)" >/dev/null
find build-cov -name '*.gcda' -delete
ctest --test-dir build-cov -j"$(nproc)" --output-on-failure >build-cov/ctest.log || { tail -20 build-cov/ctest.log; exit 1; }
# gcc 12's gcov prints some negative branch counts that gcovr 5 would stop at.
gcovr -r . --filter 'base/' --filter 'chess/' --filter 'main/' --gcov-ignore-parse-errors --print-summary \
  -o build-cov/coverage.txt build-cov
