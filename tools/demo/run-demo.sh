#!/usr/bin/env bash
# The local demo: starts the fake Velmora service with its demo account and the program against
# it. As root with /dev/net/tun, a real OpenVPN server and the helper daemon run in network
# namespaces of the demo's own (tools/demo/demo-lab.sh), so Connect makes a real tunnel. Ctrl+C or
# quitting the program removes every namespace, process and file the demo made.
#
#   run-demo.sh BUILD_DIR [program arguments]
set -euo pipefail

build=$(cd "${1:?build directory}" && pwd)
shift
here=$(cd "$(dirname "$0")" && pwd)
lab=$here/demo-lab.sh
CLI=tvn-demo-cli

say() { printf 'demo: %s\n' "$*"; }

namespaces=yes
why=""
if [ "$(id -u)" -ne 0 ]; then
    namespaces=no
    why="it is not running as root"
elif ! (exec 3<>/dev/net/tun) 2>/dev/null; then
    namespaces=no
    why="/dev/net/tun is missing"
elif ! command -v ip >/dev/null || ! command -v openvpn >/dev/null || ! command -v stunnel4 >/dev/null; then
    namespaces=no
    why="ip, openvpn or stunnel4 is missing (scripts/install-deps)"
fi

dir=$(mktemp -d /tmp/tvn-demo-XXXXXX)
child=""
cleanup() {
    trap - EXIT INT TERM
    if [ -n "$child" ] && kill -0 "$child" 2>/dev/null; then
        # The program runs in a process group of its own (with Xvfb, when used).
        kill -TERM -- "-$child" 2>/dev/null || true
        for _ in $(seq 60); do kill -0 -- "-$child" 2>/dev/null || break; sleep 0.05; done
        kill -KILL -- "-$child" 2>/dev/null || true
        wait "$child" 2>/dev/null || true
    fi
    say "stopping: removing the demo's processes, namespaces and files"
    "$lab" down "$dir"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

if [ $namespaces = yes ]; then
    say "building the network namespaces $CLI and tvn-demo-srv with an OpenVPN server and stunnel"
    "$lab" up "$dir" "$build"
else
    "$lab" local "$dir" "$build"
fi

# The program runs from a copy in the demo's directory, so its connection trace (log.txt beside
# the executable), its settings, log, single-instance and temporary files (xvfb-run's too) all go
# when the demo stops.
mkdir -p "$dir/bin" "$dir/home"
cp "$build/tavrin" "$dir/bin/tavrin"
env_vars=(HOME="$dir/home" XDG_CONFIG_HOME="$dir/home/config" XDG_DATA_HOME="$dir/home/data"
    XDG_RUNTIME_DIR="$dir/home/run" XDG_CACHE_HOME="$dir/home/cache" TMPDIR="$dir/home/tmp")
mkdir -p "$dir/home/run" "$dir/home/tmp"
chmod 700 "$dir/home/run" "$dir/home/tmp"
while IFS= read -r line; do env_vars+=("$line"); done <"$dir/env"

# Under sudo the program itself runs as the user who asked, as it would when installed.
as_user=()
if [ "$(id -u)" -eq 0 ] && [ -n "${SUDO_USER:-}" ] && [ "$SUDO_USER" != root ]; then
    chown -R "$SUDO_USER:" "$dir/bin" "$dir/home"
    as_user=(runuser -u "$SUDO_USER" --)
    user_home=$(getent passwd "$SUDO_USER" | cut -d: -f6)
    [ -z "${XAUTHORITY:-}" ] && [ -f "$user_home/.Xauthority" ] && XAUTHORITY=$user_home/.Xauthority
fi
[ -z "${XAUTHORITY:-}" ] && [ -f "${HOME:-/nonexistent}/.Xauthority" ] && XAUTHORITY=$HOME/.Xauthority

# A display the program can reach. In the client namespace only a display with a socket file
# under /tmp/.X11-unix works: abstract sockets and TCP displays belong to the host's network.
xvfb=()
if [ $namespaces = yes ]; then
    if [[ "${DISPLAY:-}" =~ ^:([0-9]+)(\.[0-9]+)?$ ]] && [ -S "/tmp/.X11-unix/X${BASH_REMATCH[1]}" ]; then
        env_vars+=(DISPLAY="$DISPLAY" QT_QPA_PLATFORM=xcb)
        [ -n "${XAUTHORITY:-}" ] && env_vars+=(XAUTHORITY="$XAUTHORITY")
    else
        xvfb=(xvfb-run -a -s "-screen 0 1280x800x24")
        if [ -n "${DISPLAY:-}" ]; then
            say "the display $DISPLAY cannot be reached from a network namespace; running under Xvfb instead"
        else
            say "no display found; running under Xvfb (nothing will appear on screen)."
            say "to see the window, keep your display: sudo --preserve-env=DISPLAY,XAUTHORITY ./scripts/run"
        fi
    fi
else
    if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ] || [ -n "${QT_QPA_PLATFORM:-}" ]; then
        for v in DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM XAUTHORITY; do
            [ -n "${!v:-}" ] && env_vars+=("$v=${!v}")
        done
    else
        xvfb=(xvfb-run -a -s "-screen 0 1280x800x24")
        say "no display found; running under Xvfb (nothing will appear on screen)"
    fi
fi

api=$(grep '^TAVRIN_API_URL=' "$dir/env" | cut -d= -f2-)
cat <<TEXT

  ================================================================
    Tavrin demo: sign in with   user name: demo   password: demo
  ================================================================
    Fake Velmora service: $api (the demo account, ten locations)
TEXT
if [ $namespaces = yes ]; then
    cat <<TEXT
    Connect works: a real OpenVPN server (UDP 1194, TCP 80, stealth
    through stunnel on 443) runs in the namespace tvn-demo-srv; the
    program and tavrin-helperd run in $CLI. This machine's own
    network, firewall, resolver and time zone are not touched.
    An update to 3.7.0 is offered, signed with a key the demo made:
    taking it installs into $dir/dpkg-root, never
    into this machine, and the program then ends as after any update.
TEXT
else
    cat <<TEXT
    Connecting needs root ($why): the program can sign in
    and show every page, but Connect will fail. For real tunnels in
    network namespaces of the demo's own, run:
        sudo --preserve-env=DISPLAY,XAUTHORITY ./scripts/run
TEXT
fi
cat <<TEXT
    Stop with Ctrl+C or by quitting the program; everything the demo
    made is removed then. Files: $dir
  ================================================================

TEXT

# A session of its own: Ctrl+C reaches this script only, which then stops the whole group.
run=(setsid "${as_user[@]}" env "${env_vars[@]}" "${xvfb[@]}" "$dir/bin/tavrin" "$@")
if [ $namespaces = yes ]; then
    setsid ip netns exec $CLI "${run[@]:1}" &
else
    "${run[@]}" &
fi
child=$!
status=0
wait "$child" || status=$?
child=""
exit "$status"
