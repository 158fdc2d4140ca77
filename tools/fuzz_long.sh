#!/usr/bin/env bash
# Fuzzes for a long time, built for speed: without the sanitizers and the guidance by comparisons that ./test fuzz has, so
# that only what a target itself requires and what ends a program is found, at ten and more times the executions. What steers
# it is which ways through the code an input takes, not how often. Two targets at a time, in turns, those furthest behind
# first, until each has run 100 million executions in all or the time is over. Usage: tools/fuzz_long.sh SECONDS [TARGET...].
# Prints the executions of each target, over all its runs, as tests/fuzz/README.md keeps them. The time for one input is long,
# as everything else goes first. Of the inputs that it made, in build/fuzz-corpus, it packs those that show all ways through
# the code into tests/fuzz/grown.
set -eu -o pipefail
cd "$(dirname "$0")/.."
seconds=$1
shift
export wanted=100000000 turn=120 counts=build/fuzz-executions
bash tools/install.sh
. tools/environment.sh
mapfile -t targets < <(cd tests/fuzz && ls ./*_fuzz.cpp | sed 's|^./||; s|[.]cpp$||')
build fuzz "${targets[@]}"
mkdir -p "$counts"
scratch=$(mktemp -d -p "$([ -w /dev/shm ] && echo /dev/shm || echo "${TMPDIR:-/tmp}")")
trap 'rm -rf "$scratch"' EXIT
export TMPDIR=$scratch

# What a target had run before this clone's own runs.
kept() { sed -n "s/^| $1 | \([0-9,]*\) |.*/\1/p" tests/fuzz/README.md | tr -d ,; }
chosen=("$@")
[ $# -gt 0 ] || chosen=("${targets[@]}")
for target in "${targets[@]}"; do
  mkdir -p "build/fuzz-corpus/$target" "tests/fuzz/corpus/${target%_fuzz}"
  [ ! -f "tests/fuzz/grown/${target%_fuzz}.tar.gz" ] || tar -xzf "tests/fuzz/grown/${target%_fuzz}.tar.gz" -C "build/fuzz-corpus/$target"
  [ -f "$counts/$target" ] || { n=$(kept "$target"); echo "${n:-0}" >"$counts/$target"; }
done

one_turn() {
  local name=$1 ran
  "build/fuzz/$name" -max_total_time="$turn" -runs=$((wanted - $(cat "$counts/$name"))) -timeout=60 -rss_limit_mb=3000 \
    -max_len=512 -entropic=0 -reduce_inputs=0 -use_counters=0 -print_final_stats=1 -verbosity=0 -reload=0 -artifact_prefix="build/$name-" "build/fuzz-corpus/$name" \
    "tests/fuzz/corpus/${name%_fuzz}" >"build/$name.long.log" 2>&1 || { echo "FAILED: $name, see build/$name.long.log"; return 1; }
  ran=$(sed -n 's/^stat::number_of_executed_units: *//p' "build/$name.long.log")
  echo $(($(cat "$counts/$name") + ran)) >"$counts/$name"
}
export -f one_turn

# The two furthest behind, as long as there is time.
behind() {
  local target
  for target in "${chosen[@]}"; do echo "$(cat "$counts/$target") $target"; done | sort -n |
    awk -v wanted="$wanted" '$1 < wanted { print $2 }' | head -2
}
while [ "$SECONDS" -lt "$seconds" ]; do
  next=$(behind)
  [ -n "$next" ] || break
  echo "$next" | chrt --idle 0 xargs -P2 -I{} bash -c 'one_turn {}'
done
pack() {
  local name=${1%_fuzz}
  mkdir "$scratch/$name"
  "build/fuzz/$1" -set_cover_merge=1 -max_len=512 -verbosity=0 "$scratch/$name" "build/fuzz-corpus/$1" "tests/fuzz/corpus/$name" >/dev/null 2>&1
  tar --sort=name --owner=0 --group=0 --mtime=@0 -C "$scratch/$name" -czf "tests/fuzz/grown/$name.tar.gz" .
}
for target in "${targets[@]}"; do pack "$target"; done
for target in "${targets[@]}"; do printf "| %s | %'d |\n" "$target" "$(cat "$counts/$target")"; done
