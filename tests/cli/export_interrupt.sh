#!/usr/bin/env bash
# Ctrl-C during `orvane export`: the export stops with status 130, says so in
# one sentence, and leaves no file behind.
#   export_interrupt.sh ORVANE PROJECT OUTPUT
set -uo pipefail
orvane=$1 project=$2 output=$3
progress=$(mktemp)
errors=$(mktemp)
trap 'rm -f "$progress" "$errors"' EXIT
rm -f "$output"

# A range far past the composition's end keeps the export busy long enough.
"$orvane" export "$project" -o "$output" --preset video.silent --range 0:600 --json-progress \
  >"$progress" 2>"$errors" &
pid=$!
for _ in $(seq 300); do
  grep -q '"progress"' "$progress" && break
  sleep 0.1
done
kill -INT "$pid"
wait "$pid"
status=$?
echo "exit status: $status"
cat "$errors"
failures=0
[ "$status" -eq 130 ] || { echo "FAILED: expected exit status 130"; failures=1; }
grep -qx 'orvane: The export was cancelled.' "$errors" || { echo "FAILED: no cancellation sentence"; failures=1; }
[ ! -e "$output" ] || { echo "FAILED: $output was left behind"; failures=1; }
exit $failures
