#!/usr/bin/env bash
# Records real OpenVPN 2.6 management dialogues for the fake management port's replays.
# Builds two network namespaces joined by a veth pair, a throw-away PKI, an OpenVPN server that
# checks username and password, and an OpenVPN client started with the options the program uses.
# A small management client in the client's namespace talks like the program does and writes
# the transcript. Everything is removed at the end; the machine's own namespace is not touched.
# Needs root. Usage: record-management.sh <output directory>
set -euo pipefail

out=$(realpath "${1:?output directory}")
here=$(dirname "$(realpath "$0")")
work=$(mktemp -d)
srv=tavrin-rec-srv-$$
cli=tavrin-rec-cli-$$
pids=()

cleanup() {
    for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
    sleep 0.5
    ip netns del "$srv" 2>/dev/null || true
    ip netns del "$cli" 2>/dev/null || true
    rm -rf "$work"
}
trap cleanup EXIT

cd "$work"
# PKI: a CA, a server certificate, a client certificate (EC keys: quick to make).
openssl ecparam -name prime256v1 -genkey -noout -out ca.key
openssl req -x509 -new -key ca.key -subj /CN=rec-ca -days 2 -out ca.crt 2>/dev/null
for who in server client; do
    openssl ecparam -name prime256v1 -genkey -noout -out $who.key
    openssl req -new -key $who.key -subj /CN=rec-$who -out $who.csr 2>/dev/null
    usage="keyUsage=critical,digitalSignature,keyAgreement"
    if [ $who = server ]; then eku=serverAuth; else eku=clientAuth; fi
    openssl x509 -req -in $who.csr -CA ca.crt -CAkey ca.key -CAcreateserial -days 2 \
        -extfile <(printf '%s\nextendedKeyUsage=%s\n' "$usage" "$eku") -out $who.crt 2>/dev/null
done

cat > verify.sh <<'EOS'
#!/bin/sh
# via-file: first line username, second line password
user=$(sed -n 1p "$1"); pass=$(sed -n 2p "$1")
[ "$user" = "alice" ] && [ "$pass" = "secret" ]
EOS
chmod +x verify.sh

ip netns add "$srv"
ip netns add "$cli"
ip link add rec-s$$ type veth peer name rec-c$$
ip link set rec-s$$ netns "$srv"
ip link set rec-c$$ netns "$cli"
ip -n "$srv" addr add 10.99.0.1/24 dev rec-s$$
ip -n "$cli" addr add 10.99.0.2/24 dev rec-c$$
for ns in "$srv" "$cli"; do
    ip -n "$ns" link set lo up
done
ip -n "$srv" link set rec-s$$ up
ip -n "$cli" link set rec-c$$ up

ip netns exec "$srv" openvpn --dev tun --server 10.8.0.0 255.255.255.0 --topology subnet \
    --proto udp --port 1194 --ca ca.crt --cert server.crt --key server.key --dh none \
    --script-security 2 --auth-user-pass-verify "$work/verify.sh" via-file --tmp-dir "$work" \
    --keepalive 2 10 --verb 3 --log "$work/server.log" &
pids+=($!)

cat > client.conf <<EOC
client
dev tun
proto udp
remote 10.99.0.1 1194
nobind
remote-cert-tls server
auth-user-pass
verb 3
<ca>
$(cat ca.crt)
</ca>
<cert>
$(cat client.crt)
</cert>
<key>
$(cat client.key)
</key>
EOC

run_session() { # name password script-mode
    local name=$1 password=$2 mode=$3 port=17505
    ip netns exec "$cli" openvpn --config "$work/client.conf" --management 127.0.0.1 $port \
        --management-query-passwords --log "$work/client-$name.log" &
    local pid=$!
    pids+=($pid)
    ip netns exec "$cli" python3 "$here/management-recorder.py" $port alice "$password" "$mode" \
        "$out/real-$name.txt" || echo "session $name: recorder failed" >&2
    wait $pid 2>/dev/null || true
}

mkdir -p "$out"
run_session connect-and-stop secret stop
run_session reconnect secret reconnect
run_session wrong-password wrong none
echo "recorded into $out"
