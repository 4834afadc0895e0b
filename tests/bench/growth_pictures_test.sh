#!/usr/bin/env bash
# growth_pictures_test.sh REPOSITORY: the committed pictures are those of the committed points, the documents show
# each, and what is no point is refused.
set -u
cd "$1/docs/performance" || exit
failures=0
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

check() { # WHAT EXPECTED ACTUAL
    [ "$2" != "$3" ] || return 0
    failures=$((failures + 1))
    printf '%s: expected\n%s\ngot\n%s\n' "$1" "$2" "$3"
}

check 'drawing' '' "$(../../tools/growth-pictures growth.tsv "$work" 2>&1)"
for picture in "$work"/*.svg; do
    name=${picture##*/}
    cmp "$picture" "$name" || failures=$((failures + 1))
    check "$name in the documents" 1 "$(grep -cF "](performance/$name)" ../performance.md)"
    python3 -c 'import sys, xml.etree.ElementTree as tree; tree.parse(sys.argv[1])' "$picture" || failures=$((failures + 1))
done
check 'pictures' "$(cd "$work" && echo *.svg)" "$(echo *.svg)"
check 'large ones' '' "$(find . -name '*.svg' -size +60k)"

head=$(head -n 1 growth.tsv)
while IFS='|' read -r line said; do
    printf '%s\n%b\n' "$head" "$line" >"$work/points"
    check "$line" "growth-pictures: points, $said" "$(cd "$work" && "$1/tools/growth-pictures" points . 2>&1)"
done <<'TXT'
log\ta\t10|line 2, is no point
log\ta\t10\t1.5\nlog\ta\t20\tx|line 3, is no point
log\ta\t10\tnan|line 2, is no point
log\ta\t0\t1|line 2, is no point
elsewhere\ta\t10\t1|line 2, is no point
TXT
echo '<html>' >"$work/points"
check 'another file' "growth-pictures: $work/points does not begin as a file of points" \
    "$("$1/tools/growth-pictures" "$work/points" "$work" 2>&1)"
check 'no file' "growth-pictures: [Errno 2] No such file or directory: '$work/none'" \
    "$("$1/tools/growth-pictures" "$work/none" "$work" 2>&1)"
exit $((failures > 0))
