#!/usr/bin/env bash
# Mutation check: for each deliberate fault in scripts/mutants.txt, patches a scratch worktree of the
# committed HEAD, builds the test suite, runs it and prints whether the suite caught the fault.
#
#   bash scripts/mutants.sh [pattern]     only the mutants whose name contains `pattern`
#
# A mutant is caught when some test fails. The suite runs without the install check (it builds a package,
# not logic) and stops at the first failure. The scratch worktree and its build stay in build/mutants so that
# the next run builds only what a patch touches.
set -euo pipefail
cd "$(dirname "$0")/.."
root=$(pwd)
list="$root/scripts/mutants.txt"
filter="${1:-}"
work="$root/build/mutants"
tree="$work/tree"
build="$work/build"

mkdir -p "$work"
if [ ! -d "$tree/.git" ] && [ ! -f "$tree/.git" ]; then
  git worktree add --detach "$tree" HEAD >/dev/null
else
  git -C "$tree" checkout --detach --force HEAD >/dev/null 2>&1 || git -C "$tree" checkout --detach --force "$(git rev-parse HEAD)" >/dev/null
  git -C "$tree" reset --hard "$(git rev-parse HEAD)" >/dev/null
fi
cmake -S "$tree" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DYCONTACTS_BUILD_BENCH=OFF >/dev/null

suite() {
  cmake --build "$build" --target ycontacts_tests ycontacts_cli >"$work/build.log" 2>&1 || return 2
  ctest --test-dir "$build" -E install_package_host -j2 --stop-on-failure --timeout 300 >"$work/test.log" 2>&1 || return 1
  return 0
}

echo "building and running the unchanged suite"
if ! suite; then
  echo "the unchanged suite does not pass; see $work/build.log and $work/test.log" >&2
  exit 2
fi

# Applies one mutant: replaces the only occurrence of `from` in `file` by `to`; exit 3 when `from` is not
# found exactly once (the mutant no longer matches the code).
apply() {
  FILE="$tree/$1" FROM="$2" TO="$3" perl -e '
    my ($file, $from, $to) = @ENV{qw(FILE FROM TO)};
    open(my $in, "<", $file) or exit 3;
    my $text = do { local $/; <$in> };
    close($in);
    my $count = () = $text =~ /\Q$from\E/g;
    exit 3 if $count != 1;
    $text =~ s/\Q$from\E/$to/;
    open(my $out, ">", $file) or exit 3;
    print $out $text;
    close($out);
  '
}

caught=0
missed=0
stale=0
printf '%-8s %5s  %s\n' "result" "secs" "mutant"
while IFS= read -r -d '' block; do
  name=$(printf '%s\n' "$block" | sed -n 's/^name: //p')
  file=$(printf '%s\n' "$block" | sed -n 's/^file: //p')
  from=$(printf '%s\n' "$block" | sed -n 's/^from: //p')
  to=$(printf '%s\n' "$block" | sed -n 's/^to: //p')
  [ -n "$name" ] || continue
  if [ -n "$filter" ] && [[ "$name" != *"$filter"* ]]; then continue; fi
  started=$(date +%s)
  if ! apply "$file" "$from" "$to" 2>/dev/null; then
    printf '%-8s %5s  %s\n' "STALE" "-" "$name"
    stale=$((stale + 1))
    continue
  fi
  status=0
  suite || status=$?
  git -C "$tree" checkout -- "$file"
  seconds=$(($(date +%s) - started))
  case $status in
    1) result="caught"; caught=$((caught + 1))
       first=$(grep -m1 -E '\*\*\*(Failed|Timeout|Exception)|\(Failed\)' "$work/test.log" | sed -E 's/^ *[0-9]+\/[0-9]+ Test +#[0-9]+: //; s/ \.+.*//' || true)
       name="$name  [$first]" ;;
    0) result="MISSED"; missed=$((missed + 1)) ;;
    *) result="NOBUILD"; stale=$((stale + 1)) ;;
  esac
  printf '%-8s %5s  %s\n' "$result" "$seconds" "$name"
done < <(awk 'BEGIN { RS = ""; ORS = "\0" } !/^#/ || /\nname:/ { print }' "$list")

echo "caught $caught, missed $missed, stale or not building $stale"
# Leaves the suite built as HEAD for the next run.
cmake --build "$build" --target ycontacts_tests ycontacts_cli >/dev/null 2>&1 || true
[ "$missed" -eq 0 ] && [ "$stale" -eq 0 ]
