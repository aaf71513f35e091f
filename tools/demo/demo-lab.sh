#!/usr/bin/env bash
# The back end of the local demo: the fake Velmora service, and (as root) a real OpenVPN server
# that its locations point to, in network namespaces of the demo's own:
#   tvn-demo-srv  10.241.0.1 on the link; every location has its own address 10.241.0.11-23
#                 OpenVPN on UDP 1194 (tunnel 10.242.0.1) and TCP 80 (tunnel 10.243.0.1), both
#                 checking the demo account's VPN logins; stunnel on 443 in front of TCP 80.
#   tvn-demo-cli  10.241.0.2: the fake service (https on 127.0.0.1:8443, the probe's site on
#                 http://127.0.0.1:8080), tavrin-helperd on its usual port 23589, and the program.
#                 The service's certificate comes from a throw-away authority, written to
#                 DIR/service-ca.pem, which the program trusts through TAVRIN_CA_FILE.
# Nothing outside these namespaces and DIR is touched: the helper daemon's resolver file and
# time zone live under DIR/root, its nftables table in the client namespace, and the update the
# fake service offers (signed with a key of the demo's own) installs into DIR/dpkg-root.
#
#   demo-lab.sh up DIR BUILD_DIR      all of the above (removes leftovers of an earlier demo first)
#   demo-lab.sh local DIR BUILD_DIR   only the fake service, on the host's loopback (no root needed)
#   demo-lab.sh down DIR              stops every process and removes the namespaces and DIR
# Both start commands write DIR/env: the variables the program is started with.
set -euo pipefail

SRV=tvn-demo-srv
CLI=tvn-demo-cli
PREFIX=tvn-demo-
SRV_ADDR=10.241.0.1
CLI_ADDR=10.241.0.2

cmd=${1:?up, local or down}
dir=${2:?work directory}
build=${3:-}

