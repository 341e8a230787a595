#!/usr/bin/env bash
# Makes the pictures of docs/window.md (docs/screenshots/*.png) on the offscreen platform,
# from a scratch program folder with two simulated VT files. Needs a build with Qt6.
#   docs/make_screenshots.sh [BUILD_DIR]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bin="${1:-$root/build}/bin"
work="$(mktemp -d /tmp/qumbrel-shots.XXXXXX)"
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/in" "$work/out" "$root/docs/screenshots"
cat >"$work/qumbrel.ini" <<INI
[file]
sourcepath=$work/in
targetpath=$work/out
binfilemodus=2
language=$bin/english.lng
[userdefined]
Channels=ALL
INI
"$bin/recsim" --family VT --kind event --channels 4 --samples 120 --seed 11 \
    --start "2024-03-05 08:00:00" --out "$work/in/line1.oge" >/dev/null
"$bin/recsim" --family VT --kind display --channels 3 --samples 60 --seed 12 \
    --start "2024-03-05 08:00:00" --out "$work/in/line2.ogd" >/dev/null
QUMBREL_RECLIB_PATH="$bin" "$bin/qumbrel-screenshots" "$work" "$root/docs/screenshots" \
    "$work/in/line1.oge" "$work/in/line2.ogd" 2>/dev/null
ls "$root/docs/screenshots"
