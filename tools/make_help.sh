#!/usr/bin/env bash
# Makes the help of the pages in help/ (Markdown): OUT/html, and the same pages as OUT/help.chm. help/index.md is the
# table of contents. Refuses pages with faults: links, places and pictures that are not there, pictures that no page shows or
# that are of another version, dialogs without a page, pages that the table of contents does not name, quoted texts that the
# program does not say.
#   make_help.sh OUT GENERATED   GENERATED holds the pages that programs write: commands.md, command-line.md
#   make_help.sh check           only looks for faults; of generated pages only those of build/native are looked into
#   make_help.sh self-test       makes small helps with one fault each and fails when one of them passes
set -eu
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
root=${HELP_ROOT:-$here/..}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
version=$(sed -n 's/^project(VexaEditor VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")

# One page: Markdown to the body; headings get the names by which links find them; links lead to the pages made.
render() {  # SOURCE TARGET
  local title
  title=$(sed -n 's/^# //p;T;q' "$1")
  cmark "$1" | awk '
    { while (match($0, /href="[a-z0-9-]+\.md/)) $0 = substr($0, 1, RSTART + RLENGTH - 4) ".html" substr($0, RSTART + RLENGTH) }
    /^<h[23]>/ {
      name = tolower($0)
      gsub(/<[^>]*>|&[a-z]*;/, "", name)
      gsub(/[^a-z0-9]+/, "-", name)
      gsub(/^-|-$/, "", name)
      sub(/>/, " id=\"" name "\">")
    }
    { print }' >"$work/body"
  awk -v title="$title" -v version="$version" -v body="$work/body" '
    /^@BODY@$/ { while ((getline line < body) > 0) print line; next }
    { gsub(/@TITLE@/, title); gsub(/@VERSION@/, version); print }' "$root/help/page.html" >"$2"
}

pages() {  # FOLDER GENERATED
  local source
  mkdir -p "$1"
  for source in "$root"/help/*.md "$2"/*.md; do
    [ -f "$source" ] && render "$source" "$1/$(basename "$source" .md).html"
  done
  cp "$root/help/style.css" "$1/"
  mkdir -p "$1/pictures"
  cp "$root"/help/pictures/*.png "$1/pictures/"
}

# Texts in double quotes, and bold ones, are the program's own: each must stand in its sources, numbers aside and whatever "..." stands for.
foreign_texts() {
  find "$root"/{ui,view,core,config,import,image,serial,cli,platform} -name '*.cpp' -o -name '*.h' -o -name '*.rc' 2>/dev/null |
    sort | xargs -r cat >"$work/sources"
  awk '
    function plain(text) {  # numbers and formats become "#", blanks one
      gsub(/%[-0-9.]*[lhz]*[a-zA-Z]/, "#", text)
      gsub(/[0-9]+/, "#", text)
      gsub(/[ \t\r\n]+/, " ", text)
      return text
    }
    function seek(text, mark, between,   parts, count, i, piece, pieces, k) {
      count = split(text, parts, mark)
      for (i = 2; i <= count; i += 2) {
        pieces = split(plain(parts[i]), piece, between)
        for (k = 1; k <= pieces; ++k) {
          sub(/^ /, "", piece[k])
          sub(/ $/, "", piece[k])
          sub(/^.* should be in the range of /, "# should be in the range of ", piece[k])
          if (index(program, piece[k]) == 0)
            print substr(names[page], match(names[page], /[^\/]*$/)) ": the program does not say \"" parts[i] "\""
        }
      }
    }
    RS != "\n" { program = $0; next }  # all sources at once
    FNR == 1 { names[++pages] = FILENAME }
    /^    / { next }
    { gsub(/`[^`]*`/, ""); text[pages] = text[pages] $0 "\n" }
    END {
      gsub(/\\"/, "\001", program)
      gsub(/"[ \t\n]*L?"/, "", program)  # texts that the compiler joins
      gsub(/\\[nrt]/, " ", program)
      gsub(/&/, "", program)
      gsub(/\001/, "\"", program)
      program = plain(program)
      for (page = 1; page <= pages; ++page) {
        seek(text[page], "\"", "\\.\\.\\.")
        seek(text[page], "\\*\\*", "( > |\\.\\.\\.)")
      }
    }' RS='\003' "$work/sources" RS='\n' "$root"/help/*.md
}

# Says every fault of the pages in FOLDER. Pages of programs that are not there are taken as they are.
faults() {  # FOLDER
  (
    cd "$1"
    for page in commands command-line; do [ -f "$page.html" ] || echo "missing $page.html"; done >"$work/absent"
    grep -oE '(href|src)="[^"]*"' ./*.html | sed -E 's|^\./([^:]*):[a-z]*="(.*)"|\1 \2|' | sort -u | while read -r page link; do
      case "$link" in http:* | https:*) continue ;; esac
      target=${link%%#*}
      place=${link#"$target"}
      : "${target:=$page}"
      grep -qx "missing $target" "$work/absent" && continue
      if [ ! -f "$target" ]; then
        echo "$page: $link is not there"
      elif [ -n "$place" ] && ! grep -q "id=\"${place#\#}\"" "$target"; then
        echo "$page: $target has no place ${place#\#}"
      fi
    done
    for page in *.html; do
      grep -q '^<h1>' "$page" || echo "$page: no title"
      [ "$page" = index.html ] || grep -q "^<li><a href=\"$page\"" index.html || echo "$page: index.md does not name it"
    done
    for picture in pictures/*.png; do
      grep -q "src=\"$picture\"" ./*.html || echo "$picture: no page shows it"
    done
    stamp=$(cat "$root/help/pictures/VERSION" 2>/dev/null || true)
    [ "$stamp" = "$version" ] || echo "pictures/VERSION: the pictures are of \"$stamp\", the program is $version: tools/take_pictures.sh"
  )
  foreign_texts
  # The page of a dialog or window: rows {IDD_NAME, "page"} and {HelpWindow::kName, "page"} of the table.
  local table="$root/view/help_pages.cpp" dialog page
  grep -rhoE '^IDD_[A-Z0-9_]+ +DIALOG' --include='*.rc' "$root/ui" | sed 's/ .*//' | sort | while read -r dialog; do
    grep -q "{$dialog, \"" "$table" || echo "$dialog: no page; view/help_pages.cpp gives it one"
  done
  sed -nE 's/.*\{(IDD_[A-Z0-9_]+|HelpWindow::k[A-Za-z]+), "([a-z0-9-]*)"\}.*/\1 \2/p' "$table" | while read -r dialog page; do
    [ -f "$1/$page.html" ] || grep -qx "missing $page.html" "$work/absent" || echo "$dialog: its page $page.md is not there"
  done
}

check() {  # FOLDER
  faults "$1" >"$work/faults"
  [ ! -s "$work/faults" ] || { sed 's/^/help: /' "$work/faults" >&2; return 1; }
}

# The parts of the help file: what it holds, its contents, its index.
object() {  # NAME PAGE
  printf '<LI><OBJECT type="text/sitemap"><param name="Name" value="%s"><param name="Local" value="%s"></OBJECT>\n' "$1" "$2"
}
contents() {  # "## Part" and "- [Title](page.md)" of the table of contents
  local line inside='' part='^## (.*)' entry='^- \[([^]]*)\]\(([a-z0-9-]*)\.md\)'
  echo '<HTML><BODY><UL>'
  object "Vexa Editor" index.html
  while read -r line; do
    if [[ $line =~ $part ]]; then
      [ -z "$inside" ] || echo '</UL>'
      inside=1
      printf '<LI><OBJECT type="text/sitemap"><param name="Name" value="%s"></OBJECT>\n<UL>\n' "${BASH_REMATCH[1]}"
    elif [[ $line =~ $entry ]]; then
      object "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}.html"
    fi
  done <"$root/help/index.md"
  [ -z "$inside" ] || echo '</UL>'
  echo '</UL></BODY></HTML>'
}
index() {  # FOLDER: the titles and headings of all pages
  local page line
  echo '<HTML><BODY><UL>'
  for page in "$1"/*.html; do
    [ "$(basename "$page")" = index.html ] && continue
    sed -nE -e 's|^<h1>(.*)</h1>|\t\1|p' -e 's|^<h2 id="([^"]*)">(.*)</h2>|#\1\t\2|p' "$page" |
      sed -e 's|<[^>]*>||g' -e "s|^|$(basename "$page")|"
  done | sort -t "$(printf '\t')" -f -k2 | while IFS=$(printf '\t') read -r page line; do object "$line" "$page"; done
  echo '</UL></BODY></HTML>'
}
help_file() {  # OUT
  (
    cd "$1/html"
    contents >help.hhc
    [ "$(grep -c 'name="Local"' help.hhc)" = "$(ls ./*.html | wc -l)" ] || { echo "help: not every page is in the contents" >&2; exit 1; }
    index . >help.hhk
    {
      printf '[OPTIONS]\nCompiled file=help.chm\nContents file=help.hhc\nIndex file=help.hhk\nDefault topic=index.html\n'
      printf 'Title=Vexa Editor\nLanguage=0x409 English (United States)\nFull-text search=Yes\nDefault Window=main\n\n[WINDOWS]\n'
      # Three panes; contents, index and search; hide, back, forward, home, print.
      printf 'main="Vexa Editor","help.hhc","help.hhk","index.html","index.html",,,,,0x63520,260,0x304e,,,,,,,,0\n\n[FILES]\n'
      printf '%s\n' *.html style.css pictures/*.png
    } >help.hhp
    chmcmd --no-html-scan help.hhp >"$work/chmcmd.log" 2>&1 && [ -s help.chm ] || { cat "$work/chmcmd.log" >&2; exit 1; }
    mv help.chm ..
    rm help.hhc help.hhk help.hhp
  )
}

# A small help that is right, then with one fault at a time: FAULT is what is to be said of it.
self_test() {
  local wrong=0 tree="$work/tree"
  whole() {
    rm -rf "$tree"
    mkdir -p "$tree/help/pictures" "$tree/ui/inner" "$tree/view"
    cp "$here/../help/page.html" "$here/../help/style.css" "$tree/help/"
    echo 'project(VexaEditor VERSION 7.8.9 LANGUAGES CXX)' >"$tree/CMakeLists.txt"
    echo 7.8.9 >"$tree/help/pictures/VERSION"
    echo picture >"$tree/help/pictures/a.png"
    printf '# Help\n\n## Part\n\n- [One](one.md)\n- [Keys](commands.md)\n- [Line](command-line.md)\n' >"$tree/help/index.md"
    printf '# One\n\n![A](pictures/a.png) [place](index.md#part), [own](#two-words)\n\n## Two words\n' >"$tree/help/one.md"
    printf 'IDD_ONE DIALOGEX 0, 0, 1, 1\n  LTEXT "Up &to %%d"\n    " rows\\nof %%s.", -1\n' >"$tree/ui/inner/a.rc"
    printf '\nIt says "Up to 5 rows of ...". Press **Up to 5**.\n' >>"$tree/help/one.md"
    printf '    {IDD_ONE, "one"},\n    {HelpWindow::kFrame, "index"},\n' >"$tree/view/help_pages.cpp"
  }
  expect() {  # FAULT: said, with an end that is no success; empty: none
    local said status=0
    said=$(HELP_ROOT=$tree GENERATED_PAGES="$tree/none" "$here/make_help.sh" check 2>&1) || status=$?
    if [ -z "$1" ] && [ $status -eq 0 ]; then return; fi
    if [ -n "$1" ] && [ $status -ne 0 ] && grep -qF -- "$1" <<<"$said"; then return; fi
    echo "make_help.sh self-test: expected \"$1\", status $status: $said"
    wrong=1
  }
  fault() {  # COMMAND FAULT
    whole
    (cd "$tree" && eval "$1")
    expect "$2"
  }
  whole
  expect ''
  fault 'echo "[x](gone.md)" >>help/one.md' 'one.html: gone.html is not there'
  fault 'echo "[x](index.md#gone)" >>help/one.md' 'one.html: index.html has no place gone'
  fault 'echo "![x](pictures/b.png)" >>help/one.md' 'one.html: pictures/b.png is not there'
  fault 'echo p >help/pictures/b.png' 'pictures/b.png: no page shows it'
  fault 'echo 7.8.8 >help/pictures/VERSION' 'the pictures are of "7.8.8", the program is 7.8.9'
  fault 'rm help/pictures/VERSION' 'the pictures are of "", the program is 7.8.9'
  fault 'echo "# Two" >help/two.md' 'two.html: index.md does not name it'
  fault "sed -i s/rows/lines/ ui/inner/a.rc" 'one.md: the program does not say "Up to 5 rows of ..."'
  fault 'echo "Press **Gone**." >>help/one.md' 'one.md: the program does not say "Gone"'
  fault 'echo "No title" >help/one.md' 'one.html: no title'
  fault 'echo "IDD_TWO DIALOGEX 0" >>ui/inner/a.rc' 'IDD_TWO: no page'
  fault 'echo "    {IDD_OLD, \"old\"}," >>view/help_pages.cpp' 'IDD_OLD: its page old.md is not there'
  fault 'echo "    {HelpWindow::kOld, \"old\"}," >>view/help_pages.cpp' 'HelpWindow::kOld: its page old.md is not there'
  return $wrong
}

case ${1:-} in
self-test) self_test ;;
check)
  pages "$work/html" "${GENERATED_PAGES:-$root/build/native/help/generated}"
  check "$work/html"
  ;;
*)
  [ $# -eq 2 ] || { sed -n '2,9s/^# //p' "$0" >&2; exit 2; }
  rm -rf "$1/html" "$1/help.chm"
  pages "$1/html" "$2"
  check "$1/html" || { rm -rf "$1/html"; exit 1; }
  help_file "$1"
  ;;
esac
