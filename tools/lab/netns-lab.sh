#!/usr/bin/env bash
# Two network namespaces joined by a veth pair, for the end-to-end tests:
#   tvn-e2e-srv  10.231.0.1 (+ 10.231.0.3, an address no tunnel or allow list covers)
#                OpenVPN servers on UDP 1194 (tunnel 10.232.0.1) and TCP 80 (tunnel 10.233.0.1),
#                both checking a username and password; stunnel on 443 in front of TCP 80.
#   tvn-e2e-cli  10.231.0.2, where the helper daemon and the client run.
# The PKI is made here with openssl. Nothing outside these namespaces and DIR is touched.
#
#   netns-lab.sh up DIR     build everything (removes leftovers of an earlier run first)
#   netns-lab.sh down DIR   remove everything again
set -euo pipefail

SRV=tvn-e2e-srv
CLI=tvn-e2e-cli
PREFIX=tvn-e2e-
USER_NAME=vpnuser
USER_PASS='s3cret-Pass'

cmd=${1:?up or down}
dir=${2:?work directory}

kill_pidfile() {
    local pid
    pid=$(cat "$1" 2>/dev/null || true)
    if [[ "$pid" =~ ^[0-9]+$ ]] && kill "$pid" 2>/dev/null; then
        for _ in $(seq 50); do kill -0 "$pid" 2>/dev/null || break; sleep 0.05; done
        kill -9 "$pid" 2>/dev/null || true
    fi
    rm -f "$1"
}

down() {
    for f in "$dir"/*.pid; do kill_pidfile "$f"; done
    # Whatever still runs inside our namespaces goes with them.
    for ns in $(ip netns list 2>/dev/null | awk '{print $1}' | grep "^$PREFIX" || true); do
        for pid in $(ip netns pids "$ns" 2>/dev/null); do
            kill -9 "$pid" 2>/dev/null || true
        done
        ip netns del "$ns" 2>/dev/null || true
    done
    rm -rf "/etc/netns/$SRV" "/etc/netns/$CLI"
}

pki() {
    local p=$dir/pki
    mkdir -p "$p"
    cd "$p"
    local ec=(-newkey ec -pkeyopt ec_paramgen_curve:prime256v1 -nodes)
    openssl req -x509 "${ec[@]}" -keyout ca.key -out ca.crt -days 2 -subj /CN=tavrin-e2e-ca 2>/dev/null
    printf 'basicConstraints=CA:FALSE\nkeyUsage=digitalSignature,keyAgreement\nextendedKeyUsage=serverAuth\nsubjectAltName=DNS:vpn.e2e.test\n' >server.ext
    printf 'basicConstraints=CA:FALSE\nkeyUsage=digitalSignature,keyAgreement\nextendedKeyUsage=clientAuth\n' >client.ext
    for who in server client; do
        openssl req "${ec[@]}" -keyout $who.key -out $who.csr -subj /CN=$who 2>/dev/null
        openssl x509 -req -in $who.csr -CA ca.crt -CAkey ca.key -CAcreateserial -days 2 \
            -extfile $who.ext -out $who.crt 2>/dev/null
    done
    openvpn --genkey secret ta.key >/dev/null 2>&1 || openvpn --genkey --secret ta.key
    chmod 600 ./*.key
    cd - >/dev/null
}

server_conf() { # proto port subnet dev
    cat <<CONF
proto $1
port $2
local 10.231.0.1
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
push "dhcp-option DOMAIN e2e.test"
verb 3
CONF
}

up() {
    down
    # The servers start from this shell: they must not inherit what the caller has open, such as
    # the lock that keeps runs apart, which a server left behind by a killed run would hold for good.
    for fd in "/proc/$$/fd"/*; do
        case ${fd##*/} in 0 | 1 | 2 | 255) ;; *) eval "exec ${fd##*/}>&-" ;; esac
    done
    mkdir -p "$dir"
    pki
    cat >"$dir/check-user.sh" <<CHECK
#!/bin/sh
# via-file: line 1 the username, line 2 the password
[ "\$(sed -n 1p "\$1")" = "$USER_NAME" ] && [ "\$(sed -n 2p "\$1")" = "$USER_PASS" ]
CHECK
    chmod 755 "$dir/check-user.sh"

    ip netns add $SRV
    ip netns add $CLI
    ip link add ${PREFIX}s netns $SRV type veth peer name ${PREFIX}c netns $CLI
    ip -n $SRV addr add 10.231.0.1/24 dev ${PREFIX}s
    ip -n $SRV addr add 10.231.0.3/24 dev ${PREFIX}s
    ip -n $CLI addr add 10.231.0.2/24 dev ${PREFIX}c
    ip -n $SRV link set lo up && ip -n $SRV link set ${PREFIX}s up
    ip -n $CLI link set lo up && ip -n $CLI link set ${PREFIX}c up
    # The client's default route leads to the server, as a real uplink would.
    ip -n $CLI route add default via 10.231.0.1
    # The servers' tunnel addresses answer only through a tunnel, never straight over the veth.
    ip netns exec $SRV nft -f - <<NFT
table inet tvn-e2e {
    chain input {
        type filter hook input priority 0; policy accept;
        iifname "${PREFIX}s" ip daddr { 10.232.0.0/24, 10.233.0.0/24 } drop
    }
}
NFT

    server_conf udp 1194 10.232.0.0 tun-udp >"$dir/server-udp.conf"
    server_conf tcp-server 80 10.233.0.0 tun-tcp >"$dir/server-tcp.conf"
    for p in udp tcp; do
        ip netns exec $SRV openvpn --config "$dir/server-$p.conf" --daemon "tvn-e2e-$p" \
            --writepid "$dir/server-$p.pid" --log "$dir/server-$p.log"
    done

    cat >"$dir/stunnel-server.conf" <<CONF
foreground = no
pid = $dir/stunnel-server.pid
output = $dir/stunnel-server.log
[openvpn]
accept = 0.0.0.0:443
connect = 10.231.0.1:80
cert = $dir/pki/server.crt
key = $dir/pki/server.key
CONF
    ip netns exec $SRV stunnel4 "$dir/stunnel-server.conf"

    # Wait until the servers listen: TCP 80 and 443, UDP 1194.
    for _ in $(seq 100); do
        [ "$(ip netns exec $SRV ss -Hlntu '( sport = :80 or sport = :443 or sport = :1194 )' | wc -l)" -ge 3 ] && return 0
        sleep 0.05
    done
    echo "netns-lab: servers did not come up" >&2
    cat "$dir"/server-*.log >&2 || true
    return 1
}

case $cmd in
up | down) $cmd ;;
*) echo "usage: $0 up|down DIR" >&2 && exit 2 ;;
esac
