#!/usr/bin/env bash
# From a fresh clone: installs what is missing, builds the `ycontacts` tool with the release preset and runs
# its demo. Arguments go to `ycontacts demo`, e.g. `bash scripts/demo.sh --contacts 50000 --json`.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/setup.sh
cmake --preset release
cmake --build --preset release --target ycontacts_cli
exec build/release/tools/ycontacts_cli/ycontacts demo "$@"
