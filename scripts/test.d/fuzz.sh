# Sourced by scripts/test.sh: builds the reference format's fuzz target with clang in
# build-fuzz/ and runs it for a bounded time on a fresh seed corpus. A finding fails the
# run. QUMBREL_FUZZ_SECONDS (default 60) bounds the run; QUMBREL_SKIP_FUZZ=1 skips it.
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
}
fuzz_hook "$root"
