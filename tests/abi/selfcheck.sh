#!/usr/bin/env bash
# Proves the ABI comparison on real binaries: builds tests/abi/selfcheck_api.cpp in four
# versions, records version 1 as the baseline with scripts/abi-check update, and checks that
# scripts/abi-check check passes version 1 (no change) and 2 (an added function, reported as
# not yet recorded) and fails version 3 (a removed function) and 4 (a changed type), each with
# the reason and the way to refresh in its output.
#   tests/abi/selfcheck.sh <c++ compiler> <work dir>
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
abi_check="$here/../../scripts/abi-check"
cxx=$1
work=$2
rm -rf "$work"
mkdir -p "$work/include"
cp "$here/selfcheck_api.h" "$work/include/"

for version in 1 2 3 4; do
  mkdir -p "$work/v$version"
  # Built as the libraries are: hidden by default, release with debug info.
  "$cxx" -std=c++17 -g -O2 -fPIC -shared -fvisibility=hidden -DSELFCHECK_VERSION=$version \
    -I"$work/include" -o "$work/v$version/libselfcheck.so" "$here/selfcheck_api.cpp"
done
"$abi_check" update "$work/baseline" "$work/include" "$work/dump-v1" "$work/v1/libselfcheck.so"

failures=0
expect() {  # <version> <expected status> <text the output must contain>...
  local version=$1 expected=$2
  shift 2
  local output status=0
  output=$("$abi_check" check "$work/baseline" "$work/include" "$work/check-v$version" \
    "$work/v$version/libselfcheck.so" 2>&1) || status=$?
  local verdict=ok
  if [ "$status" -ne "$expected" ]; then verdict="WRONG STATUS $status (expected $expected)"; fi
  for text in "$@"; do
    if ! grep -qF -- "$text" <<<"$output"; then verdict="$verdict; missing \"$text\""; fi
  done
  echo "selfcheck: version $version: $verdict"
  if [ "$verdict" != ok ]; then
    sed 's/^/    | /' <<<"$output"
    failures=$((failures + 1))
  fi
}
expect 1 0 "selfcheck: no change" "exported symbols exactly as in"
expect 2 0 "selfcheck: additions only (compatible)" "Twice(Point const&)" "scripts/update-abi"
expect 3 1 "incompatible ABI change" "Removed function" "Sum(Point const&)" \
  "exported symbols removed" "scripts/update-abi"
expect 4 1 "incompatible ABI change" "type size changed" "scripts/update-abi"
if [ "$failures" -ne 0 ]; then
  echo "selfcheck: $failures of 4 verdicts wrong" >&2
  exit 1
fi
echo "selfcheck: all 4 verdicts right"
