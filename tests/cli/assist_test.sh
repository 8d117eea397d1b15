#!/usr/bin/env bash
# Runs `orvane assist` against the scripted model server and checks what it
# printed, how it ended, what the server was sent and the project it wrote.
#
#   assist_test.sh MODE ORVANE SERVER PROBE WORKDIR
#
# MODE: title (the title that fades in, with --api-key and -o), env-key (the
# key from ORVANE_API_KEY, the flag winning over it, saving in place),
# missing-key, usage. Each run has a home folder of its own, so no stored
# setting or key of the user's is read, and no secret service is asked.
set -uo pipefail

mode=$1 orvane=$2 server=$3 probe=$4 work=$5

fail() {
  echo "FAILED: $1"
  exit 1
}

rm -rf "$work"
mkdir -p "$work/home"
export HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_DATA_HOME="$work/home/.local/share"
unset ORVANE_API_KEY DBUS_SESSION_BUS_ADDRESS
export QT_QPA_PLATFORM=offscreen
project="$work/project.orvane"
"$probe" make "$project" || fail "could not write the project"
cp "$project" "$work/before.orvane"

status=0
run() {
  "$@" >"$work/stdout" 2>"$work/stderr" </dev/null
  status=$?
  echo "command: $*"
  echo "exit status: $status"
  echo "--- stdout ---"
  cat "$work/stdout"
  echo "--- stderr ---"
  cat "$work/stderr"
  echo "--------------"
}
expect_status() { [ "$status" -eq "$1" ] || fail "expected exit status $1"; }
expect_line() { grep -qxF -- "$1" "$work/stdout" || fail "no line '$1' on stdout"; }
expect_stderr() { [ "$(cat "$work/stderr")" = "$1" ] || fail "stderr is not '$1'"; }
expect_untouched() { cmp -s "$project" "$work/before.orvane" || fail "the project file changed"; }

start_server() {
  "$server" "$1" "$work/port" "$work/requests.log" &
  server_pid=$!
  trap 'kill $server_pid 2>/dev/null; wait $server_pid 2>/dev/null' EXIT
  for _ in $(seq 1 500); do
    [ -s "$work/port" ] && break
    sleep 0.02
  done
  [ -s "$work/port" ] || fail "the scripted server did not start"
  base_url="http://127.0.0.1:$(cat "$work/port")/v1"
}

text_reply() {
  printf '{"status":200,"body":{"choices":[{"index":0,"message":{"role":"assistant","content":"%s"},"finish_reason":"stop"}]}}' "$1"
}
# One reply asking for tool calls; each argument is a call "NAME ARGUMENTS_JSON_STRING".
tool_reply() {
  local calls="" i=0
  for call in "$@"; do
    [ -n "$calls" ] && calls+=","
    calls+="{\"id\":\"call_$i\",\"type\":\"function\",\"function\":{\"name\":\"${call%% *}\",\"arguments\":\"${call#* }\"}}"
    i=$((i + 1))
  done
  printf '{"status":200,"body":{"choices":[{"index":0,"message":{"role":"assistant","content":null,"tool_calls":[%s]},"finish_reason":"tool_calls"}]}}' "$calls"
}

case "$mode" in
  title)
    # The second round names the layer of the first: the server puts in the
    # id from the tool result it is sent.
    fade_in='{\"layer_id\":\"$LAST_TOOL_ID\",\"property\":\"opacity\",\"time_seconds\":0,\"value\":0}'
    fade_to='{\"layer_id\":\"$LAST_TOOL_ID\",\"property\":\"opacity\",\"time_seconds\":1,\"value\":100}'
    printf '[%s,%s,%s]' "$(tool_reply 'add_text_layer {\"text\":\"Welcome\"}')" \
      "$(tool_reply "add_keyframe $fade_in" "add_keyframe $fade_to")" \
      "$(text_reply 'Added a title that fades in.')" >"$work/script.json"
    start_server "$work/script.json"
    run "$orvane" assist "$project" --prompt "add a title and fade it in" --provider openAI \
      --base-url "$base_url" --api-key test-key -o "$work/edited.orvane"
    expect_status 0
    expect_stderr ""
    expect_line "> add a title and fade it in"
    expect_line "→ add_text_layer"
    grep -Eqx '✓ Added text layer [0-9A-F-]{36}' "$work/stdout" || fail "no line for the added layer"
    [ "$(grep -cxF '→ add_keyframe' "$work/stdout")" -eq 2 ] || fail "expected two add_keyframe lines"
    [ "$(grep -Ec '^✓ Keyframed opacity at [01]\.0s on layer ' "$work/stdout")" -eq 2 ] || fail "expected two keyframe results"
    expect_line "Added a title that fades in."
    expect_untouched
    layers=$("$probe" show "$work/edited.orvane") || fail "the edited project cannot be read"
    echo "$layers"
    grep -Eqx 'layer ".*" text "Welcome" opacity 0=0 1=100' <<<"$layers" || fail "no text layer Welcome fading in"
    [ "$(grep -c . "$work/requests.log")" -eq 3 ] || fail "expected three model calls"
    [ "$(grep -cxF '/v1/chat/completions Bearer test-key' "$work/requests.log")" -eq 3 ] ||
      fail "the calls did not carry the given key"
    ;;
  env-key)
    printf '[%s,%s]' "$(text_reply 'Nothing to change.')" "$(text_reply 'Still nothing.')" >"$work/script.json"
    start_server "$work/script.json"
    export ORVANE_API_KEY=env-key
    run "$orvane" assist "$project" --prompt "look" --provider custom --base-url "$base_url"
    expect_status 0
    expect_line "Nothing to change."
    "$probe" show "$project" >/dev/null || fail "the project saved in place cannot be read"
    run "$orvane" assist "$project" --prompt "look again" --provider custom --base-url "$base_url" --api-key flag-key
    expect_status 0
    printf '/v1/chat/completions Bearer env-key\n/v1/chat/completions Bearer flag-key\n' | cmp -s - "$work/requests.log" ||
      fail "expected the environment's key, then the flag's"
    ! grep -rqs -e env-key -e flag-key "$work/home" || fail "a given key was stored"
    ;;
  missing-key)
    run "$orvane" assist "$project" --prompt "add a title" --provider openAI --base-url "http://127.0.0.1:9/v1"
    expect_status 1
    [ ! -s "$work/stdout" ] || fail "expected nothing on stdout"
    expect_stderr "orvane: Add an API key in AI Settings."
    expect_untouched
    ;;
  usage)
    run "$orvane" assist "$project" --prompt "x" --provider gemini --api-key k
    expect_status 2
    expect_stderr 'orvane: Unknown provider "gemini": use claude, openAI or custom.'
    run "$orvane" assist "$project" --prompt "   " --api-key k
    expect_status 2
    expect_stderr "orvane: The prompt is empty."
    run "$orvane" assist "$work/none.orvane" --prompt "x" --api-key k
    expect_status 2
    grep -q 'none\.orvane' "$work/stderr" || fail "the missing file is not named"
    run "$orvane" assist "$project" --prompt "x" --base-url "ftp://example.com" --api-key k
    expect_status 2
    expect_untouched
    ;;
  *)
    fail "unknown mode $mode"
    ;;
esac
echo "passed"
