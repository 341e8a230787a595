#!/usr/bin/env bash
# Installs every Debian package the build, tests and demo need. Idempotent: packages
# already present are left alone and apt is not touched when nothing is missing.
# Each module lists its packages in scripts/deps.d/*.txt (one name a line, # comments).
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"

mapfile -t wanted < <(cat "$here"/deps.d/*.txt | sed -e 's/#.*//' -e 's/[[:space:]]//g' | grep -v '^$' | sort -u)

missing=()
for pkg in "${wanted[@]}"; do
    status="$(dpkg-query -W -f='${db:Status-Status}' "$pkg" 2>/dev/null || true)"
    [[ "$status" == "installed" ]] || missing+=("$pkg")
done

if ((${#missing[@]} == 0)); then
    echo "deps: all ${#wanted[@]} packages present"
    exit 0
fi

echo "deps: installing ${missing[*]}"
if [[ $(id -u) -ne 0 ]]; then
    if command -v sudo >/dev/null; then SUDO=sudo; else
        echo "deps: not root and no sudo; install as root: apt-get install ${missing[*]}" >&2
        exit 1
    fi
else
    SUDO=
fi
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -qq
$SUDO apt-get install -y -qq --no-install-recommends "${missing[@]}"
