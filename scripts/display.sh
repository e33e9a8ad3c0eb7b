# Sourced by the scripts: gives the process a display, starting Xvfb when
# DISPLAY is unset or names a server that does not answer (CI and servers
# have no X). A server started here is stopped when the sourcing shell exits.
ensure_display() {
  if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
    return 0
  fi
  local number_file
  TARNWICK_XVFB_LOG=$(mktemp /tmp/tarnwick-xvfb.XXXXXX.log)
  number_file=$(mktemp /tmp/tarnwick-xvfb.XXXXXX.display)
  # -displayfd: Xvfb picks a free display number itself and writes it once
  # it accepts connections, so parallel runs cannot race for a number.
  # -noreset: by default the server resets whenever its last client leaves,
  # and a test that connects during the reset fails to open the display.
  Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp -noreset 3>"$number_file" >"$TARNWICK_XVFB_LOG" 2>&1 &
  TARNWICK_XVFB_PID=$!
  trap 'kill "$TARNWICK_XVFB_PID" 2>/dev/null || true; rm -f "$TARNWICK_XVFB_LOG"' EXIT
  local i
  for i in $(seq 1 100); do
    if [ -s "$number_file" ]; then
      export DISPLAY=":$(tr -d '[:space:]' <"$number_file")"
      rm -f "$number_file"
      if xdpyinfo >/dev/null 2>&1; then return 0; fi
      break
    fi
    if ! kill -0 "$TARNWICK_XVFB_PID" 2>/dev/null; then break; fi
    sleep 0.1
  done
  rm -f "$number_file"
  cat "$TARNWICK_XVFB_LOG" >&2
  echo "Xvfb did not start" >&2
  return 1
}
