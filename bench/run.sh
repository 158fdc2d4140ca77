#!/usr/bin/env bash
# Builds and runs every yardstick; each prints its ratios. Usage: bench/run.sh [NAME...], all unless named.
set -eu
cd "$(dirname "$0")/.."
bash tools/install.sh
. tools/environment.sh
names=${*:-$(cd bench && ls ./*_bench.cpp | sed 's|^./||; s|_bench[.]cpp$||')}
build bench
for name in $names; do
  echo "== $name"
  if [ "$name" = start ]; then
    [ -x build/native/vexa ] || build native vexa
    build bench-windows start_bench VexaEditor receivers  # without a configuration the editor asks for one
    wine_prefix
    xvfb-run -a -s '-screen 0 1280x960x24' wine build/bench-windows/start_bench.exe build/bench-windows/VexaEditor.exe
  else
    build/bench/"${name}_bench"
  fi
done
