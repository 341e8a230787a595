# Sourced by scripts/test.sh: builds the fuzz targets with clang in build-fuzz/ (the
# reference format's parser, the workbook engine) and runs each for a bounded time on a
# fresh seed corpus. A finding fails the run. QUMBREL_FUZZ_SECONDS (default 60) bounds the
# parser's run, half of it the workbook engine's; QUMBREL_SKIP_FUZZ=1 skips them.
fuzz_hook() {
    local root="$1" dir="$1/build-fuzz" seconds="${QUMBREL_FUZZ_SECONDS:-60}"
    if [[ "${QUMBREL_SKIP_FUZZ:-0}" == 1 ]]; then
        echo "== fuzz: skipped (QUMBREL_SKIP_FUZZ=1)"
        return 0
    fi
    if ! command -v clang++ >/dev/null; then
        echo "== fuzz: clang++ missing (install the packages of scripts/deps.d/reclib.txt)" >&2
        return 1
    fi
    echo "== fuzz: reference format parser, ${seconds} s"
    mkdir -p "$dir"
    cmake -S "$root/tests/fuzz" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
        -DCMAKE_CXX_COMPILER=clang++ >"$dir/build.log" 2>&1 || { cat "$dir/build.log" >&2; return 1; }
    cmake --build "$dir" -j 2 >>"$dir/build.log" 2>&1 || { cat "$dir/build.log" >&2; return 1; }
    rm -rf "$dir/corpus" "$dir/artifacts"
    mkdir -p "$dir/corpus" "$dir/artifacts"
    "$dir/reclib_fuzz_seeds" "$dir/corpus"
    if ! "$dir/reclib_parse_fuzz" "$dir/corpus" -max_total_time="$seconds" -max_len=65536 \
        -rss_limit_mb=1024 -print_final_stats=1 -artifact_prefix="$dir/artifacts/" \
        >"$dir/fuzz.log" 2>&1; then
        tail -n 60 "$dir/fuzz.log" >&2
        echo "== fuzz: FINDING, reproducer in $dir/artifacts/" >&2
        return 1
    fi
    grep -E '^stat::number_of_executed_units' "$dir/fuzz.log" || true
    echo "== fuzz: no finding"

    # The workbook engine, seeded with the test templates (made by openpyxl), a sheet and
    # a reference.
    if [[ ! -x "$dir/workbook_fuzz" ]]; then
        echo "== fuzz: workbook engine skipped (libzip-dev and libpugixml-dev missing)" >&2
        return 1
    fi
    local wseconds=$(( (seconds + 1) / 2 ))
    echo "== fuzz: workbook engine, ${wseconds} s"
    rm -rf "$dir/wcorpus" && mkdir -p "$dir/wcorpus"
    /usr/bin/python3 "$root/tests/excel/make_templates.py" "$dir/wcorpus" >/dev/null 2>&1 || true
    printf 'S<worksheet><sheetData><row r="1"><c r="A1"><f t="shared" ref="A1:A2" si="0">1</f><v>1</v></c></row><row><c><f t="shared" si="0"/></c></row></sheetData></worksheet>' \
        >"$dir/wcorpus/sheet"
    printf "R'O''Brien'!\$A\$1:B2" >"$dir/wcorpus/reference"
    if ! "$dir/workbook_fuzz" "$dir/wcorpus" -max_total_time="$wseconds" -max_len=65536 \
        -rss_limit_mb=1024 -print_final_stats=1 -artifact_prefix="$dir/artifacts/" \
        >"$dir/wfuzz.log" 2>&1; then
        tail -n 60 "$dir/wfuzz.log" >&2
        echo "== fuzz: FINDING in the workbook engine, reproducer in $dir/artifacts/" >&2
        return 1
    fi
    grep -E '^stat::number_of_executed_units' "$dir/wfuzz.log" || true
    echo "== fuzz: no finding"
}
fuzz_hook "$root"
