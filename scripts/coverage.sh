#!/usr/bin/env bash
# Line and branch coverage of src/ by the test suite (without the install check): builds the coverage preset,
# runs the suite and prints gcovr's summary; the per-file table goes to build/coverage/coverage.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh >/dev/null
cmake --preset coverage >/dev/null
cmake --build --preset coverage
find build/coverage -name '*.gcda' -delete
# A failing test still leaves the others' counts: the summary is printed, then the failures, and the exit is 1.
status=0
ctest --preset coverage -j2 >build/coverage/ctest.log 2>&1 || status=$?
# Branches the compiler adds for exceptions it throws itself, and unreachable ones, are not the code's own.
gcovr --root . --filter 'src/' --exclude-throw-branches --exclude-unreachable-branches \
  --txt build/coverage/coverage.txt --print-summary build/coverage
if [ "$status" -ne 0 ]; then
  grep -A20 "tests failed" build/coverage/ctest.log >&2 || tail -20 build/coverage/ctest.log >&2
  exit 1
fi
