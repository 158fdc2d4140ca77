# Sourced by ./run and ./test: one compiler cache for every checkout, a Wine of the build tree's own.
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1 CCACHE_DEPEND=1 CCACHE_SLOPPINESS=pch_defines,time_macros
export WINEDEBUG=-all WINEDLLOVERRIDES='mscoree=;mshtml=' WINEARCH=win64
export WINEPREFIX="${TMPDIR:-/tmp}/vexa-wine-$(id -u)-$(echo "$root" | cksum | cut -d' ' -f1)"
export XDG_RUNTIME_DIR="${XDG_RUNTIME_DIR:-/tmp}"

# build PRESET [TARGET...]: tests that run meanwhile go first; they wait for answers within a time, a build does not.
build() {
  local preset=$1
  shift
  mkdir -p "$root/build"
  (cd "$root" && cmake --preset "$preset" >"build/$preset.configure.log" 2>&1) || { cat "$root/build/$preset.configure.log"; return 1; }
  local targets=()
  [ $# -gt 0 ] && targets=(--target "$@")
  (cd "$root" && nice -n 15 cmake --build --preset "$preset" "${targets[@]}" >"build/$preset.build.log" 2>&1) || { tail -40 "$root/build/$preset.build.log"; return 1; }
}

# What commands start with where the Wine is not the machine's own (tools/wine32.sh): VEXA_WINE_WITH once, around all of
# them, and VEXA_WINE_IN before each of Wine's commands.

# wine_prefix: makes the Wine prefix once. It is whole only when its server has ended: a display that goes away
# earlier leaves it without folders and drives. Unmanaged windows: without a window manager Wine waits seconds for
# one each time a window closes, unless it manages windows itself.
wine_prefix() {
  [ -f "$WINEPREFIX/whole" ] && return 0
  rm -rf "$WINEPREFIX"
  mkdir -p "$root/build"
  timeout 300 ${VEXA_WINE_WITH:-env} xvfb-run -a ${VEXA_WINE_IN:-env} sh -c '
    wineboot -i
    wineserver -w
    wine reg add "HKCU\\Software\\Wine\\X11 Driver" /v Managed /d N /f
    wineserver -w' >"$root/build/wineboot.log" 2>&1 && touch "$WINEPREFIX/whole"
}
