#!/usr/bin/env bash
# Starts the local demo's back end without a window, checks its pieces and that stopping it
# leaves nothing behind.
#   demo-lab-test.sh local BUILD_DIR        fake service on the host's loopback
#   demo-lab-test.sh namespaces BUILD_DIR   as root: namespaces, OpenVPN server, helper daemon;
#                                           a raw OpenVPN client uses the fixture's template
# Exit 77 (skipped) when the namespaces cannot be made here.
set -euo pipefail

mode=${1:?local or namespaces}
build=$(cd "${2:?build directory}" && pwd)
lab="$(cd "$(dirname "$0")/../.." && pwd)/tools/demo/demo-lab.sh"
CLI=tvn-demo-cli
SRV=tvn-demo-srv

fail() {
    echo "FAIL: $*" >&2
    for f in "$dir"/*.log; do [ -e "$f" ] && { echo "--- $f" >&2; tail -n 20 "$f" >&2; }; done
    exit 1
}

skip() { echo "SKIP: $*"; exit 77; }
if [ "$mode" = namespaces ]; then
    [ "$(id -u)" -eq 0 ] || skip "needs root to create network namespaces (run as root, as CI does)"
    (exec 3<>/dev/net/tun) 2>/dev/null || skip "/dev/net/tun is missing or cannot be opened"
    ! ip netns list | grep -q "^$CLI" || skip "a demo is running (namespace $CLI exists); stop it first"
fi

dir=$(mktemp -u /tmp/tvn-demo-test-XXXXXX)
trap '"$lab" down "$dir" >/dev/null 2>&1 || true; rm -rf "$dir.client"' EXIT

# GET path over loopback; prints the whole answer. $1 http or https, $2 port, $3 path, $4 the CA
# file the https server's certificate must verify against, as the program checks it.
fetch() {
    local request="GET $3 HTTP/1.0\r\nHost: 127.0.0.1\r\n\r\n"
    if [ "$1" = https ]; then
        printf "$request" | timeout 10 openssl s_client -quiet -connect "127.0.0.1:$2" -CAfile "$4" \
            -verify_return_error -verify_ip 127.0.0.1 2>/dev/null || true
    else
        timeout 10 bash -c 'exec 3<>"/dev/tcp/127.0.0.1/$1"; printf "$2" >&3; cat <&3' _ "$2" "$request" || true
    fi
}
in_ns() { if [ "$mode" = namespaces ]; then ip netns exec $CLI "$@"; else "$@"; fi; }

if [ "$mode" = namespaces ]; then up=up; else up=local; fi
"$lab" $up "$dir" "$build" || fail "the back end did not start"

api_port=$(sed -n 's|^TAVRIN_API_URL=https://127.0.0.1:||p' "$dir/env")
probe_port=$(sed -n 's|^TAVRIN_PROBE_URL=http://127.0.0.1:\([0-9]*\)/$|\1|p' "$dir/env")
helper_port=$(sed -n 's|^TAVRIN_HELPER_PORT=||p' "$dir/env")
ca_file=$(sed -n 's|^TAVRIN_CA_FILE=||p' "$dir/env")
[ -n "$api_port" ] && [ -n "$probe_port" ] && [ -n "$helper_port" ] && [ -s "$ca_file" ] \
    || fail "env is incomplete: $(cat "$dir/env")"
pids=$(cat "$dir"/*.pid)

# The demo account signs in and its locations carry the addresses the servers listen on.
answer=$(in_ns bash -c "$(declare -f fetch); fetch https $api_port '/connect?act=wizardsetup&login=demo&pass=demo&os=linux-debian' '$ca_file'")
grep -q '^HTTP/1.[01] 200' <<<"$answer" || fail "the fake service does not answer: $answer"
# Without namespaces they sit on loopback, where the program's pings stay on the machine.
frankfurt=10.241.0.11
if [ "$mode" = local ]; then frankfurt=127.241.0.11; fi
grep -q "$(printf $frankfurt | base64)" <<<"$answer" || fail "Frankfurt is not at $frankfurt: $answer"
grep -q "$(printf 'Vienna - Prague' | base64)" <<<"$answer" || fail "the double-hop locations are missing"
probe=$(in_ns bash -c "$(declare -f fetch); fetch http $probe_port /")
grep -q '^HTTP/1.[01] 200' <<<"$probe" || fail "the probe's site does not answer over plain HTTP: $probe"

if [ "$mode" = local ]; then
    # The helper port must lead nowhere, so no installed helper daemon is ever reached.
    (exec 3<>"/dev/tcp/127.0.0.1/$helper_port") 2>/dev/null && fail "something listens on the helper port $helper_port"
else
    ip netns exec $CLI ss -Hlnt "sport = :$helper_port" | grep -q . || fail "tavrin-helperd does not listen"
    ip netns exec $SRV ss -Hlnt 'sport = :443' | grep -q . || fail "stunnel does not listen"
    # A raw OpenVPN client with the fixture's template, shaped as the program writes it, gets a
    # tunnel to the Frankfurt location and reaches the server through it.
    c=$dir.client
    mkdir -p "$c"
    config=$(sed -n 's/^  "config": "\(.*\)",$/\1/p' "$dir/fixture.json")
    login=$(grep '"pass": "secret1"' "$dir/fixture.json")
    cert=$(sed 's/.*"cert": "\([^"]*\)".*/\1/' <<<"$login")
    key=$(sed 's/.*"key": "\([^"]*\)".*/\1/' <<<"$login")
    {
        printf 'remote 10.241.0.11 1194 udp\r\n'
        printf '%b' "$config" | sed 's/^#udp //'
        printf '<cert>\n%b</cert>\n<key>\n%b</key>\n' "$cert" "$key"
    } >"$c/client.ovpn"
    printf 'vpn-demo1\nsecret1\n' >"$c/pass"
    chmod 600 "$c/pass"
    ip netns exec $CLI openvpn --config "$c/client.ovpn" --auth-user-pass "$c/pass" --daemon tvn-demo-test \
        --writepid "$dir/test-client.pid" --log "$dir/test-client.log"
    for _ in $(seq 200); do grep -qs 'Initialization Sequence Completed' "$dir/test-client.log" && break; sleep 0.05; done
    grep -q 'Initialization Sequence Completed' "$dir/test-client.log" || fail "no tunnel with the fixture's template"
    ip netns exec $CLI ping -c 1 -W 2 10.242.0.1 >/dev/null || fail "no traffic through the tunnel"
    pids="$pids $(cat "$dir/test-client.pid")"
    # The offered update, signed with the demo's key, installs through the helper daemon into the
    # demo's own dpkg root.
    grep -q "$(printf 3.7.0 | base64)" <<<"$answer" || fail "no update is offered"
    ip netns exec $CLI "$build/tools/wire/tavrin-wire-tool" update "$helper_port" "$dir/update.deb" >/dev/null \
        || fail "the helper daemon refused the demo's update: $(tail -n 2 "$dir/helperd.log")"
    installed() { dpkg-query --root="$dir/dpkg-root" -W -f='${Version}' tavrin; }
    for _ in $(seq 100); do [ "$(installed)" = 3.7.0 ] && break; sleep 0.1; done
    [ "$(installed)" = 3.7.0 ] || fail "the demo's update is not installed: $(installed)"
    # and the daemon runs on as the one the update installed.
    daemon_exe() { readlink "/proc/$(cat "$dir/helperd.pid")/exe"; }
    for _ in $(seq 100); do [ "$(daemon_exe)" = "$dir/dpkg-root/usr/sbin/tavrin-helperd" ] && break; sleep 0.1; done
    [ "$(daemon_exe)" = "$dir/dpkg-root/usr/sbin/tavrin-helperd" ] || fail "the daemon did not restart as the update's: $(daemon_exe)"
fi

"$lab" down "$dir"
for pid in $pids; do
    kill -0 "$pid" 2>/dev/null && fail "process $pid still runs after stopping"
done
[ -e "$dir" ] && fail "$dir is left behind"
if [ "$mode" = namespaces ]; then
    ip netns list | grep -q '^tvn-demo-' && fail "a namespace is left: $(ip netns list)"
    ls -d /etc/netns/tvn-demo-* >/dev/null 2>&1 && fail "a /etc/netns entry is left"
fi
echo "PASS: the demo's back end ($mode) works and leaves nothing behind"
