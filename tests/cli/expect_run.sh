#!/usr/bin/env bash
# Runs one program and checks its exit status and what it wrote where.
#
#   expect_run.sh [checks...] -- PROGRAM [ARGS...]
#
# Checks:
#   --exit zero|nonzero    how the program must end
#   --stdout REGEX         standard output must match the extended regex
#   --stderr REGEX         standard error must match the extended regex
#                          (both may be given more than once; the regex sees
#                          the text without its final newline)
#   --no-stdout            standard output must be empty
#   --no-stderr            standard error must be empty
#   --one-line-stderr      standard error must be exactly one line
#
# Prints what the program wrote and each broken check, and exits non-zero when
# any check fails.
set -uo pipefail

exit_expectation=""
stdout_regexes=()
stderr_regexes=()
no_stdout=0
no_stderr=0
one_line_stderr=0

while [ $# -gt 0 ]; do
  case "$1" in
    --exit) exit_expectation="$2"; shift 2 ;;
    --stdout) stdout_regexes+=("$2"); shift 2 ;;
    --stderr) stderr_regexes+=("$2"); shift 2 ;;
    --no-stdout) no_stdout=1; shift ;;
    --no-stderr) no_stderr=1; shift ;;
    --one-line-stderr) one_line_stderr=1; shift ;;
    --) shift; break ;;
    *) echo "expect_run.sh: unknown check '$1'" >&2; exit 2 ;;
  esac
done
if [ $# -eq 0 ]; then
  echo "expect_run.sh: no program given after --" >&2
  exit 2
fi
case "$exit_expectation" in
  zero|nonzero|"") ;;
  *) echo "expect_run.sh: --exit takes zero or nonzero, not '$exit_expectation'" >&2; exit 2 ;;
esac

stdout_file=$(mktemp)
stderr_file=$(mktemp)
trap 'rm -f "$stdout_file" "$stderr_file"' EXIT

"$@" >"$stdout_file" 2>"$stderr_file" </dev/null
status=$?
out=$(cat "$stdout_file"; printf x)
out=${out%x}
err=$(cat "$stderr_file"; printf x)
err=${err%x}

echo "command: $*"
echo "exit status: $status"
echo "--- stdout ---"
printf '%s' "$out"
echo "--- stderr ---"
printf '%s' "$err"
echo "--------------"

failures=0
fail() {
  echo "FAILED: $1"
  failures=$((failures + 1))
}

if [ "$status" -ge 128 ]; then
  fail "the program was killed by signal $((status - 128))"
fi
if [ "$exit_expectation" = zero ] && [ "$status" -ne 0 ]; then
  fail "expected exit status 0"
fi
if [ "$exit_expectation" = nonzero ] && [ "$status" -eq 0 ]; then
  fail "expected a non-zero exit status"
fi
newline=$'\n'
for regex in "${stdout_regexes[@]}"; do
  if ! [[ ${out%"$newline"} =~ $regex ]]; then
    fail "stdout does not match /$regex/"
  fi
done
for regex in "${stderr_regexes[@]}"; do
  if ! [[ ${err%"$newline"} =~ $regex ]]; then
    fail "stderr does not match /$regex/"
  fi
done
if [ "$no_stdout" -eq 1 ] && [ -n "$out" ]; then
  fail "expected nothing on stdout"
fi
if [ "$no_stderr" -eq 1 ] && [ -n "$err" ]; then
  fail "expected nothing on stderr"
fi
if [ "$one_line_stderr" -eq 1 ]; then
  body=${err%"$newline"}
  if [ -z "$body" ] || [[ $body == *"$newline"* ]]; then
    fail "expected exactly one line on stderr"
  fi
fi

exit $((failures > 0))
