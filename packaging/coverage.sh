#!/usr/bin/env bash
# Which lines of what ships the tests have run; fails when one is neither run nor listed as excluded.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."

BUILD=${1:?usage: coverage.sh BUILD}
# REGEX<tab>REASON: lines that need not be run.
EXCLUDED=packaging/coverage-excluded.txt

patterns() { grep -v '^#' "$EXCLUDED" | cut -f 1 | paste -sd '|'; }

# --exclude-unreachable-branches and --exclude-throw-branches: the compiler's own, not the source's.
gcovr --root . --object-directory "$BUILD" --filter syscmd/ --filter common/ --filter liblst/ \
    --exclude-lines-by-pattern ".*($(patterns)).*" --exclude-unreachable-branches --exclude-throw-branches \
    --txt-metric branch --fail-under-line 100 --print-summary "${@:2}"
