#!/usr/bin/env bash
# A scene saved by edtool, opened in the Editor (null devices, no display) through the
# console's Scene(...) and saved again when the Editor quits, is unchanged byte for byte.
#   editor_roundtrip.sh EDTOOL EDITOR SCENE_TEST_FILES
set -uo pipefail
tool=$1
editor=$2
files=$(cd "$3" && pwd)
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir -p "$dir/Scene/round"
"$tool" scene resave "$files/exact/full_little.scene" "$dir/Scene/round/round.scene" || exit 1
cd "$dir"
env -u DISPLAY -u WAYLAND_DISPLAY EDITOR_NULL_DEVICES=1 EDITOR_CONSOLE_LINES='@2 Scene("round") @40 Quit()' \
    EDITOR_TEST_SAVE_SCENE=saved.scene timeout 120 "$editor" >out.txt 2>&1
rc=$?
if [[ $rc -ne 0 ]]; then
    echo "Editor exited with $rc"; cat out.txt; exit 1
fi
if ! cmp Scene/round/round.scene saved.scene; then
    "$tool" scene dump Scene/round/round.scene >before.json
    "$tool" scene dump saved.scene >after.json
    diff before.json after.json | head -40
    exit 1
fi
count=$("$tool" scene open saved.scene | grep -o "[0-9]* entities" | head -1)
echo "ok: the scene came back unchanged ($count)"
