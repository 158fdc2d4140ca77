#!/usr/bin/env bash
# Whether vexa makes the same files on two systems. Usage: same_bytes.sh NATIVE COMMAND... ; COMMAND is the other
# system's vexa with what runs it.
set -eu
native=$(realpath "$1")
shift
data=$(dirname "$(realpath "$0")")/../data
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
make() {  # FOLDER VEXA...: everything from the sample lists
  mkdir "$work/$1"
  cd "$work/$1"
  shift
  for list in "$work"/sample.*; do
    name=${list##*.}
    "$@" import "../sample.$name" -o "$name.bin" --work-dir "$name"
    "$@" import "../sample.$name" -o "$name.stream" --stream
    "$@" save "$name.stream" -o "$name.packed" --compress-bin on --compress-sdb on --version 7.0x1F --initials "é"
    "$@" sort "$name.packed" -o "$name.sorted" --satellites angle --services name,type
    for format in text csv json; do "$@" export "$name.packed" -o "$name.$format" --format "$format"; done
    "$@" info "$name.packed" >"$name.info"
    "$@" check "$name.bin" >"$name.check" || [ $? -eq 1 ]
  done
  "$@" ecf build ../receivers.toml -o receivers.ecf
  "$@" ecf show receivers.ecf --select 0/1/0 --json >receivers.json
}
cp "$data"/sample.* "$data"/receivers.toml "$work"
make native "$native"
make other "$@" 2>"$work/errors" || { cat "$work/errors"; exit 1; }
diff -r "$work/native" "$work/other"
