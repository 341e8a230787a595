#!/usr/bin/env bash
# Installs dependencies, builds, runs every test through CTest, then runs the suite
# again in a sanitizer build (ASan + UBSan). Exit status is non-zero on any failure.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root"
jobs="$(nproc)"

"$root/scripts/deps.sh"

# Services some suites need (a private CUPS server, ...) start here and stop on exit.
cleanup_fns=()
cleanup() { for f in "${cleanup_fns[@]}"; do "$f" || true; done; }
trap cleanup EXIT
for hook in "$root"/scripts/test.d/*.sh; do
    [[ -e "$hook" ]] || continue
    # shellcheck source=/dev/null
    source "$hook"
done

echo "== build (warnings are errors)"
"$root/scripts/build.sh" "$root/build" -DQUMBREL_WERROR=ON
echo "== tests"
ctest --test-dir "$root/build" --output-on-failure -j "$jobs" --timeout 600

if [[ "${QUMBREL_SKIP_SANITIZE:-0}" != 1 ]]; then
    echo "== sanitizer build (ASan + UBSan)"
    BUILD_TYPE=Debug "$root/scripts/build.sh" "$root/build-asan" -DQUMBREL_WERROR=ON \
        -DQUMBREL_SANITIZE=ON -DQUMBREL_BENCH=OFF
    echo "== tests under sanitizers"
    ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
        ctest --test-dir "$root/build-asan" --output-on-failure -j "$jobs" --timeout 900 -LE slow
fi
