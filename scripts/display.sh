# Sourced by the scripts: gives the process a display, starting Xvfb when
# there is none (CI and servers have no X). The server is stopped on exit.
ensure_display() {
  if [ -n "${DISPLAY:-}" ] && xdpyinfo >/dev/null 2>&1; then
    return 0
  fi
  local n
  for n in $(seq 90 120); do
    if [ ! -e "/tmp/.X${n}-lock" ] && [ ! -e "/tmp/.X11-unix/X${n}" ]; then
      break
    fi
  done
  Xvfb ":$n" -screen 0 1280x1024x24 -nolisten tcp >/tmp/xvfb-$n.log 2>&1 &
  TARNWICK_XVFB_PID=$!
  trap 'kill $TARNWICK_XVFB_PID 2>/dev/null || true' EXIT
  export DISPLAY=":$n"
  local i
  for i in $(seq 1 50); do
    if xdpyinfo >/dev/null 2>&1; then return 0; fi
    sleep 0.1
  done
  echo "Xvfb did not start on $DISPLAY (see /tmp/xvfb-$n.log)" >&2
  return 1
}
