#!/usr/bin/env bash
# Runs a command with ports of Wine that lead to simulated receivers: the window tests of transfers need them.
#   COM1  one that answers; some packets go wrong both ways
#   COM2  a slower one, which ends at once, as if unplugged, when the file of VEXA_TEST_END2 is made
#   COM3  one that answers nobody
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
loaders=()
finish() {
  local port
  [ ${#loaders[@]} -gt 0 ] && kill "${loaders[@]}" 2>/dev/null
  for port in 1 2 3; do "${in[@]}" wine reg delete 'HKLM\Software\Wine\Ports' /v COM$port /f; done >/dev/null 2>&1
  rm -rf "$work"
}
# receiver PORT OPTION...
receiver() {
  local port=$1
  shift
  "$vexa" loader --link "$work/line$port" --memory "$work/memory$port" --seed 5 "$@" 2>"$work/loader$port.log" &
  loaders+=($!)
  for _ in $(seq 100); do [ -L "$work/line$port" ] && break; sleep 0.05; done
  # Wine makes its port links when it starts, from this key where it has an entry.
  "${in[@]}" wine reg add 'HKLM\Software\Wine\Ports' /v "COM$port" /d "$work/line$port" /f >/dev/null 2>&1
}
trap finish EXIT
if "${compiler[@]}" -shared -fPIC -O1 -nostdlib -o "$work/shim.so" "$here/shim.c" -lc -ldl; then
  # Fast enough for a test, slow enough to be cancelled in the middle.
  receiver 1 --baud 600000 --nak 0.01 --corrupt 0.01
  receiver 2 --baud 200000
  receiver 3 --delay 60000
  "${in[@]}" wineserver -w >/dev/null 2>&1
  export VEXA_TEST_LINE=COM1 VEXA_TEST_END2=$work/end2
  while kill -0 "${loaders[1]}" && [ ! -e "$VEXA_TEST_END2" ]; do sleep 0.05; done 2>/dev/null && kill -9 "${loaders[1]}" &
  loaders+=($!)
  "${in[@]}" env LD_PRELOAD="$work/shim.so" "$@"
else
  "${in[@]}" "$@"
fi
