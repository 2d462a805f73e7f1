#!/usr/bin/env bash
# edtool scene over every file the scene tests built: a file at the writer's versions resaves
# byte for byte; a file of older versions resaves to one that then resaves byte for byte;
# dump gives valid JSON and check reads them all; a cut file is refused.
#   edtool_scene.sh EDTOOL FOLDER
set -euo pipefail
tool=$1
dir=$2
out=$(mktemp -d)
trap 'rm -rf "$out"' EXIT
mkdir "$out/json"
count=0
shopt -s nullglob
for f in "$dir"/exact/*.scene "$dir"/exact/*.prop; do
    ext=${f##*.}
    "$tool" scene resave "$f" "$out/a.$ext"
    cmp "$f" "$out/a.$ext"
    "$tool" scene check "$f" >"$out/check.txt"
    if grep -q "resave differs\|follow the last" "$out/check.txt"; then
        cat "$out/check.txt"
        exit 1
    fi
    "$tool" scene dump "$f" >"$out/json/$count.json"
    count=$((count + 1))
done
for f in "$dir"/upgraded/*.scene; do
    "$tool" scene resave "$f" "$out/a.scene"
    "$tool" scene resave "$out/a.scene" "$out/b.scene"
    cmp "$out/a.scene" "$out/b.scene"
    "$tool" scene check "$f" >/dev/null
    "$tool" scene dump "$f" >"$out/json/$count.json"
    count=$((count + 1))
done
[[ $count -gt 0 ]] || { echo "no test files in $dir"; exit 1; }
python3 -c 'import json, sys
for name in sys.argv[1:]:
    with open(name) as f:
        json.load(f)' "$out"/json/*.json
head -c 100 "$dir/exact/full_little.scene" >"$out/cut.scene"
if "$tool" scene check "$out/cut.scene" >/dev/null 2>&1; then
    echo "check accepted a cut file"
    exit 1
fi
if "$tool" scene resave "$out/cut.scene" "$out/c.scene" 2>/dev/null || [[ -e "$out/c.scene" ]]; then
    echo "resave wrote a cut file"
    exit 1
fi
echo "$count files"
