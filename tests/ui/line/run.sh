#!/usr/bin/env bash
# Runs a command with COM1 of Wine leading to a simulated receiver: the window tests of transfers need one.
# Usage: run.sh VEXA COMMAND... ; WINEPREFIX is the prefix to use. Without a compiler for the shim, or where Wine
# cannot take a pseudo-terminal for a port, those tests say that they were skipped. VEXA_WINE_IN (see
# tools/environment.sh) and VEXA_SHIM_COMPILER, a command that compiles for that Wine, are for a Wine of another kind.
set -u
read -ra in <<<"${VEXA_WINE_IN:-env}"
read -ra compiler <<<"${VEXA_SHIM_COMPILER:-cc}"
vexa=$(realpath "$1")
shift
here=$(dirname "$(realpath "$0")")
work=$(mktemp -d)
loader=
finish() {
  [ -n "$loader" ] && kill "$loader" 2>/dev/null
  "${in[@]}" wine reg delete 'HKLM\Software\Wine\Ports' /v COM1 /f >/dev/null 2>&1
  rm -rf "$work"
}
trap finish EXIT
if "${compiler[@]}" -shared -fPIC -O1 -nostdlib -o "$work/shim.so" "$here/shim.c" -lc -ldl; then
  # Fast enough for a test, slow enough to be cancelled in the middle; some packets go wrong both ways.
  "$vexa" loader --link "$work/line" --memory "$work/memory" --baud 600000 --nak 0.01 --corrupt 0.01 --seed 5 \
    2>"$work/loader.log" &
  loader=$!
  for _ in $(seq 100); do [ -L "$work/line" ] && break; sleep 0.05; done
  # Wine makes its port links when it starts, from this key where it has an entry.
  "${in[@]}" wine reg add 'HKLM\Software\Wine\Ports' /v COM1 /d "$work/line" /f >/dev/null 2>&1
  "${in[@]}" wineserver -w >/dev/null 2>&1
  export VEXA_TEST_LINE=COM1
  "${in[@]}" env LD_PRELOAD="$work/shim.so" "$@"
else
  "${in[@]}" "$@"
fi
