#!/usr/bin/env bash
# The OpenPGP key that signs Tavrin's update packages: an "origin" signature inside the .deb
# (debsigs), which tavrin-helperd checks with debsig-verify before dpkg sees the package.
#
#   update-key.sh new DIR              makes a throw-away signing key in the gpg home DIR (created),
#                                      writes its public half to DIR/public.gpg, prints its fingerprint
#   update-key.sh throwaway FILE       writes the public half of a key whose secret is thrown away
#   update-key.sh trust FILE ROOT      installs the public key FILE and the policy that trusts it
#                                      where debsig-verify looks under ROOT; prints the key id
#   update-key.sh sign KEY DEB...      signs each package with KEY from $GNUPGHOME (or ~/.gnupg)
#
# debsig-verify finds the signer by its primary key only, so the primary key must sign: sign
# forces it with "KEY!", and trust refuses a key whose primary key cannot sign.
set -euo pipefail

# A gpg home of our own for reading keys, so that nothing touches the caller's.
scratch_home() {
    local home
    home=$(mktemp -d)
    chmod 700 "$home"
    echo "$home"
}

new_key() {
    local home=$1
    mkdir -p "$home"
    chmod 700 "$home"
    GNUPGHOME=$home gpg --batch --quiet --passphrase '' \
        --quick-gen-key "Tavrin updates (throw-away) <updates@tavrin.invalid>" ed25519 sign never 2>/dev/null
    GNUPGHOME=$home gpg --batch --export 2>/dev/null >"$home/public.gpg"
    GNUPGHOME=$home gpg --batch --with-colons --list-keys 2>/dev/null | awk -F: '$1 == "fpr" { print $10; exit }'
}

case ${1:-} in
new)
    new_key "${2:?gpg home}"
    ;;
throwaway)
    out=${2:?public key file}
    home=$(scratch_home)
    trap 'GNUPGHOME=$home gpgconf --kill gpg-agent 2>/dev/null || true; rm -rf "$home"' EXIT
    new_key "$home" >/dev/null
    cp "$home/public.gpg" "$out"
    ;;
trust)
    file=${2:?public key file}
    root=${3:?root directory}
    home=$(scratch_home)
    trap 'rm -rf "$home"' EXIT
    gpg --homedir "$home" --batch --quiet --import "$file" 2>/dev/null \
        || { echo "update-key: no OpenPGP key in $file" >&2; exit 1; }
    # One primary key that may sign: its long id names the policy and keyring directories.
    keys=$(gpg --homedir "$home" --batch --with-colons --list-keys 2>/dev/null | awk -F: '$1 == "pub"')
    if [ "$(grep -c . <<<"$keys")" -ne 1 ]; then
        echo "update-key: $file must hold exactly one key" >&2
        exit 1
    fi
    IFS=: read -r _ validity _ _ id _ _ _ _ _ _ usage _ <<<"$keys"
    if [[ "$validity" =~ [rei] ]] || [[ "$usage" != *s* ]]; then
        echo "update-key: the primary key $id of $file is revoked, expired or cannot sign" >&2
        exit 1
    fi
    mkdir -p "$root/usr/share/debsig/keyrings/$id" "$root/etc/debsig/policies/$id"
    gpg --homedir "$home" --batch --export "$id" 2>/dev/null >"$root/usr/share/debsig/keyrings/$id/tavrin.gpg"
    cat >"$root/etc/debsig/policies/$id/tavrin.pol" <<POLICY
<?xml version="1.0"?>
<!DOCTYPE Policy SYSTEM "https://www.debian.org/debsig/1.0/policy.dtd">
<Policy xmlns="https://www.debian.org/debsig/1.0/">
  <Origin Name="Velmora" id="$id" Description="Tavrin updates"/>
  <Selection>
    <Required Type="origin" File="tavrin.gpg" id="$id"/>
  </Selection>
  <Verification MinOptional="0">
    <Required Type="origin" File="tavrin.gpg" id="$id"/>
  </Verification>
</Policy>
POLICY
    chmod 644 "$root/usr/share/debsig/keyrings/$id/tavrin.gpg" "$root/etc/debsig/policies/$id/tavrin.pol"
    echo "$id"
    ;;
sign)
    key=${2:?key}
    shift 2
    for deb in "$@"; do
        debsigs --sign=origin "--default-key=$key!" "$deb" >/dev/null 2>&1 \
            || { echo "update-key: cannot sign $deb with $key" >&2; exit 1; }
    done
    ;;
*)
    echo "usage: $0 new DIR | throwaway FILE | trust FILE ROOT | sign KEY DEB..." >&2
    exit 2
    ;;
esac
