#!/usr/bin/env bash
# The abi test: compares the libraries of this build tree with the committed baselines in abi/
# through scripts/abi-check, with the headers this tree installs as the public surface.
#   tests/abi/run_abi_test.sh <skip reason or ""> <build dir> <work dir> <library>...
# A build unlike the baseline's (another build type, sanitizers) is skipped (status 77).
set -euo pipefail
skip_reason=$1
build_dir=$2
work_dir=$3
shift 3
if [ -n "$skip_reason" ]; then
  echo "abi: SKIPPED: $skip_reason"
  exit 77
fi
source_dir=$(cd "$(dirname "$0")/../.." && pwd)
rm -rf "$work_dir"
cmake --install "$build_dir" --prefix "$work_dir/stage" --component development >/dev/null
"$source_dir/scripts/abi-check" check "$source_dir/abi" "$work_dir/stage/include" "$work_dir" "$@"
