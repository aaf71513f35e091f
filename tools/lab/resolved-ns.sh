#!/usr/bin/env bash
# systemd-resolved on its own in a network namespace, for the end-to-end DNS tests: there the
# helper daemon's up/down script finds resolved answering on a system bus, /etc/resolv.conf a link
# to resolved's stub file and resolvectl on its PATH, as on a Debian machine that uses resolved.
# Nothing is installed on this machine: the packages are unpacked into a directory of their own,
# and what they need (a fresh /run, a bus, the systemd-resolve user, /etc/resolv.conf, resolvectl
# in /usr/bin) is mounted in a private mount namespace only. The machine's resolver, bus, routes
# and files stay as they are.
#
#   resolved-ns.sh fetch CACHE              download and unpack the packages into CACHE/root;
#                                           nothing to do when done before, exit 77 if apt cannot
#   resolved-ns.sh start CACHE WORK NETNS   start it all in the network namespace NETNS (which
#                                           exists); returns once resolvectl answers there
#                                           (its pid in WORK/ns.pid, for nsenter --mount --net)
#   resolved-ns.sh stop WORK                end every process in that mount namespace (whoever
#                                           started it), so its mounts go with it
#
# CACHE and WORK must not lie under /run, which is a fresh tmpfs inside.
set -euo pipefail

self=$(readlink -f "$0")

usage() {
    echo "usage: $0 fetch CACHE | start CACHE WORK NETNS | stop WORK" >&2
    exit 2
}
die() {
    echo "resolved-ns: $*" >&2
    exit 1
}

