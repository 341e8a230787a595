#!/usr/bin/env bash
# Configures and builds into build/ (executables and libraries in build/bin/).
# Usage: scripts/build.sh [build-dir] [extra cmake args...]
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
dir="${1:-$root/build}"
shift || true
cmake -S "$root" -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE="${BUILD_TYPE:-RelWithDebInfo}" "$@"
cmake --build "$dir" --parallel "$(nproc)"