# Stops the processes of the pid files in DIR: all asked at once, the stragglers killed after 3 s.
kill_pidfiles() {
    local pids=() pid f
    for f in "$dir"/*.pid; do
        [ -s "$f" ] || continue
        pid=$(cat "$f")
        [[ "$pid" =~ ^[0-9]+$ ]] && kill -0 "$pid" 2>/dev/null && pids+=("$pid")
    done
    [ ${#pids[@]} -eq 0 ] && return 0
    kill "${pids[@]}" 2>/dev/null || true
    for _ in $(seq 60); do
        local alive=0
        for pid in "${pids[@]}"; do kill -0 "$pid" 2>/dev/null && alive=1; done
        [ $alive -eq 0 ] && break
        sleep 0.05
    done
    kill -9 "${pids[@]}" 2>/dev/null || true
}

down() {
    [ -d "$dir" ] && kill_pidfiles
    if [ -d "$dir/update-key" ]; then GNUPGHOME="$dir/update-key" gpgconf --kill gpg-agent 2>/dev/null || true; fi
    if [ "$(id -u)" -eq 0 ] && command -v ip >/dev/null; then
        for ns in $(ip netns list 2>/dev/null | awk '{print $1}' | grep "^$PREFIX" || true); do
            # The helper daemon first, so it stops its OpenVPN and removes its table itself.
            for pid in $(ip netns pids "$ns" 2>/dev/null); do kill "$pid" 2>/dev/null || true; done
            for _ in $(seq 40); do [ -z "$(ip netns pids "$ns" 2>/dev/null)" ] && break; sleep 0.05; done
            for pid in $(ip netns pids "$ns" 2>/dev/null); do kill -9 "$pid" 2>/dev/null || true; done
            ip netns del "$ns" 2>/dev/null || true
        done
        rm -rf "/etc/netns/$SRV" "/etc/netns/$CLI"
    fi
    rm -rf "$dir"
}

# Text as the inside of a JSON string; $1 is the line end to encode ("\n" or "\r\n").
json_text() {
    sed -e 's/\\/\\\\/g' -e 's/"/\\"/g' | EOL=$1 awk '{ printf "%s%s", $0, ENVIRON["EOL"] }'
}

pki() {
    local p=$dir/pki
    mkdir -p "$p"
    chmod 700 "$p"
    (
        cd "$p"
        local ec=(-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes)
        openssl req -x509 "${ec[@]}" -keyout ca.key -out ca.crt -days 2 -subj /CN=tavrin-demo-ca 2>/dev/null
        printf 'basicConstraints=CA:FALSE\nkeyUsage=digitalSignature,keyAgreement\nextendedKeyUsage=serverAuth\n' >server.ext
        printf 'basicConstraints=CA:FALSE\nkeyUsage=digitalSignature,keyAgreement\nextendedKeyUsage=clientAuth\n' >client.ext
        for who in server client; do
            openssl req "${ec[@]}" -keyout $who.key -out $who.csr -subj /CN=$who 2>/dev/null
            openssl x509 -req -in $who.csr -CA ca.crt -CAkey ca.key -CAcreateserial -days 2 \
                -extfile $who.ext -out $who.crt 2>/dev/null
        done
        openvpn --genkey secret ta.key >/dev/null 2>&1 || openvpn --genkey --secret ta.key
        chmod 600 ./*.key
    )
}

# The client side of the servers below, in the service's template form: lines of one protocol
# are comments "#udp ", "#tcp ", "#stealth " that the program uncomments.
client_template() {
    cat <<'CONF'
client
dev tun
nobind
persist-key
#udp explicit-exit-notify 1
#tcp connect-timeout 5
#stealth connect-timeout 5
remote-cert-tls server
verify-x509-name server name
auth-user-pass
auth-nocache
data-ciphers AES-256-GCM:AES-128-GCM
connect-retry 1 1
verb 3
CONF
    printf '<ca>\n%s\n</ca>\n<tls-crypt>\n%s\n</tls-crypt>\n' "$(cat "$dir/pki/ca.crt")" "$(cat "$dir/pki/ta.key")"
}

# location name, address, flag, VPN login, group (1 standard, 2 double hop)
LOCATIONS=(
    "Frankfurt|10.241.0.11|de|vpn-demo1|1"
    "Amsterdam|10.241.0.12|nl|vpn-demo1|1"
    "Zurich|10.241.0.13|ch|vpn-demo1|1"
    "New York|10.241.0.14|us|vpn-demo1|1"
    "Tokyo|10.241.0.15|jp|vpn-demo1|1"
    "London|10.241.0.16|gb|vpn-demo2|1"
    "Stockholm|10.241.0.17|se|vpn-demo2|1"
    "Paris - Oslo|10.241.0.21|no|vpn-demo1|2"
    "Madrid - Toronto|10.241.0.22|ca|vpn-demo1|2"
    "Vienna - Prague|10.241.0.23|cz|vpn-demo2|2"
)

# The update the demo offers: a package "tavrin" newer than the program, signed with a throw-away
# key that the helper daemon's policy under DIR/root trusts. The daemon installs it into
# DIR/dpkg-root, whose database has the running version installed, never into this machine, and
# then restarts as the daemon it installed.
UPDATE_VERSION=3.7.0
update_offer() {
    "$(cd "$(dirname "$0")" && pwd)/make-update.sh" "$dir" "$build" "$UPDATE_VERSION"
}

# The demo account: demo/demo with two VPN logins, the locations above and the template that
# matches the namespaced servers. With "local" (no PKI) the template is only a placeholder.
# Without namespaces the program runs on this machine's network and pings every location: then the locations sit
# on loopback addresses (127.241.0.x), so that no echo request leaves the machine.
fixture() { # api_base [loopback]
    local config cert key upgrade='"upgrade": {"version": "", "link": ""}'
    if [ -f "$dir/update.deb" ]; then
        upgrade="\"upgrade\": {\"version\": \"$UPDATE_VERSION\", \"link\": \"/download/update.deb\"},"
        upgrade+=" \"packageFile\": \"$dir/update.deb\""
    fi
    if [ -f "$dir/pki/ca.crt" ]; then
        config=$(client_template | json_text '\r\n')
        cert=$(json_text '\n' <"$dir/pki/client.crt")
        key=$(json_text '\n' <"$dir/pki/client.key")
    else
        config=$(printf 'client\ndev tun\nnobind\nremote-cert-tls server\nverb 3\n' | json_text '\r\n')
        cert="" key=""
    fi
    local servers="" sep="" name ip flag user group
    for l in "${LOCATIONS[@]}"; do
        IFS='|' read -r name ip flag user group <<<"$l"
        [ "${2:-}" = loopback ] && ip=127.${ip#*.}
        servers+="$sep{\"name\": \"$name\", \"ip\": \"$ip\", \"tcp\": \"80\", \"udp\": \"1194\", \"ssl\": \"443\","
        servers+=" \"flag\": \"$flag\", \"user\": \"$user\", \"dns\": \"10.242.0.1\", \"group\": \"$group\","
        servers+=" \"sni\": \"www.velmora.com\"}"
        sep=$',\n    '
    done
    cat <<JSON
{
  "login": "demo", "password": "demo", "versionAccepted": true, "accountType": "full", "error": "",
  "config": "$config",
  "logins": [
    {"user": "vpn-demo1", "pass": "secret1", "exp": 1893456000, "cert": "$cert", "key": "$key"},
    {"user": "vpn-demo2", "pass": "secret2", "exp": 1811808000, "cert": "$cert", "key": "$key"}
  ],
  "servers": [
    $servers
  ],
  $upgrade,
  "timezone": "Europe/Berlin",
  "buyLink": "$1/",
  "doublePings": {"Paris - Oslo": 25, "Madrid - Toronto": 40, "Vienna - Prague": 30}
}
JSON
}

server_conf() { # proto port subnet dev
    cat <<CONF
proto $1
port $2
dev $4
dev-type tun
topology subnet
server $3 255.255.255.0
ca $dir/pki/ca.crt
cert $dir/pki/server.crt
key $dir/pki/server.key
dh none
tls-crypt $dir/pki/ta.key
data-ciphers AES-256-GCM:AES-128-GCM
keepalive 2 10
script-security 2
auth-user-pass-verify $dir/check-user.sh via-file
push "dhcp-option DNS ${3%.0}.1"
push "dhcp-option DOMAIN demo.test"
verb 3
CONF
    # Every location is an address of its own, so UDP answers must leave from the one asked.
    [ "$1" = udp ] && echo multihome
    return 0
}

# Starts a fake service in the background: name, port, extra options; the namespace command
# (if any) comes from $in_cli.
start_fake() {
    local name=$1 port=$2
    shift 2
    # shellcheck disable=SC2086
    $in_cli "$build/tools/fakeservice/tavrin-fakeservice" --port "$port" --fixture "$dir/fixture.json" "$@" \
        >"$dir/$name.log" 2>&1 &
    echo $! >"$dir/$name.pid"
    for _ in $(seq 100); do
        grep -q 'Fake Velmora service on' "$dir/$name.log" && return 0
        kill -0 "$(cat "$dir/$name.pid")" 2>/dev/null || break
        sleep 0.05
    done
    echo "demo-lab: the fake service ($name) did not start:" >&2
    cat "$dir/$name.log" >&2
    return 1
}

# A loopback port of this namespace that nothing listens on, from $1 upwards.
free_port() {
    local p=$1
    while (exec 3<>"/dev/tcp/127.0.0.1/$p") 2>/dev/null; do p=$((p + 1)); done
    echo "$p"
}

check_build() {
    for p in tools/fakeservice/tavrin-fakeservice helper/tavrin-helperd; do
        [ -x "$build/$p" ] || { echo "demo-lab: $build/$p is not built" >&2; exit 1; }
    done
}

local_up() {
    check_build
    down
    mkdir -p "$dir"
    chmod 755 "$dir"
    in_cli=""
    local api probe
    api=$(free_port 8443)
    probe=$(free_port 8080)
    [ "$probe" = "$api" ] && probe=$(free_port $((api + 1)))
    fixture "https://127.0.0.1:$api" loopback >"$dir/fixture.json"
    start_fake fakeservice "$api" --ca-file "$dir/service-ca.pem"
    start_fake probe-site "$probe" --plain-http
    # The helper port points where nothing listens, so a helper daemon installed on this
    # machine is never asked to change its firewall, time zone or resolver.
    cat >"$dir/env" <<ENV
TAVRIN_API_URL=https://127.0.0.1:$api
TAVRIN_SITE_URL=https://127.0.0.1:$api
TAVRIN_PROBE_URL=http://127.0.0.1:$probe/
TAVRIN_HELPER_PORT=$(free_port 23590)
TAVRIN_CA_FILE=$dir/service-ca.pem
ENV
}

up() {
    check_build
    down
    mkdir -p "$dir/root/etc"
    chmod 755 "$dir"
    pki
    printf 'nameserver 192.0.2.53\n' >"$dir/root/etc/resolv.conf"
    cat >"$dir/check-user.sh" <<'CHECK'
#!/bin/sh
# via-file: line 1 the username, line 2 the password
u=$(sed -n 1p "$1"); p=$(sed -n 2p "$1")
{ [ "$u" = vpn-demo1 ] && [ "$p" = secret1 ]; } || { [ "$u" = vpn-demo2 ] && [ "$p" = secret2 ]; }
CHECK
    chmod 755 "$dir/check-user.sh"

    ip netns add $SRV
    ip netns add $CLI
    ip link add ${PREFIX}s netns $SRV type veth peer name ${PREFIX}c netns $CLI
    ip -n $SRV addr add $SRV_ADDR/24 dev ${PREFIX}s
    for l in "${LOCATIONS[@]}"; do
        IFS='|' read -r _ ip _ _ _ <<<"$l"
        ip -n $SRV addr add "$ip/24" dev ${PREFIX}s
    done
    ip -n $CLI addr add $CLI_ADDR/24 dev ${PREFIX}c
    for ns in $SRV $CLI; do ip -n $ns link set lo up; done
    ip -n $SRV link set ${PREFIX}s up
    ip -n $CLI link set ${PREFIX}c up
    # The client's default route leads to the server, as a real uplink would.
    ip -n $CLI route add default via $SRV_ADDR
    # The tunnel addresses answer only through a tunnel, never straight over the link.
    ip netns exec $SRV nft -f - <<NFT
table inet tvn-demo {
    chain input {
        type filter hook input priority 0; policy accept;
        iifname "${PREFIX}s" ip daddr { 10.242.0.0/24, 10.243.0.0/24 } drop
    }
}
NFT

    server_conf udp 1194 10.242.0.0 tun-udp >"$dir/server-udp.conf"
    server_conf tcp-server 80 10.243.0.0 tun-tcp >"$dir/server-tcp.conf"
    for p in udp tcp; do
        ip netns exec $SRV openvpn --config "$dir/server-$p.conf" --daemon "tvn-demo-$p" \
            --writepid "$dir/server-$p.pid" --log "$dir/server-$p.log"
    done
    cat >"$dir/stunnel-server.conf" <<CONF
foreground = no
pid = $dir/stunnel-server.pid
output = $dir/stunnel-server.log
[openvpn]
accept = 0.0.0.0:443
connect = 127.0.0.1:80
cert = $dir/pki/server.crt
key = $dir/pki/server.key
CONF
    ip netns exec $SRV stunnel4 "$dir/stunnel-server.conf"

    update_offer
    fixture "https://127.0.0.1:8443" >"$dir/fixture.json"
    chmod 600 "$dir/fixture.json"
    in_cli="ip netns exec $CLI"
    start_fake fakeservice 8443 --ca-file "$dir/service-ca.pem"
    start_fake probe-site 8080 --plain-http

    ip netns exec $CLI env TAVRIN_HELPERD_ROOT="$dir/root" TAVRIN_HELPERD_DPKG_ROOT="$dir/dpkg-root" \
        TAVRIN_HELPERD_SCRIPT="$(cd "$(dirname "$0")/../.." && pwd)/helper/script/update-resolv-conf.sh" \
        "$build/helper/tavrin-helperd" >"$dir/helperd.log" 2>&1 &
    echo $! >"$dir/helperd.pid"

    for _ in $(seq 200); do
        if ip netns exec $SRV ss -Hlnu 'sport = :1194' | grep -q . \
            && ip netns exec $SRV ss -Hlnt 'sport = :80' | grep -q . \
            && ip netns exec $SRV ss -Hlnt 'sport = :443' | grep -q . \
            && grep -q 'listening on' "$dir/helperd.log"; then
            cat >"$dir/env" <<ENV
TAVRIN_API_URL=https://127.0.0.1:8443
TAVRIN_SITE_URL=https://127.0.0.1:8443
TAVRIN_PROBE_URL=http://127.0.0.1:8080/
TAVRIN_HELPER_PORT=23589
TAVRIN_CA_FILE=$dir/service-ca.pem
ENV
            return 0
        fi
        sleep 0.05
    done
    echo "demo-lab: the servers or the helper daemon did not come up" >&2
    cat "$dir"/server-*.log "$dir/helperd.log" >&2 || true
    return 1
}

case $cmd in
up) up ;;
local) local_up ;;
down) down ;;
*)
    echo "usage: $0 up|local|down DIR [BUILD_DIR]" >&2
    exit 2
    ;;
esac
