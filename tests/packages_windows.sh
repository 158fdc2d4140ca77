#!/usr/bin/env bash
# The part of packages.sh that runs below "wine32.sh with". Usage: packages_windows.sh PACKAGES VERSION WORK_FOLDER
set -euo pipefail
packages=$1 version=$2 work=$3
tree=$(cd "$(dirname "$0")/.." && pwd)
wine() { env -u DISPLAY "$tree/tools/wine32.sh" in wine "$@"; }
step() { echo "- $*"; }
die() { echo "FAILED: $*"; exit 1; }
expect() { [ "$1" = "$2" ] || die "$3: \"$1\" instead of \"$2\""; }
# A registry value below the key that programs are listed by; nothing when there is none.
value() { wine reg query "$1\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\VexaEditor" /v "$2" 2>/dev/null | tr -d '\r' | sed -n "s/^ *$2 *REG_[A-Z]* *//p"; }
drive=$WINEPREFIX/drive_c
unix_path() { echo "$drive/$(echo "${1#?:\\}" | tr '\\' /)"; }

step "zip: runs from its folder"
mkdir "$work/zip"
(cd "$work/zip" && cmake -E tar xf "$packages/VexaEditor-$version.zip")
expect "$(ls "$work/zip")" "VexaEditor-$version" "the zip's folder"
for file in VexaEditor.exe vexa.exe receivers.ecf notices.txt help.chm help/index.html; do [ -s "$work/zip/VexaEditor-$version/$file" ] || die "no $file in the zip"; done
"$tree/tests/same_bytes.sh" "$tree/build/native/vexa" "$tree/tools/wine32.sh" in wine "$work/zip/VexaEditor-$version/vexa.exe"

# Uninstalls silently. The program copies itself elsewhere, which goes on when the first one has ended.
removed() {  # FOLDER
  wine "$1/uninstall.exe" /S || die "uninstall ended with $?"
  for _ in $(seq 100); do [ -e "$1/uninstall.exe" ] || return 0; sleep 0.2; done
  die "uninstall in $1 did not end"
}

setup=$packages/VexaEditor-$version-setup.exe
for scope in "HKCU" "HKLM /AllUsers"; do
  read -r hive option <<<"$scope"
  step "installer: silently, ${option:-for the user}"
  wine "$setup" /S ${option:+"$option"} || die "setup ended with $?"
  expect "$(value "$hive" DisplayName)" "Vexa Editor" DisplayName
  expect "$(value "$hive" DisplayVersion)" "$version" DisplayVersion
  [ -n "$(value "$hive" Publisher)" ] || die "no Publisher"
  uninstall=$(value "$hive" UninstallString | tr -d '"')
  folder=$(unix_path "${uninstall%\\*}")
  expect "$(cd "$folder" && ls VexaEditor.exe vexa.exe receivers.ecf notices.txt uninstall.exe | wc -l)" 5 "files in $folder"
  [ -n "$(find "$drive" -name 'Vexa Editor.lnk')" ] || die "no entry in the Start menu"
  expect "$(wine "$folder/vexa.exe" ecf show | tr -d '\r' | sha256sum)" "$("$tree/build/native/vexa" ecf show | sha256sum)" "the installed configuration"
  "$tree/tests/same_bytes.sh" "$tree/build/native/vexa" "$tree/tools/wine32.sh" in wine "$folder/vexa.exe"
  echo mine >"$folder/mine.bin"
  wine "$setup" /S ${option:+"$option"} || die "setup over itself ended with $?"
  removed "$folder"
  expect "$(ls "$folder")" mine.bin "left in $folder"
  expect "$(value "$hive" DisplayName)" "" "DisplayName after the removal"
  [ -z "$(find "$drive" -name 'Vexa Editor.lnk')" ] || die "the Start menu keeps its entry"
  rm -rf "$folder"
done

step "installer: into a folder that the user names; refused where it cannot write"
cp "$setup" "$drive/setup.exe"
wine cmd /c 'C:\setup.exe /S /D=C:\Some Folder' || die "setup ended with $?"
[ -f "$drive/Some Folder/VexaEditor.exe" ] || die "not in the named folder"
removed "$drive/Some Folder"
[ ! -e "$drive/Some Folder" ] || die "the named folder stays"
mkdir -p "$drive/taken/VexaEditor.exe"
status=0
wine "$setup" /S '/D=C:\taken' || status=$?
expect "$status" 2 "status where the program cannot be written"
expect "$(value HKCU DisplayName)" "" "DisplayName after a failed setup"
rm -rf "$drive/taken" "$drive/setup.exe"
echo done
