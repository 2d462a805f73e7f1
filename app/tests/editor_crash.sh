#!/usr/bin/env bash
# Editor fails an assertion at frame 10 (EDITOR_TEST_ASSERT_FRAME): it must leave a dump named
# <exe>_<revision>_<MMDD>_<HHMM>.dmp in its working folder and exit non-zero.
set -uo pipefail
editor=$1
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
mkdir -p "$dir/bin" "$dir/server_config"
echo '<info><entry revision="42"/></info>' >"$dir/server_config/SVNInfo.xml"
cd "$dir/bin"
env -u DISPLAY -u WAYLAND_DISPLAY EDITOR_NULL_DEVICES=1 EDITOR_TEST_ASSERT_FRAME=10 \
    timeout 120 "$editor" >out.txt 2>&1
rc=$?
if [[ $rc -eq 0 || $rc -eq 124 ]]; then
    echo "Editor exited with $rc"; cat out.txt; exit 1
fi
dumps=(Editor_rev42_[0-9][0-9][0-9][0-9]_[0-9][0-9][0-9][0-9].dmp)
if [[ ! -f "${dumps[0]}" ]]; then
    echo "no dump:"; ls; cat out.txt; exit 1
fi
grep -q 'SIGABRT' "${dumps[0]}" || { echo "dump without the signal:"; cat "${dumps[0]}"; exit 1; }
grep -q 'Assertion failed' out.txt || { echo "no assertion text:"; cat out.txt; exit 1; }
echo "ok: exit $rc, ${dumps[0]}"
