#!/usr/bin/env bash
# edtool scene over every file the scene tests built: a file at the writer's versions resaves
# byte for byte; a file of older versions resaves to one that then resaves byte for byte;
# dump gives valid JSON and check reads them all; a cut file is refused; open counts the
# kinds; import brings a Collada file in as a group, and refuses a cut scene.
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
"$tool" scene open "$dir/exact/full_little.scene" >"$out/open.txt"
grep -q "opened at once in .* ms, 16 entities, next id 17" "$out/open.txt"
grep -Eq "^  CGroupSceneEntity +1$" "$out/open.txt"
grep -q "opened through the loader in .* ms over [0-9]* frames .*, 16 entities" "$out/open.txt"
cat >"$out/props.dae" <<'EOF'
<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
  <library_geometries><geometry id="quad"><mesh>
    <source id="p"><float_array id="pa" count="9">0 0 0 10 0 0 10 0 5</float_array>
      <technique_common><accessor source="#pa" count="3" stride="3"/></technique_common></source>
    <vertices id="v"><input semantic="POSITION" source="#p"/></vertices>
    <triangles count="1"><input semantic="VERTEX" source="#v" offset="0"/><p>0 1 2</p></triangles>
  </mesh></geometry></library_geometries>
  <library_visual_scenes><visual_scene id="s">
    <node id="Rock" name="Rock"><instance_geometry url="#quad"/></node>
    <node id="Tree" name="Tree"><instance_geometry url="#quad"/></node>
  </visual_scene></library_visual_scenes>
</COLLADA>
EOF
"$tool" scene import "$dir/exact/full_little.scene" "$out/props.dae" "$out/imported.scene" >"$out/import.txt"
grep -q 'group "propsGroup" (id 20) with 2 entities; 19 entities written' "$out/import.txt"
"$tool" scene dump "$out/imported.scene" | python3 -c 'import json, sys
doc = json.load(sys.stdin)
names = [e["name"] for e in doc["entities"]]
assert names.count("propsGroup") == 1 and "Rock" in names and "Tree" in names, names'
if "$tool" scene import "$dir/exact/full_little.scene" "$out/cut.scene" "$out/x.scene" 2>/dev/null \
    || [[ -e "$out/x.scene" ]]; then
    echo "import took a cut file"
    exit 1
fi
echo "$count files"
