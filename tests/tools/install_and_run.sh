#!/bin/sh
# make install into a staging folder (DESTDIR), the installed tool run from
# there: it finds its own module and documents, renders the same bytes as the
# build tree's tool, and the uninstall script leaves the folder empty.
# Arguments: the build tree, the source tree.
set -eu
build=$1
source=$2
stage=$(mktemp -d)
manifest=$build/install_manifest.txt
kept=""
cleanup() {
    rm -rf "$stage"
    # Leave the build tree's manifest as a real install left it.
    if [ -n "$kept" ]; then mv "$kept" "$manifest"; fi
}
trap cleanup EXIT
if [ -f "$manifest" ]; then kept=$stage.manifest; mv "$manifest" "$kept"; fi
fail() { echo "FAIL: $*" >&2; exit 1; }

DESTDIR=$stage cmake --install "$build" --prefix /usr/local >/dev/null
mv "$manifest" "$stage/manifest.txt"
prefix=$stage/usr/local
tool=$prefix/bin/lumenveil
[ -x "$tool" ] || fail "no tool at $tool"

# The installed module, not the build tree's, even with none named.
module=$(env -u LUMENVEIL_MODULE "$tool" info | sed -n 's/^module: *//p')
[ "$(realpath "$module")" = "$(realpath "$prefix/lib/lumenveil/libLumenveilVZ.so")" ] ||
    fail "the installed tool does not load the installed module but '$module'"
env -u LUMENVEIL_MODULE "$tool" --help | grep -q "User guide: $prefix/share/doc/lumenveil/user-guide.md" ||
    fail "--help does not name the installed user guide"
for doc in user-guide.md farm.md help/lumenveil.html images/hexagon.png; do
    [ -f "$prefix/share/doc/lumenveil/$doc" ] || fail "not installed: share/doc/lumenveil/$doc"
done

# The same picture as the build tree's tool.
"$tool" render "$source/tests/data/coffee.png" -o "$stage/installed.png" --shape polygon --radius-x 0.03 --engine fast
"$build/tools/lumenveil/lumenveil" render "$source/tests/data/coffee.png" -o "$stage/built.png" --shape polygon \
    --radius-x 0.03 --engine fast
cmp "$stage/installed.png" "$stage/built.png" || fail "the installed tool renders other bytes"
rm "$stage/installed.png" "$stage/built.png"

DESTDIR=$stage cmake -DMANIFEST="$stage/manifest.txt" -P "$source/cmake/uninstall.cmake" >/dev/null
left=$(find "$stage" -type f)
[ -z "$left" ] || fail "left after uninstall: $left"
[ ! -d "$prefix/lib/lumenveil" ] && [ ! -d "$prefix/share/doc/lumenveil" ] || fail "folders left after uninstall"
echo "installed, ran and uninstalled"
