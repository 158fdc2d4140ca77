#!/usr/bin/env bash
# Whether every file includes only what its room may (tools/rooms.txt), no file includes itself through others, no engine
# room asks which system or compiler it is, and every arrow of tools/rooms.txt is used. Says each offence with its place;
# fails when there is one. Seen are the files of git, and those that git does not know yet and is not told to ignore.
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
    # What a line holds without comments; "inside" keeps, from line to line, whether one is open.
    function bare(line,   out, end) {
      out = ""
      while (line != "") {
        if (inside) {
          end = index(line, "*/")
          if (!end) return out
          line = substr(line, end + 2)
          inside = 0
          out = out " "
        } else if (match(line, /\/\/|\/\*|"([^"\\]|\\.)*"/)) {
          if (substr(line, RSTART, 1) == "\"") {
            out = out substr(line, 1, RSTART + RLENGTH - 1)
            line = substr(line, RSTART + RLENGTH)
          } else {
            out = out substr(line, 1, RSTART - 1)
            if (substr(line, RSTART, 2) == "//") return out
            line = substr(line, RSTART + 2)
            inside = 1
          }
        } else {
          return out line
        }
      }
      return out
    }
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
      line_of[room] = FILENAME ":" FNR
      named[room] = $0
      next
    }
    FNR == 1 {
      inside = continued = 0
      room = room_of(FILENAME)
      edges[FILENAME] = edges[FILENAME] ""
      if (room == "") say(FILENAME ": stands in no room")
    }
    room == "" { next }
    {
      sub("\r$", "")
      # Behind a comment that only seems open, as one in a raw string, an include would not be seen.
      if (inside && /^[ \t]*#[ \t]*include/) say(FILENAME ":" FNR ": an include in a comment")
      $0 = bare($0)
      if (/^[ \t]*(export[ \t]+)?import[ \t]*([A-Za-z_.:]+|<[^>]*>|"[^"]*")[ \t]*;/) say(FILENAME ":" FNR ": imports a module")
      sub(/^[ \t]*%:/, "#")
    }
    # A directive goes on behind a backslash at the end of its line.
    !continued && !/^[ \t]*#/ { next }
    {
      directive = continued ? directive " " $0 : $0
      continued = sub(/\\[ \t]*$/, "", directive)
      if (continued) next
      $0 = directive
    }
    /^[ \t]*#[ \t]*(include|import|embed)/ && !/^[ \t]*#[ \t]*include[ \t]*["<]/ {
      say(FILENAME ":" FNR ": includes in another way than by its name")
      next
    }
    /^[ \t]*#[ \t]*include[ \t]*"/ {
      split($0, parts, "\"")
      if (parts[2] ~ /(^|\/)\.\.?(\/|$)/) { say(FILENAME ":" FNR ": includes by a way with dots: " parts[2]); next }
      edges[FILENAME] = edges[FILENAME] parts[2] "\n"
      target = room_of(parts[2])
      if (target == "") say(FILENAME ":" FNR ": no folder of this tree: " parts[2])
      used[room, target] = 1
      if (target != "" && !may(room, target)) say(FILENAME ":" FNR ": " room " may not include " target ": " parts[2])
    }
    /^[ \t]*#[ \t]*include[ \t]*</ {
      match($0, "<[^>]*>")
      header = substr($0, RSTART, RLENGTH)
      used[room, header] = used[room, "<*>"] = 1
      # Resource scripts are of the system by nature.
      standard = header !~ "[./]" && header != "<csignal>" || FILENAME ~ /[.]rc$/
      if (!standard && !may(room, header) && !may(room, "<*>"))
        say(FILENAME ":" FNR ": " room " may not include " header)
    }
    /(^|[^A-Za-z0-9_])(_?WIN(32|64)|__WIN(32|64)|__MINGW|_MSC_|__CYGWIN|_*unix|_*linux|__gnu_linux|__APPLE|__GLIBC|_POSIX_|__has_include)/ {
      if (room !~ "^platform" && !may(room, "<*>")) say(FILENAME ":" FNR ": " room " asks which system it is")
      used[room, "<*>"] = 1
    }
    END {
      for (room in named) {
        n = split(named[room], words, " ")
        for (i = 2; i <= n; ++i)
          if (words[i] != "*" && !((room, words[i]) in used)) say(line_of[room] ": nothing in " room " uses " words[i])
      }
      for (file in edges) if (!state[file]) visit(file, "")
      exit bad
    }' "$@"
}

