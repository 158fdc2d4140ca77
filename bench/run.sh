#!/usr/bin/env bash
# Builds and runs every yardstick and writes bench/README.md anew when all have ended well; a yardstick that fails
# leaves the old one. Usage: bench/run.sh [NAME...], where names are given those only, and printed only.
set -eu -o pipefail
cd "$(dirname "$0")/.."
bash tools/install.sh
. tools/environment.sh
load=$(cut -d' ' -f1-3 /proc/loadavg)
names=${*:-$(cd bench && ls ./*_bench.cpp | sed 's|^./||; s|_bench[.]cpp$||')}

build_all() {
  build bench
  case " $(echo $names) " in
  *" start "* | *" window "*)
    [ -x build/native/vexa ] || build native vexa
    build bench-windows start_bench window_bench VexaEditor receivers # without a configuration the editor asks for one
    wine_prefix
    ;;
  esac
}

# measure NAME: its rows below a heading.
measure() {
  printf '\n## %s\n\n| what | figure | beside | ratio | meant |\n|---|---|---|---|---|\n' "$1"
  case $1 in
  start | window)
    local arguments=()
    [ "$1" = window ] || arguments=(build/bench-windows/VexaEditor.exe)
    xvfb-run -a -s '-screen 0 1280x960x24' wine "build/bench-windows/$1_bench.exe" "${arguments[@]}" | tr -d '\r'
    ;;
  *) "build/bench/$1_bench" ;;
  esac
}

introduce() {
  cat <<END
# Benchmarks

Made by \`bench/run.sh\` on $(date -u +%F); \`bench/run.sh NAME\` prints one of the tables. A ratio is the figure divided
by that of what stands beside it; "meant" is the limit for the ratio, or for the figure where nothing stands beside it.

- Processor: $(sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -1), $(grep -c ^processor /proc/cpuinfo) cores
- Load at the start, averages of 1, 5 and 15 minutes: $load
END
}

build_all
if [ $# -gt 0 ]; then
  for name in $names; do measure "$name"; done
  exit
fi
new=$(mktemp bench/README.md.XXXXXX)
trap 'rm -f "$new"' EXIT
introduce >"$new"
for name in $names; do
  echo "== $name"
  measure "$name" >>"$new"
done
chmod 644 "$new"
mv "$new" bench/README.md
