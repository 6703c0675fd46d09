#!/bin/sh
# Runs every ```vs example of a Markdown file through vhost. An example passes when vhost exits
# with 0 and its standard output equals the comment lines that end the example (one "# " line
# per output line, "#" alone for an empty line). With FOLDER, the examples run as if saved in
# it: its files are linked beside them, so readfile("NAME") reads FOLDER/NAME.
#   docs_examples.sh VHOST FILE.md [FOLDER]
set -u
vhost=$1
doc=$2
folder=${3:-}
work=$(mktemp -d) || exit 2
trap 'rm -rf "$work"' EXIT
if [ -n "$folder" ]; then
    for file in "$folder"/*; do
        [ -f "$file" ] && { ln -s "$file" "$work/" || exit 2; }
    done
fi

# example N goes to $work/N.vs, the lines it should print to $work/N.out
awk -v dir="$work" '
    /^```vs[ \t]*$/ { n++; inside = 1; code = dir "/" n ".vs"; out = dir "/" n ".out";
                      printf "" > code; printf "" > out; tail = ""; next }
    inside && /^```[ \t]*$/ { inside = 0; printf "%s", tail > out; close(code); close(out); next }
    inside { print > code
             if ($0 ~ /^#/) { line = $0; sub(/^# ?/, "", line); tail = tail line "\n" }
             else tail = "" }
    END { if (inside) { print "unterminated example " n > "/dev/stderr"; exit 1 }
          print n + 0 > (dir "/count") }
' "$doc" || exit 1

count=$(cat "$work/count")
if [ "$count" -eq 0 ]; then
    echo "no \`\`\`vs examples in $doc"
    exit 1
fi
failed=0
i=1
while [ "$i" -le "$count" ]; do
    "$vhost" --quiet "$work/$i.vs" > "$work/$i.got" 2> "$work/$i.err"
    status=$?
    if [ "$status" -ne 0 ] || ! cmp -s "$work/$i.out" "$work/$i.got"; then
        failed=$((failed + 1))
        echo "--- example $i (exit status $status):"
        cat "$work/$i.vs"
        echo "--- standard output:"
        cat "$work/$i.got"
        cat "$work/$i.err"
    fi
    i=$((i + 1))
done
echo "$count examples, $failed failed"
[ "$failed" -eq 0 ]