installed() { [ "$(dpkg-query -W -f='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# The dependencies of the packages PKG[=VERSION]...: the first of each set of alternatives,
# without versions.
depends_of() {
    apt-cache show --no-all-versions "$@" 2>/dev/null | sed -n 's/^\(Pre-\)\{0,1\}Depends: //p' \
        | tr ',' '\n' | sed 's/|.*//; s/(.*)//; s/:any//; s/ //g'
}

# The directories of the unpacked shared libraries, for LD_LIBRARY_PATH (which beats the RUNPATH
# that would find an installed libsystemd-shared of another version).
lib_path() { find "$1" -name '*.so*' -printf '%h\n' | sort -u | paste -sd: -; }

fetch() {
    local cache=$1 root=$1/root version p d
    [ -f "$root/.unpacked" ] && return 0
    version=$(apt-cache policy systemd-resolved 2>/dev/null | sed -n 's/^ *Candidate: //p')
    if [ -z "$version" ] || [ "$version" = "(none)" ]; then
        echo "resolved-ns: apt knows no systemd-resolved (no package lists?)" >&2
        exit 77
    fi
    # resolved with the private library of its own systemd version, plus whatever else they (and
    # a bus daemon, if there is none) need that is not installed; never systemd itself or a bus
    # package (the namespace stands in for those), nor the C library.
    local pkgs=("systemd-resolved=$version" "libsystemd-shared=$version") queue next
    command -v dbus-daemon >/dev/null || pkgs+=(dbus-daemon)
    queue=("${pkgs[@]}")
    while [ ${#queue[@]} -gt 0 ]; do
        next=()
        for d in $(depends_of "${queue[@]}" | sort -u); do
            case " systemd default-dbus-system-bus dbus-bin dbus-session-bus-common libc6 ${pkgs[*]%%=*} " in
            *" $d "*) continue ;;
            esac
            installed "$d" || { pkgs+=("$d") && next+=("$d"); }
        done
        queue=("${next[@]}")
    done

    rm -rf "$cache/debs" "$root" "$root.new"
    mkdir -p "$cache/debs" "$root.new"
    if ! (cd "$cache/debs" && apt-get -q -o APT::Sandbox::User=root download "${pkgs[@]}"); then
        echo "resolved-ns: cannot download ${pkgs[*]}" >&2
        rm -rf "$cache/debs" "$root.new"
        exit 77
    fi
    for p in "$cache"/debs/*.deb; do dpkg -x "$p" "$root.new"; done
    LD_LIBRARY_PATH=$(lib_path "$root.new") "$root.new/usr/bin/resolvectl" --version >/dev/null \
        || die "the unpacked resolvectl does not run here"
    printf '%s\n' "${pkgs[@]}" >"$root.new/.unpacked"
    mv "$root.new" "$root"
}

# Mounts the symbolic link LINK itself (not what it points to) over PATH, whatever PATH is (a
# file, a link, a bind mount): mount(8) follows links, open_tree(2) with AT_SYMLINK_NOFOLLOW and
# move_mount(2) do not. Their numbers, 428 and 429, are those of x86-64 and arm64 alike.
mount_link() {
    perl -e 'my ($link, $path, $empty) = (@ARGV, "");
        my $fd = syscall(428, -100, $link, 0x1 | 0x100 | 0x80000); # open_tree: clone, nofollow
        $fd >= 0 or die "open_tree $link: $!\n";
        syscall(429, $fd, $empty, -100, $path, 0x4) == 0 or die "move_mount $path: $!\n";' "$1" "$2"
}

# Runs in the private mount namespace and holds it: everything started here dies with stop.
inside() {
    local cache=$1 work=$2 root=$1/root
    echo $$ >"$work/ns.pid"
    readlink /proc/self/ns/mnt >"$work/ns.mnt"
    trap 'kill $(jobs -p) 2>/dev/null || true' EXIT
    mount -t tmpfs -o mode=0755,nosuid,nodev tvn-dns-run /run
    mkdir -p /run/dbus /run/systemd/resolved.conf.d
    # Only the servers the tests give: none built in, no multicast protocols, no DNSSEC.
    printf '[Resolve]\nFallbackDNS=\nLLMNR=no\nMulticastDNS=no\nDNSSEC=no\n' \
        >/run/systemd/resolved.conf.d/tvn-dns.conf
    mount --bind "$work/passwd" /etc/passwd
    mount --bind "$work/group" /etc/group
    ln -sfn /run/systemd/resolve/stub-resolv.conf "$work/resolv.conf"
    mount_link "$work/resolv.conf" /etc/resolv.conf
    # /usr/bin as it is, plus the resolvectl wrapper.
    mount -t overlay -o "lowerdir=$work/bin:/usr/bin" tvn-dns-bin /usr/bin
    ip link set lo up

    LD_LIBRARY_PATH=$(lib_path "$root")
    export LD_LIBRARY_PATH SYSTEMD_LOG_TARGET=console
    "$(command -v dbus-daemon || echo "$root/usr/bin/dbus-daemon")" --config-file="$work/bus.conf" \
        --nofork --nopidfile --nosyslog &
    echo $! >"$work/dbus.pid"
    # resolved waits for the bus socket by itself, drops to systemd-resolve and makes its /run dir.
    "$root/lib/systemd/systemd-resolved" &
    wait
}

run() {
    local pid
    pid=$(cat "$1/ns.pid" 2>/dev/null) || die "nothing started in $1"
    nsenter --target "$pid" --mount --net -- "${@:2}"
}

start() {
    local cache=$1 work=$2 netns=$3 root=$1/root id gid pid
    [ -f "$root/.unpacked" ] || die "nothing unpacked in $cache: run fetch first"
    case "$cache/ $work/" in /run/* | *" /run/"*) die "CACHE and WORK must not be under /run" ;; esac
    ip netns exec "$netns" true || die "no network namespace $netns"
    stop "$work"
    mkdir -p "$work/bin"

    # resolved runs as systemd-resolve: a copy of the user database that has it.
    cp /etc/passwd "$work/passwd"
    cp /etc/group "$work/group"
    if ! getent passwd systemd-resolve >/dev/null; then
        gid=$(getent group systemd-resolve | cut -d: -f3 || true)
        id=999
        while getent passwd $id >/dev/null || { [ -z "$gid" ] && getent group $id >/dev/null; }; do
            id=$((id - 1))
        done
        [ -n "$gid" ] || { gid=$id && echo "systemd-resolve:x:$gid:" >>"$work/group"; }
        echo "systemd-resolve:x:$id:$gid:systemd Resolver:/:/usr/sbin/nologin" >>"$work/passwd"
    fi

    # A system bus with nothing on it but resolved: root may do anything, others what resolved's
    # own policy allows them.
    cat >"$work/bus.conf" <<CONF
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>unix:path=/run/dbus/system_bus_socket</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <deny own="*"/>
    <deny send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
    <allow send_destination="org.freedesktop.DBus"/>
  </policy>
  <policy user="root">
    <allow own="*"/>
    <allow send_type="method_call"/>
  </policy>
  <include>$root/usr/share/dbus-1/system.d/org.freedesktop.resolve1.conf</include>
</busconfig>
CONF
    printf '#!/bin/sh\nLD_LIBRARY_PATH=%q\nexport LD_LIBRARY_PATH\nexec %q "$@"\n' \
        "$(lib_path "$root")" "$root/usr/bin/resolvectl" >"$work/bin/resolvectl"
    chmod 755 "$work/bin/resolvectl"

    : >"$work/ns.log"
    setsid ip netns exec "$netns" unshare -m --propagation private -- \
        bash "$self" _inside "$cache" "$work" </dev/null >>"$work/ns.log" 2>&1 &
    for _ in $(seq 200); do
        sleep 0.05
        pid=$(cat "$work/ns.pid" 2>/dev/null || true)
        [ -n "$pid" ] || continue
        kill -0 "$pid" 2>/dev/null || break # it failed
        run "$work" resolvectl status >/dev/null 2>&1 && return 0
    done
    echo "resolved-ns: resolved did not come up in $netns:" >&2
    cat "$work/ns.log" >&2
    stop "$work"
    return 1
}

stop() {
    local work=$1 mnt p n pids
    mnt=$(cat "$work/ns.mnt" 2>/dev/null || true)
    # Only a namespace that what start left still holds: its number may since have been reused.
    for p in $(cat "$work/ns.pid" "$work/dbus.pid" 2>/dev/null || true); do
        if [ -n "$mnt" ] && [ "$(readlink "/proc/$p/ns/mnt" 2>/dev/null)" = "$mnt" ] \
            && [ "$mnt" != "$(readlink /proc/1/ns/mnt)" ] && grep -qF "$work" "/proc/$p/cmdline"; then
            for n in $(seq 60); do
                pids=$(find /proc/[0-9]*/ns/mnt -maxdepth 0 -printf '%p %l\n' 2>/dev/null \
                    | awk -v mnt="$mnt" '$2 == mnt { split($1, p, "/"); print p[3] }' || true)
                [ -n "$pids" ] || break
                # shellcheck disable=SC2086 # a list of pids
                kill -s "$([ "$n" -le 30 ] && echo TERM || echo KILL)" $pids 2>/dev/null || true
                sleep 0.1
            done
            break
        fi
    done
    rm -f "$work/ns.pid" "$work/ns.mnt" "$work/dbus.pid"
}

case "${1:-}:$#" in
fetch:2) fetch "$(readlink -m "$2")" ;;
start:4) start "$(readlink -m "$2")" "$(readlink -m "$3")" "$4" ;;
stop:2) stop "$(readlink -m "$2")" ;;
_inside:3) inside "$2" "$3" ;;
*) usage ;;
esac
