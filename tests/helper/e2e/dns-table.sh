#!/usr/bin/env bash
# DNS through the tunnel on each resolver setup, with the real helper daemon, OpenVPN and the
# managers themselves, in the namespaces of tools/lab/netns-lab.sh. Each setup gets a mount namespace of its
# own in the client namespace, with /etc and /usr as overlays (a manager is installed into them
# with dpkg -x) and fresh /run and /var/lib, so the machine's own resolver is never touched.
#
#   dns-table.sh BUILD_DIR [SETUP...]     setups: plain nm resolvconf resolved (default: all)
#
# For each setup, kill switch (off, on, on with local devices) and end (OpenVPN told to stop, or
# killed), one line: DNS packets that left on the physical link while connected, whether a
# lookup got the tunnel server's answer, and whether the resolver setup afterwards is byte for
# byte what it was. Exit 1 when any row leaks, fails the lookup or is not restored; 77 (skipped)
# when the lab cannot run here. TAVRIN_DNS_TABLE_REPORT_ONLY=1 reports without failing (to
# measure an older script, given with TAVRIN_HELPERD_SCRIPT).
set -euo pipefail

build=$(cd "${1:?build directory}" && pwd)
shift
setups=("$@")
[ ${#setups[@]} -gt 0 ] || setups=(plain nm resolvconf resolved)
here=$(cd "$(dirname "$0")" && pwd)
source_dir=$(cd "$here/../../.." && pwd)
script=${TAVRIN_HELPERD_SCRIPT:-$source_dir/helper/script/update-resolv-conf.sh}
wire=$build/tools/wire/tavrin-wire-tool
CLI=tvn-e2e-cli
SRV=tvn-e2e-srv
LINK=tvn-e2e-c
ROUTER=10.231.0.3 # the physical link's DNS server, as a home router would be: not the VPN server
TUNNEL_DNS=10.232.0.1

skip() { echo "SKIP: $*"; exit 77; }
[ "$(id -u)" -eq 0 ] || skip "needs root"
(exec 3<>/dev/net/tun) 2>/dev/null || skip "/dev/net/tun is missing"
command -v dnsmasq >/dev/null || skip "dnsmasq is missing (scripts/install-deps)"
grep -qw overlay /proc/filesystems || modprobe overlay 2>/dev/null || skip "no overlayfs"

dir=$(mktemp -d /tmp/tvn-dns-XXXXXX)
holder=""
cleanup() {
    [ -z "$holder" ] || kill "$holder" 2>/dev/null
    [ ! -d "$dir/resolved" ] || "$source_dir/tools/lab/resolved-ns.sh" stop "$dir/resolved" >/dev/null 2>&1
    "$source_dir/tools/lab/netns-lab.sh" down "$dir" >/dev/null 2>&1 || true
    rm -rf "$dir"
}
trap cleanup EXIT
"$source_dir/tools/lab/netns-lab.sh" up "$dir" >/dev/null

# DNS servers in the server namespace: the tunnel's answers 10.99.0.1, the router's 10.99.0.2.
for s in "$TUNNEL_DNS:10.99.0.1" "$ROUTER:10.99.0.2"; do
    ip netns exec $SRV dnsmasq --no-resolv --no-hosts --bind-interfaces --listen-address="${s%%:*}" \
        --address=/e2e.test/"${s#*:}" --pid-file="$dir/dnsmasq-${s%%:*}.pid" --user=root
done

# What leaves on the physical link towards port 53 or 853.
ip netns exec $CLI nft -f - <<NFT
table inet tvn_dns_count {
    counter dns { }
    chain out {
        type filter hook postrouting priority 200; policy accept;
        oifname "$LINK" meta l4proto { udp, tcp } th dport { 53, 853 } counter name dns
    }
}
NFT
dns_packets() { ip netns exec $CLI nft list counter inet tvn_dns_count dns | sed -n 's/.*packets \([0-9]*\).*/\1/p'; }

# The client configuration, shaped as the program writes it for UDP.
config=$dir/client.ovpn
{
    printf 'remote 10.231.0.1 1194 udp\r\nclient\r\ndev tun\r\nnobind\r\npersist-key\r\nexplicit-exit-notify 1\r\n'
    printf 'remote-cert-tls server\r\nverify-x509-name server name\r\nauth-user-pass\r\nauth-nocache\r\n'
    printf 'data-ciphers AES-256-GCM:AES-128-GCM\r\nconnect-retry 1 1\r\nverb 3\r\n'
    printf '<ca>\r\n%s\r\n</ca>\r\n<tls-crypt>\r\n%s\r\n</tls-crypt>\r\n' "$(cat "$dir/pki/ca.crt")" "$(cat "$dir/pki/ta.key")"
    printf '<cert>\r\n%s\r\n</cert>\r\n<key>\r\n%s\r\n</key>\r\n' "$(cat "$dir/pki/client.crt")" "$(cat "$dir/pki/client.key")"
} >"$config"
chmod 600 "$config"

cache=${TAVRIN_TEST_DEB_CACHE:-/var/cache/tavrin-tests}
fetch_deb() { # package: unpacked under $dir/debs/package
    mkdir -p "$cache" "$dir/debs/$1"
    ls "$cache/$1"_*.deb >/dev/null 2>&1 || (cd "$cache" && apt-get download "$1" >/dev/null 2>&1) || return 1
    dpkg -x "$(ls "$cache/$1"_*.deb | tail -n 1)" "$dir/debs/$1"
}

in_ns() { nsenter --target "$holder" --mount --net -- "$@"; }

# A mount namespace for one setup, held by a sleeping process; the setup's manager is installed
# and started in it.
enter_setup() {
    local setup=$1 m=$dir/mnt-$1
    if [ "$setup" = resolved ]; then
        # systemd-resolved with a bus of its own, /etc/resolv.conf its stub, as on Ubuntu.
        "$source_dir/tools/lab/resolved-ns.sh" fetch "$cache/resolved" >/dev/null || return 1
        "$source_dir/tools/lab/resolved-ns.sh" start "$cache/resolved" "$dir/resolved" $CLI >/dev/null || return 1
        holder=$(cat "$dir/resolved/ns.pid")
        in_ns mount -t tmpfs tmpfs /var/lib
        # The physical link's server, as DHCP gives it.
        in_ns resolvectl dns $LINK $ROUTER
        return 0
    fi
    mkdir -p "$m/etc-upper" "$m/etc-work" "$m/usr-upper" "$m/usr-work"
    if [ "$setup" = resolvconf ]; then fetch_deb resolvconf || return 1; fi
    ip netns exec $CLI unshare --mount --propagation private sh -c '
        mount -t overlay overlay -o lowerdir=/etc,upperdir="$1/etc-upper",workdir="$1/etc-work" /etc
        mount -t overlay overlay -o lowerdir=/usr,upperdir="$1/usr-upper",workdir="$1/usr-work" /usr
        mount -t tmpfs tmpfs /run
        mount -t tmpfs tmpfs /var/lib
        exec sleep infinity' sh "$m" &
    holder=$!
    for _ in $(seq 50); do [ "$(readlink /proc/$holder/ns/mnt)" != "$(readlink /proc/self/ns/mnt)" ] && break; sleep 0.05; done
    sleep 0.2
    # NetworkManager writes its own header, and writes the same again on the next lease.
    in_ns sh -c 'rm -f /etc/resolv.conf; printf "%bnameserver %s\n" "$1" "$2" >/etc/resolv.conf' sh \
        "$([ "$setup" = nm ] && echo '# Generated by NetworkManager\n')" $ROUTER
    if [ "$setup" = resolvconf ]; then
        in_ns sh -c 'cp -a "$1/etc/resolvconf" /etc/ && cp -a "$1/lib/resolvconf" /usr/lib/
            cp "$1/sbin/resolvconf" /usr/sbin/
            mkdir -p /run/resolvconf/interface && touch /run/resolvconf/enable-updates
            ln -sf ../run/resolvconf/resolv.conf /etc/resolv.conf
            printf "nameserver %s\n" "$2" | resolvconf -a "$3.dhclient"' sh "$dir/debs/resolvconf" $ROUTER $LINK
    fi
}

leave_setup() {
    in_ns pkill -TERM -f "tavrin-helperd --port 23599" || true
    if [ "$1" = resolved ]; then
        "$source_dir/tools/lab/resolved-ns.sh" stop "$dir/resolved" || true
    else
        kill "$holder" 2>/dev/null || true
        wait "$holder" 2>/dev/null || true
    fi
    holder=""
}

# The resolver setup as a program on the machine would meet it.
resolver_state() {
    in_ns sh -c 'ls -l /etc/resolv.conf | sed "s/.* \/etc/\/etc/"; cat /etc/resolv.conf
        [ -d /run/resolvconf/interface ] && grep -r . /run/resolvconf/interface
        command -v resolvectl >/dev/null && [ -d /run/systemd/resolve ] && resolvectl dns && resolvectl domain
        true'
}

# As libc resolves; with systemd-resolved also as its own clients do (nss-resolve, D-Bus).
lookup() {
    local a
    a=$(in_ns timeout 10 getent ahostsv4 host.e2e.test | awk 'NR == 1 { print $1 }' || true)
    echo "${a:-none}"
    if [ "$1" = resolved ]; then
        a=$(in_ns timeout 10 resolvectl query --legend=no -4 host.e2e.test 2>/dev/null | awk '{ print $2; exit }' || true)
        echo "${a:-none}"
    fi
}

failed=0
report_only=${TAVRIN_DNS_TABLE_REPORT_ONLY:-0}
printf '%-10s %-12s %-7s %5s %-8s %s\n' setup "kill switch" end dns lookup restored
for setup in "${setups[@]}"; do
    if ! enter_setup "$setup"; then
        printf '%-10s skipped: its manager cannot be installed here\n' "$setup"
        [ -z "$holder" ] || leave_setup "$setup"
        continue
    fi
    in_ns env TAVRIN_HELPERD_SCRIPT="$script" "$build/helper/tavrin-helperd" --port 23599 >"$dir/helperd-$setup.log" 2>&1 &
    for _ in $(seq 100); do grep -q 'listening on' "$dir/helperd-$setup.log" && break; sleep 0.05; done
    before=$(resolver_state)
    for ks in off on local; do
        for end in stop kill; do
            # Flags: kill switch, IPv6 block, and for "local" local devices let through.
            flags=$([ $ks = local ] && echo 11100 || echo 11000)
            [ $ks = off ] || in_ns "$wire" firewall-on 23599 "127.0.0.1;10.231.0.1" tun0 $flags >/dev/null
            # A free management port: the daemon refuses one something else has bound.
            for _ in 1 2 3 4 5; do
                mgmt=$((24000 + RANDOM % 8000))
                in_ns "$wire" openvpn 23599 "$config" $mgmt >/dev/null && break
                mgmt=""
            done
            [ -n "$mgmt" ] || { echo "openvpn refused: $(tail -n 3 "$dir/helperd-$setup.log")"; exit 1; }
            in_ns "$wire" mgmt $mgmt vpnuser 's3cret-Pass' >/dev/null || { echo "no tunnel: $(tail -n 5 "$dir/helperd-$setup.log")"; exit 1; }
            ip netns exec $CLI nft reset counter inet tvn_dns_count dns >/dev/null
            case $setup in
            nm)
                in_ns sh -c 'printf "# Generated by NetworkManager\nnameserver %s\n" "$1" >/etc/resolv.conf.nm
                    mv /etc/resolv.conf.nm /etc/resolv.conf' sh $ROUTER
                sleep 0.5
                ;;
            resolvconf) printf 'nameserver %s\n' $ROUTER | in_ns resolvconf -a $LINK.dhclient ;;
            esac
            [ "$setup" = resolved ] && in_ns resolvectl flush-caches
            answers=""
            for _ in 1 2 3; do answers="$answers $(lookup "$setup" | tr '\n' ' ')"; done
            dns=$(dns_packets)
            # The daemon's record of its OpenVPN; the servers' OpenVPNs run under the same name.
            pid=$(in_ns cut -d ' ' -f 1 /var/lib/tavrin-helperd/openvpn.pid)
            if [ $end = stop ]; then
                in_ns "$wire" mgmt-stop $mgmt >/dev/null || true
            else
                kill -KILL "$pid"
            fi
            for _ in $(seq 100); do kill -0 "$pid" 2>/dev/null || break; sleep 0.05; done
            sleep 0.3
            [ $ks = off ] || in_ns "$wire" firewall-off 23599 >/dev/null
            after=$(resolver_state)
            ok_lookup=yes
            [ -z "$(echo "$answers" | tr ' ' '\n' | grep -v -e '^$' -e '^10.99.0.1$')" ] || ok_lookup=no
            restored=no; [ "$after" = "$before" ] && restored=yes
            printf '%-10s %-12s %-7s %5s %-8s %s\n' "$setup" "$ks" "$end" "$dns" "$ok_lookup" "$restored"
            if [ "$dns" != 0 ] || [ $ok_lookup = no ] || [ $restored = no ]; then
                failed=1
                [ "$restored" = yes ] || diff <(echo "$before") <(echo "$after") | sed 's/^/    /' || true
            fi
        done
    done
    leave_setup "$setup"
done
[ "$report_only" = 1 ] && exit 0
exit $failed
