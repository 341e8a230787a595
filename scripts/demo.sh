#!/usr/bin/env bash
# The demo: installs the packages, builds, simulates recorder files of every family and
# converts each of them with the qumbrel program to a CSV report, an XLS sheet, a workbook
# filled from a template (made by docs/make_example_template.py) and the customer text.
#
#   scripts/demo.sh              # everything, from a fresh Debian 12 machine
#   scripts/demo.sh --no-build   # use what build/ (or $BUILD_DIR) already holds
#
# Everything it makes is under ./demo-out (removed and made again on every run):
# in/ the simulated files, home-csv/, home-xls/, home-tpl/ and home-txt/ the program
# folders (option file, logs, register), csv/, xls/, workbooks/ and txt/ the reports,
# template.xltx the template.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${BUILD_DIR:-$root/build}"
demo="$root/demo-out"

build_wanted=1
for arg in "$@"; do
    case "$arg" in
        --no-build) build_wanted=0 ;;
        *)
            echo "usage: scripts/demo.sh [--no-build]" >&2
            exit 2
            ;;
    esac
done

if ((build_wanted)); then
    # deps.sh installs with apt, which needs root.
    if [[ $(id -u) -eq 0 ]]; then
        "$root/scripts/deps.sh"
    elif command -v sudo >/dev/null; then
        sudo "$root/scripts/deps.sh"
    else
        "$root/scripts/deps.sh"
    fi
    "$root/scripts/build.sh" "$build"
fi

bin="$build/bin"
for tool in qumbrel recsim; do
    [[ -x "$bin/$tool" ]] || {
        echo "demo: $bin/$tool is missing; run scripts/demo.sh without --no-build" >&2
        exit 1
    }
done

rm -rf "$demo"
mkdir -p "$demo/in" "$demo/csv" "$demo/xls" "$demo/workbooks" "$demo/txt" "$demo/home-csv" \
    "$demo/home-xls" "$demo/home-tpl" "$demo/home-txt"

echo "== simulating recorder files of the five families in $demo/in"
start="2024-03-05 08:00:00"
"$bin/recsim" --family VT --kind event --channels 4 --samples 240 --alarms 3 --messages 2 \
    --batch --seed 11 --start "$start" --out "$demo/in/line1.oge"
"$bin/recsim" --family VT --kind display --channels 3 --samples 120 --alarms 2 --messages 1 \
    --batch --seed 12 --start "$start" --out "$demo/in/line2.ogd"
"$bin/recsim" --family VT --kind event --channels 2 --math-channels 1 --samples 60 \
    --interval-ms 500 --alarms 1 --seed 13 --start "$start" --out "$demo/in/dryer.oge"
"$bin/recsim" --family VU --kind display --channels 3 --samples 120 --alarms 2 --messages 1 \
    --batch --seed 14 --start "$start" --out "$demo/in/oven.osd"
"$bin/recsim" --family VQ --kind event --channels 3 --samples 120 --alarms 2 --messages 2 \
    --batch --seed 15 --start "$start" --out "$demo/in/sterilizer.obe"
"$bin/recsim" --family KL --kind event --channels 2 --samples 120 --alarms 1 --messages 1 \
    --seed 16 --start "$start" --out "$demo/in/kiln.kle"
"$bin/recsim" --family HN --channels 4 --samples 120 --messages 2 --seed 17 --start "$start" \
    --out "$demo/in/hall.hnd"
ls -l "$demo/in"

# One program folder per target format. binfilemodus=2 keeps the sources where they are
# (and registers them), so both runs read the same files.
write_options() { # home target-folder targetformat [template]
    cat >"$1/qumbrel.ini" <<EOF
[file]
excelsourcefile=${4:-}
targetpath=$2
binfilemodus=2
targetformat=$3
alarminclusive=1
messageinclusive=1
ctrleventinclusive=1
pveventinclusive=1
signatureinclusive=1
language=$1/english.lng
userdef1=Qumbrel demo
[userdefined]
Channels=ALL
EOF
}
write_options "$demo/home-csv" "$demo/csv" 0
write_options "$demo/home-xls" "$demo/xls" 1
/usr/bin/python3 "$root/docs/make_example_template.py" "$demo/template.xltx"
write_options "$demo/home-tpl" "$demo/workbooks" 2 "$demo/template.xltx"
write_options "$demo/home-txt" "$demo/txt" 3

failed=0
# convert_all HOME DONE-WORD [KL-REASON]: every simulated file with that program folder; with
# a reason, KL files are skipped and the reason said.
convert_all() {
    for f in "$demo"/in/*; do
        if [[ -n "${3:-}" && "$f" == *.kle ]]; then
            echo "   $(basename "$f"): skipped ($3)"
            continue
        fi
        if "$bin/qumbrel" --headless --quiet --home "$demo/$1" "$f"; then
            echo "   $(basename "$f"): $2"
        else
            echo "   $(basename "$f"): FAILED (see $demo/$1/error.log)"
            failed=1
        fi
    done
}
for home in home-csv home-xls; do
    echo "== converting with the program folder $demo/$home"
    convert_all "$home" converted
done
echo "== filling the template $demo/template.xltx"
# A KL template report opens its workbook as ".xls" (docs/templates.md).
convert_all home-tpl filled "KL template reports need an .xls template"
echo "== the customer text"
convert_all home-txt written "the customer text serves VT, VU, VQ and HN files"

echo
echo "== reports"
ls -l "$demo/csv" "$demo/xls" "$demo/workbooks" "$demo/txt"
echo
echo "== the first lines of $demo/csv/line1.csv"
head -n 40 "$demo/csv/line1.csv"
exit "$failed"
