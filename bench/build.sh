# What programs share that build something, run it and put a table into a document.  To
# be sourced with `source_dir`, `build_dir` and `document` set; `put_table` needs
# `work_dir`, too.

fail() { echo "$0: $*" >&2; exit 1; }

# require TOOL...: ends with a word about the first that is missing.
require() {
  for tool in "$@"; do
    command -v "$tool" > /dev/null || fail "$tool is missing"
  done
}

# build_release TARGET: brings a target of the release build up to date.
build_release() {
  [ -f "$build_dir/CMakeCache.txt" ] || fail "no build in $build_dir (cmake --preset release)"
  grep -q '^CMAKE_BUILD_TYPE:[A-Z]*=Release$' "$build_dir/CMakeCache.txt" ||
    fail "$build_dir is no release build"
  cmake --build "$build_dir" --target "$1" > /dev/null
}

# put_table TABLE NAME: puts the file TABLE into the document, between the lines that
# NAME stands in.
put_table() {
  begin="<!-- table: $2 --update -->"
  end="<!-- end of table -->"
  grep -qxF -e "$begin" "$document" || fail "$document lacks the line '$begin'"
  awk -v begin="$begin" -v end="$end" -v table="$1" '
    $0 == end { inside = 0 }
    !inside { print }
    $0 == begin {
      inside = 1
      while ((getline line < table) > 0) {
        print line
      }
    }' "$document" > "$work_dir/document"
  cat "$work_dir/document" > "$document"
}
