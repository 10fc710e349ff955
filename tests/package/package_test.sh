#!/usr/bin/env bash
# The Debian package, made from the build as scripts/package.sh makes it:
# lintian has no errors and no warnings (overrides aside), the desktop entry
# and the AppStream data validate, and what the package holds works where it
# is unpacked: ketrova converts the example project, kor starts offscreen and
# lists its plug-in, both say the package's version, and a .CPF file is of
# the package's MIME type, opened by kor.
#
#   package_test.sh SOURCE_DIR BUILD_DIR VERSION
set -euo pipefail
source_dir=$1
build=$2
version=$3
deb=$build/ketrova_${version}_amd64.deb

# No "." in the path: kor reports an application folder with one in a box.
work=$(mktemp -d "${TMPDIR:-/tmp}/ketrova-package-XXXXXX")
trap 'rm -rf "$work"' EXIT
fail() {
  echo "FAIL: $*" >&2
  exit 1
}
step() { echo "== $*"; }

step "package"
rm -f "$deb"
(cd "$build" && cpack -G DEB --config "$build/CPackConfig.cmake" -B "$build") >"$work/cpack.log" 2>&1 ||
  { cat "$work/cpack.log"; fail "cpack"; }
[ -f "$deb" ] || fail "no $deb"
[ "$(dpkg-deb -f "$deb" Version)" = "$version" ] || fail "package version"
dpkg-deb -f "$deb" Depends | grep -q 'libqt6widgets6' || fail "Depends lack the Qt libraries"
dpkg-deb -f "$deb" Recommends | grep -q 'libsqliteodbc' || fail "Recommends lack the ODBC drivers"

step "lintian"
lintian --fail-on error,warning "$deb" 2>&1 | grep -v 'running with root privileges' || true
lintian --fail-on error,warning "$deb" >/dev/null 2>&1 || fail "lintian reports errors or warnings"

step "unpack"
root=$work/root
dpkg-deb -x "$deb" "$root"
for f in usr/bin/ketrova usr/bin/kor usr/lib/x86_64-linux-gnu/ketrova/plugins/ketrovator.so \
  usr/share/ketrova/Images usr/share/ketrova/HTMRoot/index.HTM \
  usr/share/doc/ketrova/examples/demo/demo.cpf usr/share/icons/hicolor/scalable/apps/ketrova.svg \
  usr/share/icons/hicolor/48x48/apps/ketrova.png \
  usr/share/man/man1/ketrova.1.gz usr/share/man/man1/kor.1.gz \
  usr/share/man/de/man1/ketrova.1.gz usr/share/man/de/man1/kor.1.gz; do
  [ -e "$root/$f" ] || fail "the package lacks $f"
done
# The unpacked programs must find their own libraries, not the build's or
# the system's.
for f in usr/bin/ketrova usr/bin/kor usr/lib/x86_64-linux-gnu/ketrova/plugins/ketrovator.so; do
  if readelf -d "$root/$f" | grep -E 'R(UN)?PATH' | grep -q "$build"; then
    fail "$f has a run path into the build tree"
  fi
done
ldd "$root/usr/bin/kor" | grep 'libketrova_dialogs' | grep -q "$root/" ||
  fail "kor does not take libketrova_dialogs from beside it"

step "versions"
[ "$("$root/usr/bin/ketrova" --version)" = "Ketrova $version" ] || fail "ketrova --version"
export HOME=$work/home XDG_CONFIG_HOME=$work/home/config XDG_DATA_HOME=$work/home/data
export XDG_RUNTIME_DIR=$work/runtime QT_QPA_PLATFORM=offscreen
mkdir -p "$HOME" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
[ "$(timeout 60 "$root/usr/bin/kor" --version 2>/dev/null)" = "kor $version" ] || fail "kor --version"

step "ketrova runs the example project"
cp -r "$root/usr/share/doc/ketrova/examples/demo" "$work/demo"
(cd "$work/demo" && "$root/usr/bin/ketrova" run demo.cpf --yes --quiet) >"$work/run.out" 2>&1 ||
  { cat "$work/run.out"; fail "ketrova run demo.cpf"; }
grep -q 'Konvertierung beendet' "$work/run.out" || fail "the run did not finish"
kunden=$(sqlite3 "$work/demo/demo.sqlite" 'SELECT COUNT(*) FROM Kunden')
[ "$kunden" -gt 0 ] || fail "no customers converted"

step "kor starts offscreen and lists its plug-in"
timeout 120 "$root/usr/bin/kor" --plugins >"$work/plugins.out" 2>"$work/kor.err" ||
  { cat "$work/kor.err"; fail "kor --plugins"; }
grep -qx 'Ketrovator' "$work/plugins.out" || { cat "$work/plugins.out" "$work/kor.err"; fail "kor lists no plug-in"; }
# The first start seeded the application folder from the unpacked data.
cmp -s "$root/usr/share/ketrova/HTMRoot/index.HTM" "$HOME/Ketrova/HTMRoot/index.HTM" ||
  fail "the application folder was not seeded from share/ketrova"

step "desktop entry and AppStream data"
desktop-file-validate "$root"/usr/share/applications/*.desktop || fail "desktop-file-validate"
appstreamcli validate --no-net "$root"/usr/share/metainfo/*.metainfo.xml || fail "appstreamcli validate"
appstreamcli validate-tree --no-net "$root" || fail "appstreamcli validate-tree"

step "MIME type of project files"
xdg=$work/xdg
mkdir -p "$xdg/mime/packages" "$xdg/applications"
cp "$root"/usr/share/mime/packages/*.xml "$xdg/mime/packages/"
update-mime-database "$xdg/mime"
cp "$root"/usr/share/applications/*.desktop "$xdg/applications/"
update-desktop-database "$xdg/applications"
cp "$root/usr/share/doc/ketrova/examples/demo/demo.cpf" "$work/PROJEKT.CPF"
cp "$root/usr/share/doc/ketrova/examples/demo/demo.cpf" "$work/klein.cpf"
for f in "$work/PROJEKT.CPF" "$work/klein.cpf"; do
  type=$(XDG_DATA_HOME=$xdg XDG_DATA_DIRS=/usr/share xdg-mime query filetype "$f")
  [ "$type" = "application/x-ketrova-project" ] || fail "$(basename "$f") is $type"
done
default=$(XDG_DATA_HOME=$xdg XDG_DATA_DIRS=/usr/share xdg-mime query default application/x-ketrova-project)
[ "$default" = "$(basename "$root"/usr/share/applications/*.desktop)" ] ||
  fail "project files open with '$default'"

step "manual pages"
for page in "$root"/usr/share/man/man1/*.gz "$root"/usr/share/man/de/man1/*.gz; do
  warnings=$(LC_ALL=C.UTF-8 MANWIDTH=80 man --warnings -E UTF-8 -l "$page" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "$(basename "$page"): $warnings"
done

echo "package: ok"
