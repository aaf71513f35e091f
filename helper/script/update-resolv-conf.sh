#!/bin/sh
# OpenVPN --up/--down script of the Tavrin helper daemon.
# up:   the DNS servers and search domains the VPN server pushed replace the resolver
#       configuration; the previous one is kept aside first.
# down: the kept configuration is put back.
# TAVRIN_HELPERD_ROOT moves every file this script touches (tests).
set -u
set -f # the pushed options are data: no file name expansion

root="${TAVRIN_HELPERD_ROOT:-}"
conf="$root/etc/resolv.conf"
statedir="$root/var/lib/tavrin-helperd"
saved="$statedir/resolv.conf.saved"
savedlink="$statedir/resolv.conf.link"

restore() {
    if [ -f "$savedlink" ]; then
        rm -f "$conf" && ln -s "$(cat "$savedlink")" "$conf"
        rm -f "$savedlink" "$saved"
    elif [ -f "$saved" ]; then
        # Written in place: the file may be a bind mount that cannot be replaced.
        cat "$saved" >"$conf" && rm -f "$saved"
    fi
}

case "${script_type:-}" in
up)
    servers=""
    domains=""
    i=1
    while :; do
        eval "option=\${foreign_option_$i:-}"
        [ -n "$option" ] || break
        # shellcheck disable=SC2086
        set -- $option
        if [ "$#" -eq 3 ] && [ "$1" = "dhcp-option" ]; then
            case "$2" in
            DNS | DNS6)
                if printf '%s' "$3" | grep -Eq '^[0-9A-Fa-f:.]{2,45}$'; then
                    servers="$servers $3"
                fi
                ;;
            DOMAIN | DOMAIN-SEARCH)
                if printf '%s' "$3" | grep -Eq '^[A-Za-z0-9.-]{1,253}$'; then
                    domains="$domains $3"
                fi
                ;;
            esac
        fi
        i=$((i + 1))
    done
    [ -n "$servers" ] || exit 0

    mkdir -p "$statedir"
    if [ ! -e "$saved" ] && [ ! -e "$savedlink" ]; then
        if [ -L "$conf" ]; then
            readlink "$conf" >"$savedlink"
            cp "$conf" "$saved" 2>/dev/null || : >"$saved"
            rm -f "$conf"
        elif [ -f "$conf" ]; then
            cp "$conf" "$saved"
        else
            : >"$saved"
        fi
    fi
    {
        echo "# written by the Tavrin helper for ${dev:-the tunnel}; put back when it goes down"
        [ -z "$domains" ] || echo "search$domains"
        for server in $servers; do
            echo "nameserver $server"
        done
    } >"$conf.tavrin-new"
    cat "$conf.tavrin-new" >"$conf"
    rm -f "$conf.tavrin-new"
    ;;
down)
    restore
    ;;
esac
exit 0
