#!/usr/bin/env bash
# From a fresh clone: installs what is missing, builds the debug preset and runs the whole test suite.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
if [ "${CI:-}" = "true" ]; then export YCONTACTS_WERROR=ON; else export YCONTACTS_WERROR=${YCONTACTS_WERROR:-OFF}; fi
# The library built with clang, which checks the lock annotations (-Wthread-safety, as errors).
cmake --preset clang-thread-safety
cmake --build --preset clang-thread-safety
cmake --preset debug
cmake --build --preset debug
ctest --preset debug
