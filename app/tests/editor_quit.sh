#!/usr/bin/env bash
# Editor on the null devices with no display: a console line given through the environment
# quits after some frames. It must start, run, shut down, exit 0 and write Editor.cfg with
# its sections in the fixed order.
set -uo pipefail
editor=$1
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
cd "$dir"
env -u DISPLAY -u WAYLAND_DISPLAY EDITOR_NULL_DEVICES=1 EDITOR_CONSOLE_LINES='@30 Quit()' \
    timeout 120 "$editor" >out.txt 2>&1
rc=$?
if [[ $rc -ne 0 ]]; then
    echo "Editor exited with $rc"; cat out.txt; exit 1
fi
sections=$(grep -o '^<[A-Za-z]*>' Editor.cfg | tr -d '<>' | paste -sd' ')
if [[ "$sections" != "MainWindow CharacterEditor MaterialEditor SceneEditor FxEditor" ]]; then
    echo "sections: $sections"; cat Editor.cfg; exit 1
fi
echo "ok: exit 0, sections $sections"
