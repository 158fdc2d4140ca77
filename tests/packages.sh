#!/usr/bin/env bash
# Installs each package of build/packages as a user would and runs the main job from there: the Debian package into a root
# of its own, the zip and the installer in the 32-bit Wine, where there is one. Usage: packages.sh
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/environment.sh
tree=$PWD
packages=$tree/build/packages
version=$(build/native/vexa --version | sed -n '1s/^vexa //p')
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
step() { echo "- $*"; }
die() { echo "FAILED: $*"; exit 1; }
expect() { [ "$1" = "$2" ] || die "$3: \"$1\" instead of \"$2\""; }

step "the three packages, and nothing else, in a tree that did not change"
expect "$(cd "$packages" && echo *)" "VexaEditor-$version-setup.exe VexaEditor-$version.zip vexa_${version}_$(dpkg --print-architecture).deb" "packages"

step "Debian: installed, used, removed"
mkdir -p "$work/root/var/lib/dpkg/info" "$work/root/var/lib/dpkg/updates"
touch "$work/root/var/lib/dpkg/status"
dpkg_there() { dpkg --root="$work/root" --log=/dev/null --force-depends "$@" >"$work/dpkg.log" 2>&1 || { cat "$work/dpkg.log"; die "dpkg $*"; }; }
dpkg_there --install "$packages"/vexa_*.deb
installed=$work/root/usr
expect "$("$installed/bin/vexa" --version | head -1)" "vexa $version" "the installed version"
expect "$("$installed/bin/vexa" ecf show | sha256sum)" "$(build/native/vexa ecf show | sha256sum)" "the installed configuration"
bash tests/main_job.sh "$installed/bin/vexa" >"$work/job.log" 2>&1 || { cat "$work/job.log"; die "main job"; }
for page in vexa vexa-upload-adb vexa-editor; do
  zcat "$installed/share/man/man1/$page.1.gz" | grep -q "^\.SH NAME" || die "manual page $page"
done
# Every command has its page, and is completed.
for command in $("$installed/bin/vexa" --help | sed -n '/^Subcommands:/,$s/^  \([a-z]\+\) .*/\1/p'); do
  ls "$installed"/share/man/man1/vexa-"$command"*.1.gz >/dev/null || die "no manual page of $command"
  completed=$(bash -c 'source "$1"; COMP_WORDS=(vexa "$2"); COMP_CWORD=1; _vexa; echo "${COMPREPLY[*]}"' - \
    "$installed/share/bash-completion/completions/vexa" "$command")
  expect "$completed" "$command" "completion"
done
completed=$(bash -c 'source "$1"; COMP_WORDS=(vexa upload adb --baud 1152); COMP_CWORD=4; _vexa; echo "${COMPREPLY[*]}"' - \
  "$installed/share/bash-completion/completions/vexa")
expect "$completed" 115200 "completion of a value"
zsh -n "$installed/share/zsh/vendor-completions/_vexa"
fish -n "$installed/share/fish/vendor_completions.d/vexa.fish"
dynamic=$(readelf -dW "$installed/bin/vexa" && nm -D "$installed/bin/vexa")
for guard in NOW PIE __stack_chk_fail __memcpy_chk; do grep -q "$guard" <<<"$dynamic" || die "vexa is built without $guard"; done
grep -q zlib "$installed/share/doc/vexa/copyright" || grep -q toml "$installed/share/doc/vexa/copyright" || die "no notices"
[ -f "$installed/lib/vexa/VexaEditor.exe" ] || die "no editor"
for file in help.chm help/index.html; do [ -s "$installed/lib/vexa/$file" ] || die "no $file beside the editor"; done
cmp "$installed/lib/vexa/receivers.ecf" "$installed/share/vexa/receivers.ecf"
expect "$(PATH=/nowhere /bin/sh "$installed/bin/vexa-editor" 2>&1 || echo "status $?")" \
  'vexa-editor: Wine is not installed. Install the package "wine", or use the command line tool: vexa --help
status 1' "without Wine"
dpkg_there --remove vexa
[ ! -e "$installed" ] || die "left after the removal: $(find "$installed" | head)"

step "cmake --install: the same below a prefix, but for the editor's programs"
dpkg-deb -x "$packages"/vexa_*.deb "$work/deb"
cmake --install build/native --prefix "$work/prefix" --component program >/dev/null
expect "$(cd "$work/prefix" && find . -not -type d | sort)" \
  "$(cd "$work/deb/usr" && find . -not -type d -not -name '*.exe' -not -name '*.chm' | sort)" "files below the prefix"

wine32=$tree/tools/wine32.sh
if ! "$wine32" make >build/wine32.log 2>&1; then
  echo "note: no 32-bit Wine on this machine: the zip and the installer are made but not installed"
  exit 0
fi
export VEXA_WINE_WITH="$wine32 with" VEXA_WINE_IN="$wine32 in" WINEARCH=win32 WINEPREFIX="$WINEPREFIX-packages"
wine_prefix
"$wine32" with tests/packages_windows.sh "$packages" "$version" "$work"
