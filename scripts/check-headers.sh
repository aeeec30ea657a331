#!/usr/bin/env bash
# Compiles every library header on its own, so each one brings what it needs.
set -euo pipefail
cd "$(dirname "$0")/.."
status=0
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
while IFS= read -r header; do
  rel=${header#src/}
  printf '#include "%s"\n' "$rel" > "$tmp/check.cpp"
  if ! g++ -std=c++20 -fsyntax-only -Wall -Wextra -Wpedantic -Isrc "$tmp/check.cpp" 2> "$tmp/err"; then
    echo "header does not compile on its own: $header"; head -5 "$tmp/err"; status=1
  fi
done < <(git ls-files 'src/*.h'; git ls-files --others --exclude-standard 'src/*.h')
exit $status
