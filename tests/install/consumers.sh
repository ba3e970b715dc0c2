#!/bin/sh
# consumers.sh CMAKE BUILD CC CXX DATA: installs the build, moves the installed tree, and uses it there: the program as it
# is, a C11 consumer by pkg-config, a C++20 one by find_package, each against the truth beside the sample mailbox; and
# every header alone, in both languages.
set -eu
cmake=$1 build=$2 cc=$3 cxx=$4 data=$5
here=$(cd "$(dirname "$0")" && pwd)
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
unset LD_LIBRARY_PATH PKG_CONFIG_PATH CMAKE_PREFIX_PATH 2> /dev/null || true
truth() { python3 -c 'import json, sys; [print(m[sys.argv[2]]) for m in json.load(open(sys.argv[1]))]' "$data/sample.json" "$1"; }
same() { diff -u "$dir/expected" "$dir/got" || { echo "$1: differs from the truth"; exit 1; }; }

"$cmake" --install "$build" --prefix "$dir/first" > "$dir/install.log"
mv "$dir/first" "$dir/a tree"
prefix="$dir/a tree"
cp "$data/sample.mbox" "$dir/sample.mbox"

truth address > "$dir/expected"
"$prefix/bin/attalven" dump "$dir/sample.mbox" | cut -f 10 > "$dir/got"
same "the program"

export PKG_CONFIG_LIBDIR="$prefix/lib/pkgconfig"
# What eval reads is pkg-config's output, which quotes the blank in the prefix.
flags=$(pkg-config --cflags --libs attalven)
eval "\"$cc\" -std=c11 -Wall -Wextra -Werror -pedantic -o \"$dir/addresses\" \"$here/consumer/addresses.c\" $flags" \
    "-Wl,-rpath,$(pkg-config --variable=libdir attalven)"
"$dir/addresses" "$dir/sample.mbox" > "$dir/got"
same "the C consumer"

truth leaves > "$dir/expected"
"$cmake" -S "$here/consumer" -B "$dir/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_CXX_COMPILER="$cxx" > "$dir/configure.log"
"$cmake" --build "$dir/consumer" > "$dir/build.log" || { cat "$dir/build.log"; exit 1; }
"$dir/consumer/parts" "$dir/sample.mbox" > "$dir/got"
same "the C++ consumer"

cd "$prefix/include/attalven"
for header in mail/*.h support/*.h; do
    printf '#include "%s"\nint more_than_nothing;\n' "$header" > "$dir/alone.c"
    "$cc" -std=c11 -Wall -Wextra -Werror -pedantic -I. -fsyntax-only "$dir/alone.c"
    "$cxx" -std=c++20 -Wall -Wextra -Werror -pedantic -I. -fsyntax-only -x c++ "$dir/alone.c"
done
echo "$(wc -l < "$dir/expected") messages by program, C and C++; $(ls mail/*.h support/*.h | wc -l) headers alone"