# The sources in the current folder that git has or would take.
sources() {
  git ls-files --cached --others --exclude-standard -- '*.cpp' '*.cc' '*.cxx' '*.c' '*.h' '*.hh' '*.hpp' '*.inc' '*.ipp' \
    '*.inl' '*.ixx' '*.rc' | sort -u | while IFS= read -r file; do [ ! -e "$file" ] || printf '%s\n' "$file"; done
}

# fault FILE LINES SAID: in a small tree that is right, FILE is written with LINES and SAID must be said.
fault() {
  find "$work" -mindepth 1 -delete
  mkdir -p "$work"/{low,low/system,high}
  git init -q "$work"  # whose files git does not know yet
  printf 'low:\nlow/system: low <*>\nhigh: low <lib.h>\n' >"$work/rooms"
  printf '#include <vector>\n' >"$work/low/a.h"
  printf '#include <windows.h>\n#ifdef _WIN32\n' >"$work/low/system/a.cpp"
  printf '#include <lib.h>\n#include "high/c.h"\n#include "low/a.h"\n// a *\\/ "/*"\n' >"$work/high/b.h"
  printf '#include "low/a.h"\n' >"$work/low/system/b.cpp"
  printf '#include "low/a.h"\n' >"$work/high/c.h"
  [ -z "$1" ] || printf "$2" >"$work/$1"
  local said
  said=$(cd "$work" && mapfile -t files < <(sources) && look rooms "${files[@]}")
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
  for name in hpp inc ipp; do
    fault low/x.$name '#include "high/b.h"\n' "low/x.$name:1: low may not include high"
  done
  fault low/a.h '#include "low/../high/b.h"\n' 'includes by a way with dots: low/../high/b.h'
  fault low/a.h '#include "./high/b.h"\n' 'includes by a way with dots'
  fault low/a.h '/* a */ #include "high/b.h"\n' 'low/a.h:1: low may not include high'
  fault low/a.h '/* a\n b */ # /* c */ include /* d */ <windows.h>\n' 'low/a.h:2: low may not include <windows.h>'
  for way in '#include NAME' '#include_next "high/b.h"' '#import "high/b.h"' '%%:import "high/b.h"'; do
    fault low/a.h "$way\\n" 'low/a.h:1: includes in another way than by its name'
  done
  fault low/a.h '%%:include "high/b.h"\n' 'low/a.h:1: low may not include high'
  fault low/a.h 'import <vector>;\n' 'low/a.h:1: imports a module'
  fault low/a.h 'x = R"(\n/*)";\n#include "high/b.h"\n' 'low/a.h:3: an include in a comment'
  fault low/a.h '#\\\n include "high/b.h"\n' 'low/a.h:2: low may not include high'
  fault low/a.h '#if 1 && \\\n  defined(_WIN32)\n' 'low/a.h:2: low asks which system it is'
  for name in WIN32 _MSC_VER __linux linux __unix __MINGW64__ __GLIBC__; do
    fault low/a.h "#ifdef $name\\n" 'low/a.h:1: low asks which system it is'
  done
  fault low/a.h '#if __has_include(<windows.h>)\n' 'low/a.h:1: low asks which system it is'
  fault rooms 'low:\nlow/system: low <*>\nhigh: low low/system <lib.h>\n' 'rooms:3: nothing in high uses low/system'
  fault rooms 'low:\nlow/system: low <*>\nhigh: low <lib.h> <other.h>\n' 'rooms:3: nothing in high uses <other.h>'
  mkdir "$work/other"
  fault rooms 'low: high\nhigh: low\n' 'low points up, or to no room: high'
  fault rooms 'low:\n' 'high/b.h: stands in no room'
  return $failed
}

if [ "${1:-}" = self-test ]; then
  self_test
else
  cd "$here/.." || exit 1
  mapfile -t files < <(sources)
  look tools/rooms.txt "${files[@]}"
fi
