# Shared by the scripts that show windows without a screen: a virtual X server of their own, a
# small window manager when asked, and where a progress window's buttons stand. Source it, then:
#
#   xvfb_start FOLDER [--wm]  starts Xvfb on a free display (its files in FOLDER) and exports
#                             DISPLAY and the xcb platform for it, with no session bus; --wm also
#                             starts openbox, which gives windows their title bars and places
#                             them as a desktop would. Returns once they serve; fails saying why.
#   xvfb_stop                 ends what xvfb_start started; call it from the script's EXIT trap.
#   button_at JSON ID         prints "X Y": the centre of button ID, in the client area of a
#                             window whose top state is JSON (a "create" command's keys), as the
#                             layout works it out (the developer tool qem_progress_window).
#   press WINDOW X Y          clicks at X Y of the X window WINDOW, as a user would.

xvfb_pid=""
xvfb_wm_pid=""

xvfb_start() {
  local folder=$1 i
  mkdir -p "$folder"
  # Xvfb picks a free display and writes its number to the descriptor given.
  Xvfb -displayfd 3 -nolisten tcp -screen 0 720x420x24 3>"$folder/display" 2>"$folder/xvfb.log" &
  xvfb_pid=$!
  for i in $(seq 600); do grep -q . "$folder/display" 2>/dev/null && break; sleep 0.1; done
  grep -q . "$folder/display" || { echo "Xvfb did not start; see $folder/xvfb.log" >&2; return 1; }
  export DISPLAY=":$(head -n1 "$folder/display")" QT_QPA_PLATFORM=xcb
  export DBUS_SESSION_BUS_ADDRESS=disabled:  # no session bus here; say so rather than try one
  [ "${2:-}" = --wm ] || return 0
  openbox --sm-disable >"$folder/openbox.log" 2>&1 &
  xvfb_wm_pid=$!
  # The window manager is up once it tells how many desktops there are.
  for i in $(seq 300); do xdotool get_num_desktops >/dev/null 2>&1 && return 0; sleep 0.1; done
  echo "openbox did not start; see $folder/openbox.log" >&2
  return 1
}

xvfb_stop() {
  [ -n "$xvfb_wm_pid" ] && kill "$xvfb_wm_pid" 2>/dev/null && wait "$xvfb_wm_pid" 2>/dev/null
  [ -n "$xvfb_pid" ] && kill "$xvfb_pid" 2>/dev/null && wait "$xvfb_pid" 2>/dev/null
  xvfb_pid="" xvfb_wm_pid=""
  return 0
}

button_at() {
  local tool=build/default/tools/qem_progress_window/qem_progress_window
  "$tool" --places "$1" 2>/dev/null | awk -v id="$2" '$1 == id {print $2, $3; found = 1}
    END {exit !found}'
}

press() {
  xdotool mousemove --window "$1" "$2" "$3" click 1 2>/dev/null
}
