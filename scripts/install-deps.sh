#!/usr/bin/env bash
# Installs every Debian package that the build, the tests, the demo and the
# benchmarks need. Idempotent: packages already present are not fetched again.
# Works as root or through sudo.
set -euo pipefail

packages=(
  # build
  cmake g++ make ninja-build pkg-config
  libgtest-dev libgmock-dev
  libpugixml-dev uuid-dev duktape-dev
  libsqlite3-dev sqlite3
  # workbooks: the zip container and sheets of .xlsx, the compound document of .xls; the
  # tests write and read workbooks with independent Python libraries
  libzip-dev libexpat1-dev libgsf-1-dev python3-openpyxl python3-xlwt python3-xlrd
  # record access: the driver manager and the drivers
  unixodbc unixodbc-dev libsqliteodbc odbc-postgresql odbc-mariadb tdsodbc
  # Access files (libmdb; mdb-export is the tests' independent reader), dBase
  # files (shapelib's DBF API; python3-dbf writes the tests' dBase files, pxlib their
  # Paradox files)
  mdbtools-dev mdbtools libshp-dev python3-dbf pxlib-dev
  # throwaway database servers for the server tests
  postgresql mariadb-server mariadb-client
  # the peers of the conversion benchmark (scripts/bench.sh) and its clock; libpq's
  # headers build its bare loop of one round trip per row
  gdal-bin time libpq-dev
  # independent writers and readers of vCard folders for the contact store tests
  python3-vobject khard
  # locales for the regional-settings tests
  locales
  # an independent CSV reader for the tests of the reject file
  python3
  # the desktop: Qt 6 Widgets (its GIF, JPEG and offscreen plug-ins come with
  # libqt6gui6), QScintilla for the script editors and a font for windows
  # rendered offscreen
  qt6-base-dev qt6-translations-l10n libqscintilla2-qt6-dev fonts-dejavu-core
  # the Debian package (scripts/package.sh) and its test: shlibdeps, the icon's
  # pictures, lintian, the checks of the desktop entry, the AppStream data and
  # the MIME type (xdg-mime answers through File::MimeInfo's mimetype)
  dpkg-dev librsvg2-bin lintian desktop-file-utils appstream shared-mime-info
  xdg-utils libfile-mimeinfo-perl
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -gt 0 ]; then
  sudo=""
  if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
  echo "install-deps: installing ${missing[*]}"
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get update -qq
  $sudo env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi

# Locales the tests switch between (German and US regional settings).
if command -v locale >/dev/null; then
  need_gen=0
  for l in de_DE.UTF-8 en_US.UTF-8; do
    if ! locale -a 2>/dev/null | grep -qi "^${l%.UTF-8}.utf8$"; then need_gen=1; fi
  done
  if [ $need_gen -eq 1 ] && [ -f /etc/locale.gen ]; then
    sudo=""
    if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
    $sudo sed -i -e 's/^# *\(de_DE.UTF-8 UTF-8\)/\1/' -e 's/^# *\(en_US.UTF-8 UTF-8\)/\1/' /etc/locale.gen
    $sudo locale-gen >/dev/null
  fi
fi
