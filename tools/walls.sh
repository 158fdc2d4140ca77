#!/usr/bin/env bash
# Whether every file includes only what its room may (tools/rooms.txt), no file includes itself through others, and no
# engine room asks which system it is. Says each offence with its place; fails when there is one.
#   walls.sh             looks at this tree
#   walls.sh self-test   makes small trees with one fault each and fails when one of them passes
set -u
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

look() {  # ROOMS FILE...: in the current folder
  awk '
    function say(text) { print text; bad = 1 }
    function room_of(path) {  # the longest room that holds it
      while (sub("/[^/]*$", "", path)) if (path in rooms) return path
      return ""
    }
    function may(room, what) { return room == what || (room, what) in arrows }
    function visit(file, trail,   n, i, next_files) {  # the files on the way stand in "trail"
      state[file] = 1
      n = split(edges[file], next_files, "\n")
      for (i = 1; i <= n; ++i) {
        if (state[next_files[i]] == 1) say("circle: " trail " " file " " next_files[i])
        else if (!state[next_files[i]] && next_files[i] in edges) visit(next_files[i], trail " " file)
      }
      state[file] = 2
    }
    NR == FNR {
      if (/^#/ || NF == 0) next
      room = $1
      if (!sub(":$", "", room)) say(FILENAME ":" FNR ": no room")
      for (i = 2; i <= NF; ++i) {
        if ($i == "*") { for (other in rooms) arrows[room, other] = 1 }
        else if ($i ~ /^</ || $i in rooms) arrows[room, $i] = 1
        else say(FILENAME ":" FNR ": " room " points up, or to no room: " $i)
      }
      rooms[room] = 1
      next
    }
    FNR == 1 {
      room = room_of(FILENAME)
      edges[FILENAME] = edges[FILENAME] ""
      if (room == "") say(FILENAME ": stands in no room")
    }
    room == "" || !/^[ \t]*#/ { next }
    { sub("\r$", "") }
    /^[ \t]*#[ \t]*include[ \t]*"/ {
      split($0, parts, "\"")
      edges[FILENAME] = edges[FILENAME] parts[2] "\n"
      target = room_of(parts[2])
      if (target == "") say(FILENAME ":" FNR ": no folder of this tree: " parts[2])
      else if (!may(room, target)) say(FILENAME ":" FNR ": " room " may not include " target ": " parts[2])
    }
    /^[ \t]*#[ \t]*include[ \t]*</ {
      match($0, "<[^>]*>")
      header = substr($0, RSTART, RLENGTH)
      standard = header !~ "[./]" && header != "<csignal>"
      if (!standard && !may(room, header) && !may(room, "<*>"))
        say(FILENAME ":" FNR ": " room " may not include " header)
    }
    /_WIN32|_WIN64|__MINGW|__CYGWIN__|__unix__|__linux__|__APPLE__|__GLIBC__/ {
      if (room !~ "^platform" && !may(room, "<*>")) say(FILENAME ":" FNR ": " room " asks which system it is")
    }
    END {
      for (file in edges) if (!state[file]) visit(file, "")
      exit bad
    }' "$@"
}

# fault FILE LINES SAID: in a small tree that is right, FILE is written with LINES and SAID must be said.
fault() {
  rm -rf "$work"/*
  mkdir -p "$work"/{low,low/system,high}
  printf 'low:\nlow/system: low <*>\nhigh: low <lib.h>\n' >"$work/rooms"
  printf '#include <vector>\n' >"$work/low/a.h"
  printf '#include <windows.h>\n#ifdef _WIN32\n' >"$work/low/system/a.cpp"
  printf '#include <lib.h>\n#include "high/c.h"\n#include "low/a.h"\n' >"$work/high/b.h"
  printf '#include "low/a.h"\n' >"$work/high/c.h"
  [ -z "$1" ] || printf "$2" >"$work/$1"
  local said
  said=$(cd "$work" && look rooms $(find low high other -name '*.*' 2>/dev/null))
  if [ "$said" != "" ] && [ -z "$1" ]; then echo "walls: a right tree is refused: $said"; failed=1; fi
  if [ -n "$1" ] && [[ "$said" != *"$3"* ]]; then echo "walls: not noticed: $1: $2"; failed=1; fi
}

self_test() {
  work=$(mktemp -d)
  trap 'rm -rf "$work"' EXIT
  failed=0
  fault "" "" ""
  fault low/a.h '#include "high/b.h"\n' 'low/a.h:1: low may not include high: high/b.h'
  fault low/a.h '#include "low/system/b.h"\n' 'low may not include low/system'
  fault low/a.h '\n # include <windows.h>\n' 'low/a.h:2: low may not include <windows.h>'
  fault low/a.h '#include <sys/stat.h>\n' 'low may not include <sys/stat.h>'
  fault low/a.h '#include <csignal>\n' 'low may not include <csignal>'
  fault low/a.h '#include <lib.h>\n' 'low may not include <lib.h>'
  fault low/a.h '#if defined(_WIN32)\n' 'low/a.h:1: low asks which system it is'
  fault low/a.h '#include "b.h"\n' 'no folder of this tree: b.h'
  fault high/c.h '#include "high/b.h"\n' 'circle:'
  fault high/c.h '#include "high/c.h"\n' 'circle:  high/c.h high/c.h'
  mkdir "$work/other"
  fault rooms 'low: high\nhigh: low\n' 'low points up, or to no room: high'
  fault rooms 'low:\n' 'high/b.h: stands in no room'
  return $failed
}

if [ "${1:-}" = self-test ]; then
  self_test
else
  cd "$here/.." || exit 1
  mapfile -t files < <(git ls-files '*.cpp' '*.h')
  look tools/rooms.txt "${files[@]}"
fi
