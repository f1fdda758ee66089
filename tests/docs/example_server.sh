# Sourced by tests that need the example server; they set "source_dir" and "tree", the
# build tree to serve from.  "$work" is a directory that goes with the server when the
# shell ends.

work=$(mktemp -d)
server=
finish() {
  [ -z "$server" ] || { kill "$server"; wait "$server"; } 2>/dev/null
  rm -rf "$work"
}
trap finish EXIT
trap 'exit 1' HUP INT TERM

# Starts the server on a port that nobody has; what it says goes to "$work/server".
start_server() {
  local attempt
  : > "$work/server"
  for attempt in 1 2 3 4 5; do
    WEBAPI_BUILD_TREE=$tree WEBAPI_SKIP_BOOTSTRAP=yes WEBAPI_PORT=$((20000 + RANDOM % 30000)) \
      "$source_dir/script/server" > "$work/server" 2>&1 &
    server=$!
    while kill -0 "$server" 2>/dev/null; do
      grep -q '^Serving ' "$work/server" && return 0
      sleep 0.05
    done
    server=
    grep -q 'is taken' "$work/server" || break
  done
  cat "$work/server"
  return 1
}

# Runs a command that a signal ends, too, as it would not in the foreground.
run_beside_server() {
  local process status
  "$@" &
  process=$!
  trap 'kill "$process"; wait "$process"; exit 1' HUP INT TERM
  wait "$process"
  status=$?
  trap 'exit 1' HUP INT TERM
  return "$status"
}
