# Sourced by scripts/test.sh: every tracked C++ file must be as clang-format (repo
# config) leaves it. QUMBREL_SKIP_FORMAT=1 skips the check; `clang-format -i` fixes it.
format_hook() {
    local root="$1"
    if [[ "${QUMBREL_SKIP_FORMAT:-0}" == 1 ]]; then
        echo "== format: skipped (QUMBREL_SKIP_FORMAT=1)"
        return 0
    fi
    if ! command -v clang-format >/dev/null; then
        echo "== format: clang-format missing (install the packages of scripts/deps.d/build.txt)" >&2
        return 1
    fi
    echo "== format: clang-format check"
    local files=() f
    # Tracked and new files that exist (a deletion not yet committed has no file).
    while IFS= read -r f; do
        [[ -f "$root/$f" ]] && files+=("$f")
    done < <(git -C "$root" ls-files --cached --others --exclude-standard '*.cpp' '*.h' | sort -u)
    if ((${#files[@]} == 0)); then
        # Not a git checkout: check what is there.
        mapfile -t files < <(cd "$root" && find . -path ./build\* -prune -o \
            \( -name '*.cpp' -o -name '*.h' \) -print)
    fi
    (cd "$root" && clang-format --dry-run --Werror "${files[@]}") || {
        echo "== format: files above need clang-format -i" >&2
        return 1
    }
}
format_hook "$root"
